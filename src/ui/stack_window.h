// The call-stack window: a status line from the process state, then one row per frame of
// the current call stack, innermost first. The selected row is the selected frame, which
// typed commands use as their name space.
#pragma once

#include "ui/text_window.h"

namespace vantor::ui {

class stack_window : public text_window {
 public:
  // The producer writes the status line and the frame rows (frames without a source
  // position carry kRowWithoutSource); the call-stack subsystem supplies it.
  explicit stack_window(row_producer producer);

  // The frame index of the selected row; -1 when none is selected.
  int selected_frame() const { return selected_row(); }

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  row_producer producer_;
};

}  // namespace vantor::ui
