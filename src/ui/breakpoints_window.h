// The breakpoints window: a header and one row per code or data breakpoint, or the single
// line "No breakpoints". Its one popup entry deletes the selected breakpoint.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "ui/scrolling_window.h"

namespace vantor::ui {

// What the window shows of one breakpoint.
struct breakpoint_row {
  bool is_data = false;
  std::string file;           // code breakpoints
  std::uint64_t address = 0;  // data breakpoints
  int line = 0;
  int after = 1;
  int every = 1;
  int hits = 0;
  std::string expression;  // the condition, or what a data breakpoint watches
};

std::string breakpoints_header();
std::string breakpoint_row_text(const breakpoint_row& breakpoint);

// Popup choices.
constexpr int kPopupDeleteBreakpoint = 1;

class breakpoints_window : public scrolling_window {
 public:
  // The breakpoints of the process, in list order; the breakpoint part supplies it.
  using lister = std::function<std::vector<breakpoint_row>()>;
  // Deletes the breakpoint at that position of the list.
  using deleter = std::function<void(int index)>;

  breakpoints_window(lister list, deleter remove);

  // The list position of the selected row's breakpoint; -1 for the header or nothing.
  int selected_breakpoint() const;
  bool handle_popup_choice(int choice) override;

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  lister list_;
  deleter remove_;
  bool has_header_ = false;
};

}  // namespace vantor::ui
