// "COMMON": one row per COMMON block of the program; the symbol-table part writes the rows.
#pragma once

#include "ui/produced_list_window.h"

namespace vantor::ui {

class commonblock_window : public produced_list_window {
 public:
  explicit commonblock_window(row_producer producer);
};

}  // namespace vantor::ui
