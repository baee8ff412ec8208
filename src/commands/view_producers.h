// The contents of the data windows, written from the stopped program: each window model
// is given one of these producers, which evaluates and formats afresh at every refresh in
// the frame the window is bound to (by its index in the call stack of the last stop).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ui/array_window.h"
#include "ui/breakpoints_window.h"
#include "ui/dump_window.h"
#include "ui/value_window.h"
#include "ui/source_window.h"
#include "ui/structure_window.h"
#include "ui/text_window.h"
#include "ui/vars_window.h"
#include "ui/watch_window.h"

namespace vantor {

class StackFrame;
struct element;
struct DataViewSource;

// The frame that stopped: watches are evaluated in it. -1 when there is none.
std::int32_t current_frame_index();
void set_current_frame_index(std::int32_t index);

// The stopped program as the data views read it: the host's memory, registers and frames.
DataViewSource data_view_source();

ui::vars_window::producer variables_producer();
ui::watch_window::evaluator watch_evaluator();
ui::value_window::producer expression_producer();
ui::array_window::producer array_producer();
ui::structure_window::producer structure_producer();
ui::row_producer registers_producer();
ui::breakpoints_window::lister breakpoint_lister();
ui::breakpoints_window::deleter breakpoint_deleter();
ui::dump_window::data_break_setter dump_break_setter();
// Source windows: where a frame stopped, and which lines hold breakpoints.
ui::source_window::frame_locator source_locator();
ui::source_window::breakpoint_test breakpoint_marks();

// The expression window's rows: "expression = value" (or the evaluator's message), then
// for an array one row per element and for a structure one row per member, each named as
// the user would type it.
void expression_rows(const std::string& expression, std::int32_t frame_index, ui::window_rows& rows);

}  // namespace vantor
