// A text window bound to an expression in the name space of one stack frame: the
// inspector, the array and structure views and the memory dump. The frame is held by its
// index in the current call stack, since frame objects die with the stack that made them.
#pragma once

#include "ui/text_window.h"

namespace vantor::ui {

class frame_window : public text_window {
 public:
  frame_window(int kind, std::string title, layout_settings settings, int frame_index, std::string expression,
               LayoutKind layout = LayoutKind::kFramed)
      : text_window(kind, std::move(title), settings, layout),
        frame_index_(frame_index),
        expression_(std::move(expression)) {}

  int frame_index() const { return frame_index_; }
  const std::string& expression() const { return expression_; }
  void set_frame_index(int index) { frame_index_ = index; }

 private:
  int frame_index_;
  std::string expression_;
};

}  // namespace vantor::ui
