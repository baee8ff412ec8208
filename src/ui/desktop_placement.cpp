#include "ui/desktop_placement.h"

#include <cstdio>

namespace vantor::ui {

std::string text_from_placement(const DesktopPlacement& p) {
  char text[160];
  std::snprintf(text, sizeof text, "%u,%u,%d,%d,%d,%d,%d,%d,%d,%d", p.flags, p.show_command, p.min_x, p.min_y,
                p.max_x, p.max_y, p.left, p.top, p.right, p.bottom);
  return text;
}

std::optional<DesktopPlacement> placement_from_text(const std::string& text) {
  DesktopPlacement p;
  int end = 0;
  int fields = std::sscanf(text.c_str(), "%u,%u,%d,%d,%d,%d,%d,%d,%d,%d%n", &p.flags, &p.show_command, &p.min_x,
                           &p.min_y, &p.max_x, &p.max_y, &p.left, &p.top, &p.right, &p.bottom, &end);
  if (fields != 10 || text[static_cast<std::size_t>(end)] != '\0') return std::nullopt;
  return p;
}

}  // namespace vantor::ui
