// "Modules": one row per loaded image; the debug-information part writes the rows.
#pragma once

#include "ui/produced_list_window.h"

namespace vantor::ui {

class module_window : public produced_list_window {
 public:
  explicit module_window(row_producer producer);
};

}  // namespace vantor::ui
