// "Streams": the program's Fortran units. The debugger cannot list them yet, so the window
// has no rows unless it is given a producer.
#pragma once

#include "ui/produced_list_window.h"

namespace vantor::ui {

class streams_window : public produced_list_window {
 public:
  explicit streams_window(row_producer producer = nullptr);
};

}  // namespace vantor::ui
