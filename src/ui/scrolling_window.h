// A text window whose rows are a list the user moves through: keys move the selection (or
// the view, when nothing is selected) and a click selects the row under the mouse. The
// breakpoints, COMMON, modules, find, variables and watch windows are lists.
#pragma once

#include "ui/text_window.h"

namespace vantor::ui {

class scrolling_window : public text_window {
 public:
  using text_window::text_window;

  // Line and page moves, first and last row.
  bool handle_command(int code) override;
  // A click on the n-th visible row (0 at the top); false when no row is there.
  bool select_visible_row(int visible_index);
  // The selected row's text, or "" when nothing is selected.
  std::string selected_text() const;
};

}  // namespace vantor::ui
