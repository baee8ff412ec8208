// The find window: the routines whose names hold the fragment the user looked for, each
// with its source position, or with its module when it has none.
#pragma once

#include <string>
#include <vector>

#include "ui/scrolling_window.h"

namespace vantor::ui {

struct found_routine {
  std::string routine;
  std::string file;  // "" when the routine has no source position
  int line = 0;
  std::string module;
};

std::string found_routine_text(const found_routine& found);

class find_window : public scrolling_window {
 public:
  explicit find_window(std::vector<found_routine> found);

  const std::vector<found_routine>& found() const { return found_; }
  // The routine of the selected row; null when nothing is selected.
  const found_routine* selected_routine() const;

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  std::vector<found_routine> found_;
};

}  // namespace vantor::ui
