#include "ui/regs_window.h"

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

regs_window::regs_window(row_producer producer)
    : text_window(kRegistersKind, "Registers", layout_settings::position_only(kRegsWindowX)),
      producer_(std::move(producer)) {}

void regs_window::fill_rows(window_rows& rows) {
  std::string status;
  if (producer_) producer_(rows, status);
  set_status(std::move(status));
}

}  // namespace vantor::ui
