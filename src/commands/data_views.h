// The data windows as commands and stops open them: each is found among the open windows
// (front first) or made with its producer, placed where its settings say, and opened.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "process/target_memory.h"
#include "ui/breakpoints_window.h"
#include "ui/dump_window.h"
#include "ui/value_window.h"
#include "ui/regs_window.h"
#include "ui/stack_window.h"
#include "ui/streams_window.h"
#include "ui/vars_window.h"
#include "ui/watch_window.h"

namespace vantor {

struct element;

// Each brings the open window of its kind forward, or opens one.
ui::breakpoints_window& show_breakpoints_window();
ui::regs_window& show_registers_window();
ui::streams_window& show_streams_window();
ui::watch_window& show_watch_window();
// The variables window moves to the frame only when it is opened here.
ui::vars_window& show_variables_window(std::int32_t frame_index);
ui::stack_window& show_stack_window();

// The window that suits a value of `expression` in the frame with that index: the
// structure view for a structure (or a pointer to one, shown through "*(%s)"), the array
// view for an array, a memory dump at the address a pointer to nothing typed holds, else
// the expression window. Made, not opened.
std::unique_ptr<ui::text_window> make_value_window(const std::string& expression, const element& value,
                                                   std::int32_t frame_index);
std::unique_ptr<ui::value_window> make_expression_window(const std::string& expression, std::int32_t frame_index);
std::unique_ptr<ui::dump_window> make_dump_window(Address address, const std::string& expression,
                                                  std::int32_t frame_index);

// Puts a window at (x, y) with the size its settings give, and opens it.
ui::text_window& open_window_at(std::unique_ptr<ui::text_window> window, int x, int y);

}  // namespace vantor
