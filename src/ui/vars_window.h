// The variables window: the variables of one frame of the current call stack, each as
// "name = value", sorted by name and with or without named constants as the user's
// settings say.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ui/scrolling_window.h"

namespace vantor::ui {

struct variable_row {
  std::string name;
  std::string value;       // the value text
  bool is_parameter = false;  // a named constant
};

class vars_window : public scrolling_window {
 public:
  // The routine name and the variables of the frame with that index; false when there is
  // no such frame. The values part supplies it.
  using producer = std::function<bool(int frame_index, std::string& routine, std::vector<variable_row>& variables)>;

  vars_window(producer produce, int frame_index);

  int frame_index() const { return frame_index_; }
  // The main loop moves the window to the frame that stopped.
  void show_frame(int frame_index);
  // The variable of the selected row; null when nothing (or "No Variables") is selected.
  const variable_row* selected_variable() const;

  std::vector<std::string> saved_lines() const override;
  std::string contents_file_name() const override { return "vars.txt"; }

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  producer produce_;
  int frame_index_;
  std::vector<variable_row> shown_;
};

}  // namespace vantor::ui
