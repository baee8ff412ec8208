#include "ui/stack_window.h"

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

stack_window::stack_window(row_producer producer)
    : text_window(kStackKind, "Call Stack", layout_settings::consecutive(kStackWindowX)),
      producer_(std::move(producer)) {}

void stack_window::fill_rows(window_rows& rows) {
  std::string status;
  if (producer_) producer_(rows, status);
  set_status(std::move(status));
}

}  // namespace vantor::ui
