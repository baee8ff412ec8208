// Remembering where windows were: each text window writes its place and size under its
// own setting numbers when it closes, and the main window its place, size or maximised
// placement when the session ends or the user fixes it.
#pragma once

#include <optional>

#include "ui/desktop_placement.h"
#include "ui/text_window.h"

namespace vantor::ui {

// Writes the window's X, Y, W and H under those of its setting numbers that are set.
// The library reports a window's place one unit above and left of the place it is given,
// and a framed window's size with its one-unit frame on each side; so positions are saved
// one more, and a framed window's size two less, than reported.
void save_window_layout(const text_window& window);

struct main_window_layout {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool maximised = false;
  std::optional<DesktopPlacement> placement;  // needed when maximised
};

// Desktop-X and Desktop-Y always; the size only when it is to be kept: as Desktop-W and
// Desktop-H when not maximised, else as the maximised placement.
void save_main_window_layout(const main_window_layout& layout, bool keep_size);

}  // namespace vantor::ui
