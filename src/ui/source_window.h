// The source window's model: the lines of one source file with their numbers, the line
// the program stopped at, breakpoint marks, a current line that the keys, "moveto",
// Goto Line and the searches move, and the frame whose name space typed commands use.
#pragma once

#include <functional>
#include <string>

#include "debuginfo/source_file.h"
#include "ui/source_base_window.h"

namespace vantor::ui {

// Popup choices, in menu order.
constexpr int kPopupGotoOrigin = 1;
constexpr int kPopupGotoLine = 2;
constexpr int kPopupSearch = 3;
constexpr int kPopupSearchAgain = 4;
constexpr int kPopupPrintValue = 5;
constexpr int kPopupToggleBreakpoint = 6;
constexpr int kPopupFindSourceFile = 7;

// Tabs become spaces to the next multiple of the tab size.
std::string expand_tabs(const std::string& text, int tab_size);

class source_window : public source_base_window {
 public:
  // The source file and 0-based line of the frame with that index of the current call
  // stack; false when the frame has no source position. The source-lines part supplies it.
  using frame_locator = std::function<bool(int frame_index, source_file*& file, int& line)>;
  // Whether a breakpoint is set at the 1-based line of the file; the breakpoint part
  // supplies it.
  using breakpoint_test = std::function<bool(const source_file& file, int line)>;

  source_window(source_file* file, frame_locator locate, breakpoint_test has_breakpoint = nullptr);

  source_file* file() const { return file_; }
  bool show_frame(int frame_index) override;

  // 0-based; -1 when the file has no lines.
  int current_line() const { return selected_row(); }
  // The line the program stopped at, 0-based; -1 when the window does not show it.
  int execution_line() const { return execution_line_; }
  // Makes a 1-based line current; false (and nothing moves) when it is not in the file.
  bool move_to_line(int line_number);
  void set_column(int column) { column_ = column; }

  const std::string& search_text() const { return search_text_; }
  void set_search_text(std::string text) { search_text_ = std::move(text); }
  // Looks for the search text (letter case ignored) from the line after the current one,
  // or before it; the line found becomes current. Tells the user when there is none.
  bool search(bool backwards);

  bool handle_command(int code) override;
  bool handle_popup_choice(int choice) override;

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  void update_title();
  void update_status();

  source_file* file_;
  frame_locator locate_;
  breakpoint_test has_breakpoint_;
  int execution_line_ = -1;
  int column_ = 1;
  std::string search_text_;
};

}  // namespace vantor::ui
