#include "ui/find_window.h"

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

std::string found_routine_text(const found_routine& found) {
  if (found.file.empty()) return found.routine + " in " + found.module;
  return found.routine + " (" + found.file + ": " + std::to_string(found.line) + ")";
}

find_window::find_window(std::vector<found_routine> found)
    : scrolling_window(kFindKind, "Find", layout_settings::consecutive(kFindWindowX)), found_(std::move(found)) {}

void find_window::fill_rows(window_rows& rows) {
  for (const auto& found : found_) rows.add(found_routine_text(found));
}

const found_routine* find_window::selected_routine() const {
  int row = selected_row();
  return row >= 0 && row < static_cast<int>(found_.size()) ? &found_[static_cast<std::size_t>(row)] : nullptr;
}

}  // namespace vantor::ui
