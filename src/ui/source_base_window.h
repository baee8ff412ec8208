// A text window over lines of the program: source text or machine code. Both kinds follow
// a stack frame: at a stop the main loop shows them at the frame that stopped.
#pragma once

#include "ui/text_window.h"

namespace vantor::ui {

class source_base_window : public text_window {
 public:
  using text_window::text_window;

  // Shows the position of the frame with that index in the current call stack; false
  // when the window cannot show it (no source or code there).
  virtual bool show_frame(int frame_index) = 0;
  int frame_index() const { return frame_index_; }

 protected:
  int frame_index_ = -1;
};

}  // namespace vantor::ui
