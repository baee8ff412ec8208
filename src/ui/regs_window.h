// The registers window: the dump of the stopped thread's registers, rebuilt at each
// refresh; empty when there is no current context.
#pragma once

#include "ui/text_window.h"

namespace vantor::ui {

class regs_window : public text_window {
 public:
  // The producer writes the register dump, one line a row; the registers part supplies it.
  explicit regs_window(row_producer producer);

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  row_producer producer_;
};

}  // namespace vantor::ui
