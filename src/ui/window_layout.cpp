#include "ui/window_layout.h"

#include "ui/settings.h"

namespace vantor::ui {

namespace {
void save_if_remembered(int number, int value) {
  if (number != kNoSetting) set_setting_int(number, value);
}
}  // namespace

void save_window_layout(const text_window& window) {
  const layout_settings& settings = window.settings();
  const winlib::WindowLocation& where = window.location();
  int frame = window.layout_kind() == LayoutKind::kFramed ? 2 : 0;
  save_if_remembered(settings.x, where.x + 1);
  save_if_remembered(settings.y, where.y + 1);
  save_if_remembered(settings.width, where.width - frame);
  save_if_remembered(settings.height, where.height - frame);
}

void save_main_window_layout(const main_window_layout& layout, bool keep_size) {
  set_setting_int(kDesktopX, layout.x);
  set_setting_int(kDesktopY, layout.y);
  if (!keep_size) return;
  if (!layout.maximised) {
    set_setting_int(kDesktopMaximised, 0);
    set_setting_int(kDesktopW, layout.width);
    set_setting_int(kDesktopH, layout.height);
  } else {
    set_setting_int(kDesktopMaximised, 1);
    if (layout.placement) set_setting_text(kDesktopPlacement, text_from_placement(*layout.placement));
  }
}

}  // namespace vantor::ui
