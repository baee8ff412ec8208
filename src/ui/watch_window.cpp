#include "ui/watch_window.h"

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

watch_window::watch_window(evaluator evaluate)
    : scrolling_window(kWatchesKind, "Watches", layout_settings::consecutive(kWatchWindowX)),
      evaluate_(std::move(evaluate)) {}

void watch_window::add_watch(const std::string& expression) {
  entries_.push_back({expression});
  refresh();
}

bool watch_window::delete_selected() {
  int row = selected_row();
  if (row < 0 || row >= static_cast<int>(entries_.size())) return false;
  entries_.erase(entries_.begin() + row);
  refresh();
  return true;
}

const watch_entry* watch_window::selected_watch() const {
  int row = selected_row();
  return row >= 0 && row < static_cast<int>(entries_.size()) ? &entries_[static_cast<std::size_t>(row)] : nullptr;
}

bool watch_window::handle_popup_choice(int choice) {
  if (choice != kPopupDeleteWatch) return false;
  delete_selected();
  return true;
}

void watch_window::fill_rows(window_rows& rows) {
  if (entries_.empty()) {
    rows.add("No watches defined");
    return;
  }
  for (const auto& entry : entries_) {
    watch_value value = evaluate_ ? evaluate_(entry.expression) : watch_value{watch_value::kError, ""};
    switch (value.state) {
      case watch_value::kValue:
        rows.add(entry.expression + " = " + value.text);
        break;
      case watch_value::kOutOfScope:
        rows.add(entry.expression + " = Out of scope");
        break;
      case watch_value::kError:
        rows.add(entry.expression + " = Error in watch expression");
        break;
    }
  }
}

}  // namespace vantor::ui
