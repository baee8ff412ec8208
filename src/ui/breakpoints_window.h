// The breakpoints window: a header and one row per code or data breakpoint, or the single
// line "No breakpoints". Its one popup entry deletes the selected breakpoint.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "ui/scrolling_window.h"

namespace vantor {
class BreakpointList;
}

namespace vantor::ui {

// What the window shows of one breakpoint.
struct breakpoint_row {
  std::uint32_t id = 0;
  bool is_data = false;
  std::string file;           // code breakpoints
  std::uint64_t address = 0;  // data breakpoints
  int line = 0;               // a data breakpoint's hardware slot
  int after = 1;
  int every = 1;
  int hits = 0;
  std::string expression;  // the condition, or what a data breakpoint watches
};

std::string breakpoints_header();
std::string breakpoint_row_text(const breakpoint_row& breakpoint);
// The user's breakpoints of the list, in list order; the ones the debugger made for
// itself are not shown.
std::vector<breakpoint_row> breakpoint_rows_of(const BreakpointList& list);

// Popup choices.
constexpr int kPopupDeleteBreakpoint = 1;

class breakpoints_window : public scrolling_window {
 public:
  // The breakpoints of the process, in list order; the breakpoint part supplies it.
  using lister = std::function<std::vector<breakpoint_row>()>;
  // Deletes the breakpoint with that id.
  using deleter = std::function<void(std::uint32_t id)>;

  breakpoints_window(lister list, deleter remove);

  // The selected row's breakpoint; null for the header or nothing.
  const breakpoint_row* selected_breakpoint() const;
  bool handle_popup_choice(int choice) override;

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  lister list_;
  deleter remove_;
  std::vector<breakpoint_row> shown_;
};

}  // namespace vantor::ui
