#include "ui/breakpoints_window.h"

#include <cstdio>

#include "process/breakpoint_list.h"
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

std::vector<breakpoint_row> breakpoint_rows_of(const BreakpointList& list) {
  std::vector<breakpoint_row> rows;
  for (int i = 0; i < list.count(); ++i) {
    const breakpoint_info& b = *list.breakpoint(i);
    if (b.temporary) continue;
    rows.push_back({b.id, b.is_data(), b.file, b.is_data() ? b.address : 0, b.line, b.after, b.every,
                    static_cast<int>(b.hits), b.condition});
  }
  return rows;
}

breakpoints_window::breakpoints_window(lister list, deleter remove)
    : scrolling_window(kBreakpointsKind, "Breakpoints", layout_settings::consecutive(kBreakpointsWindowX)),
      list_(std::move(list)),
      remove_(std::move(remove)) {}

void breakpoints_window::fill_rows(window_rows& rows) {
  shown_ = list_ ? list_() : std::vector<breakpoint_row>();
  if (shown_.empty()) {
    rows.add("No breakpoints");
    return;
  }
  rows.add(breakpoints_header());
  for (const auto& breakpoint : shown_) rows.add(breakpoint_row_text(breakpoint));
}

const breakpoint_row* breakpoints_window::selected_breakpoint() const {
  int index = selected_row() - 1;  // below the header
  return index >= 0 && index < static_cast<int>(shown_.size()) ? &shown_[static_cast<std::size_t>(index)] : nullptr;
}

bool breakpoints_window::handle_popup_choice(int choice) {
  if (choice != kPopupDeleteBreakpoint) return false;
  if (const breakpoint_row* selected = selected_breakpoint(); selected && remove_) {
    remove_(selected->id);
    refresh();
  }
  return true;
}

}  // namespace vantor::ui
