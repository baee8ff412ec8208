// The list windows whose rows another part of the debugger writes in full (the loaded
// modules, the COMMON blocks, the Fortran units): a scrolling list with a kind, a title
// and a producer.
#pragma once

#include "ui/scrolling_window.h"

namespace vantor::ui {

class produced_list_window : public scrolling_window {
 public:
  produced_list_window(int kind, std::string title, layout_settings settings, row_producer producer)
      : scrolling_window(kind, std::move(title), settings), producer_(std::move(producer)) {}

 protected:
  void fill_rows(window_rows& rows) override {
    std::string status;
    if (producer_) producer_(rows, status);
    set_status(std::move(status));
  }

 private:
  row_producer producer_;
};

}  // namespace vantor::ui
