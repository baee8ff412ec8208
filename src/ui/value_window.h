// The expression window: one expression and its value in a frame's name space. "print"
// opens it for values that need no array, structure or dump view, and "dprint" builds it
// off screen to write it to the console.
#pragma once

#include <functional>

#include "ui/frame_window.h"

namespace vantor::ui {

class value_window : public frame_window {
 public:
  // Writes the value of the expression in the frame with that index, one line a row, or
  // the evaluator's message; the values part supplies it.
  using producer = std::function<void(int frame_index, const std::string& expression, window_rows& rows)>;

  value_window(producer produce, std::string expression, int frame_index);

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  producer produce_;
};

}  // namespace vantor::ui
