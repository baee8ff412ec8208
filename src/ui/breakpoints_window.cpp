#include "ui/breakpoints_window.h"

#include <cstdio>

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

std::string breakpoints_header() {
  return "File                               Line No   After   Every    Hits  Expression";
}

std::string breakpoint_row_text(const breakpoint_row& b) {
  // The file column is as wide as "Data @0x" and the address field together, so that the
  // counts of both kinds line up under the header.
  std::vector<char> text(b.file.size() + b.expression.size() + 128);
  if (b.is_data)
    std::snprintf(text.data(), text.size(), "Data @0x%-27llx%7d%8d%8d%8d  %s", static_cast<unsigned long long>(b.address),
                  b.line, b.after, b.every, b.hits, b.expression.c_str());
  else
    std::snprintf(text.data(), text.size(), "%-35s%7d%8d%8d%8d  %s", b.file.c_str(), b.line, b.after, b.every, b.hits,
                  b.expression.c_str());
  return text.data();
}

breakpoints_window::breakpoints_window(lister list, deleter remove)
    : scrolling_window(kBreakpointsKind, "Breakpoints", layout_settings::consecutive(kBreakpointsWindowX)),
      list_(std::move(list)),
      remove_(std::move(remove)) {}

void breakpoints_window::fill_rows(window_rows& rows) {
  std::vector<breakpoint_row> breakpoints;
  if (list_) breakpoints = list_();
  has_header_ = !breakpoints.empty();
  if (!has_header_) {
    rows.add("No breakpoints");
    return;
  }
  rows.add(breakpoints_header());
  for (const auto& breakpoint : breakpoints) rows.add(breakpoint_row_text(breakpoint));
}

int breakpoints_window::selected_breakpoint() const {
  return has_header_ && selected_row() >= 1 ? selected_row() - 1 : -1;
}

bool breakpoints_window::handle_popup_choice(int choice) {
  if (choice != kPopupDeleteBreakpoint) return false;
  int index = selected_breakpoint();
  if (index >= 0 && remove_) {
    remove_(index);
    refresh();
  }
  return true;
}

}  // namespace vantor::ui
