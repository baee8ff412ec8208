// The root of every window of the debugger: a titled grid of text rows with a status
// line, a place remembered in the settings, a scroll position and a selected row. The
// model owns its rows and knows nothing of drawing: an optional view from the window
// library shows it on screen and is told when to redraw. Without a view (console
// sessions, the off-screen window of "dprint") the model works the same, which is what
// lets "dumpinfo" print a window that was never drawn.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "winlib/window_library.h"

namespace vantor::ui {

constexpr int kNoSetting = -1;

// The setting numbers that remember a window's X, Y, W and H, each kNoSetting when that
// value is not remembered.
struct layout_settings {
  int x = kNoSetting;
  int y = kNoSetting;
  int width = kNoSetting;
  int height = kNoSetting;

  // X, Y, W and H at four consecutive numbers from x_number.
  static layout_settings consecutive(int x_number) { return {x_number, x_number + 1, x_number + 2, x_number + 3}; }
  // Only X and Y, at x_number and x_number + 1.
  static layout_settings position_only(int x_number) { return {x_number, x_number + 1, kNoSetting, kNoSetting}; }
};

// How a window's size relates to the size it is created with. A framed window reports
// its size with a one-character frame on each side, so it saves two less than it reports;
// a plain window's size is already its inside.
enum class LayoutKind { kFramed, kPlain };

// Colour attributes a row may carry; the view chooses the colours.
enum RowAttribute : int {
  kRowPlain = 0,
  kRowSelected = 1,
  kRowCurrent = 2,
  kRowWithoutSource = 3,
  kRowBreakpoint = 4,
  kRowSourceLine = 5,
};

// The rows a window's filler produces.
struct window_rows {
  std::vector<std::string> text;
  std::vector<int> attributes;  // one a row

  void add(std::string row, int attribute = kRowPlain) {
    text.push_back(std::move(row));
    attributes.push_back(attribute);
  }
  void clear() {
    text.clear();
    attributes.clear();
  }
};

// Fills a window whose contents another part of the debugger knows how to write: the
// rows, and the status line ("" for none).
using row_producer = std::function<void(window_rows& rows, std::string& status)>;

// Command codes that a view posts to its window (keys and menu accelerators).
enum WindowCommand : int {
  kCommandLineUp = 1,
  kCommandLineDown,
  kCommandPageUp,
  kCommandPageDown,
  kCommandFirstRow,
  kCommandLastRow,
  kCommandSearchForward,
  kCommandSearchBackward,
};

class text_window {
 public:
  text_window(int kind, std::string title, layout_settings settings, LayoutKind layout = LayoutKind::kFramed);
  virtual ~text_window();
  text_window(const text_window&) = delete;
  text_window& operator=(const text_window&) = delete;

  int kind() const { return kind_; }
  const std::string& title() const { return title_; }
  // The text of the window's caption bar; the title unless the window says otherwise.
  virtual std::string caption() const { return title_; }
  const std::string& status() const { return status_; }
  const layout_settings& settings() const { return settings_; }
  LayoutKind layout_kind() const { return layout_kind_; }

  // ---- place and size, in character units ----
  const winlib::WindowLocation& location() const { return location_; }
  // Also makes the visible area the window's size.
  void set_location(const winlib::WindowLocation& location);
  // Takes X, Y, W and H from the settings for those the window remembers, keeping the
  // current value for the others.
  void place_from_settings();

  // ---- rows, scrolling and selection ----
  const std::vector<std::string>& rows() const { return rows_.text; }
  int row_count() const { return static_cast<int>(rows_.text.size()); }
  int row_attribute(int row) const;
  int visible_rows() const { return visible_rows_; }
  int visible_columns() const { return visible_columns_; }
  // The view reports the visible area when it learns it (at least one row and column).
  void set_visible_size(int rows, int columns);
  int first_visible_row() const { return first_visible_row_; }
  // -1 when no row is selected.
  int selected_row() const { return selected_row_; }
  // Scrolling keeps the last page full: the first visible row never passes
  // row_count - visible_rows.
  void scroll_to(int first_row);
  void scroll_by(int delta) { scroll_to(first_visible_row_ + delta); }
  // Selects a row (clamped to the rows there are; -1 clears) and scrolls it into view.
  void select_row(int row);
  // Moves the selection; with nothing selected, the move starts above the first row.
  void move_selection(int delta);

  // ---- life on screen ----
  // Puts the window on screen through the window library (no-op when it shows nothing).
  void build();
  winlib::WindowView* view() const { return view_.get(); }
  void raise();
  // Takes the location from the view when the window is on screen; false otherwise.
  bool update_location_from_view();
  // Refills the rows, keeps the scroll position and selection within them, and redraws.
  void refresh();

  // ---- operations the concrete windows override ----
  // A choice from the window's popup menu; false when the window has no such entry.
  virtual bool handle_popup_choice(int choice);
  // The tip for the text under the mouse, or "" for none.
  virtual std::string tip_text(int row, int column);
  // A command code posted to the window; false when the window does not handle it.
  virtual bool handle_command(int code);
  // Called by "dprint" after the contents were written, before the window is dropped.
  virtual void after_console_dump() {}

  // The contents as the console shows them: the title, the status line when there is
  // one, then every row (not only the visible ones), each ended by a newline.
  std::string contents_text() const;
  void dump_to_console() const;
  // Save Contents: the lines written to a file, one "%s\n" each.
  virtual std::vector<std::string> saved_lines() const { return rows_.text; }
  // The file Save Contents proposes.
  virtual std::string contents_file_name() const;
  bool save_contents(const std::wstring& path) const;

 protected:
  // The window's row filler: every row of its contents, first to last.
  virtual void fill_rows(window_rows& rows) = 0;
  void set_title(std::string title) { title_ = std::move(title); }
  void set_status(std::string status) { status_ = std::move(status); }
  void redraw();

 private:
  void keep_selection_in_rows();

  int kind_;
  std::string title_;
  std::string status_;
  layout_settings settings_;
  LayoutKind layout_kind_;
  winlib::WindowLocation location_{1, 1, 30, 10};
  window_rows rows_;
  int visible_rows_ = 10;
  int visible_columns_ = 30;
  int first_visible_row_ = 0;
  int selected_row_ = -1;
  std::unique_ptr<winlib::WindowView> view_;
};

}  // namespace vantor::ui
