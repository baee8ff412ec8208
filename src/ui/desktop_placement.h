// The main window's placement when it was left maximised, kept in the "DesktopPlacement"
// setting as ten comma-separated numbers in the order of the system's window-placement
// record: flags, show command, minimised x and y, maximised x and y, and the normal
// rectangle's left, top, right and bottom.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vantor::ui {

struct DesktopPlacement {
  std::uint32_t flags = 0;
  std::uint32_t show_command = 0;
  int min_x = 0, min_y = 0;
  int max_x = 0, max_y = 0;
  int left = 0, top = 0, right = 0, bottom = 0;

  bool operator==(const DesktopPlacement&) const = default;
};

// "%u,%u,%d,%d,%d,%d,%d,%d,%d,%d"
std::string text_from_placement(const DesktopPlacement& placement);
// Nullopt unless the text holds all ten numbers (a hand-edited or cut value is not used).
std::optional<DesktopPlacement> placement_from_text(const std::string& text);

}  // namespace vantor::ui
