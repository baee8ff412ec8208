#include "ui/scrolling_window.h"

namespace vantor::ui {

bool scrolling_window::handle_command(int code) {
  bool selecting = selected_row() >= 0;
  auto move = [&](int delta) {
    if (selecting)
      move_selection(delta);
    else
      scroll_by(delta);
  };
  switch (code) {
    case kCommandLineUp:
      move(-1);
      break;
    case kCommandLineDown:
      move(1);
      break;
    case kCommandPageUp:
      move(-visible_rows());
      break;
    case kCommandPageDown:
      move(visible_rows());
      break;
    case kCommandFirstRow:
      move(-row_count());
      break;
    case kCommandLastRow:
      move(row_count());
      break;
    default:
      return false;
  }
  redraw();
  return true;
}

bool scrolling_window::select_visible_row(int visible_index) {
  int row = first_visible_row() + visible_index;
  if (visible_index < 0 || visible_index >= visible_rows() || row >= row_count()) return false;
  select_row(row);
  redraw();
  return true;
}

std::string scrolling_window::selected_text() const {
  return selected_row() >= 0 ? rows()[static_cast<std::size_t>(selected_row())] : std::string();
}

}  // namespace vantor::ui
