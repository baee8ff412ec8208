// What the data views show, made from the values of the stopped program: the variables
// of a frame, the elements of an array, the members of a structure, one expression's
// value, a watch, and the registers. The windows take these through their producers; the
// session binds them to the current call stack and the process.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "os/os.h"
#include "process/target_memory.h"
#include "ui/array_window.h"
#include "ui/structure_window.h"
#include "ui/text_window.h"
#include "ui/vars_window.h"
#include "ui/watch_window.h"

namespace vantor {

class StackFrame;

struct DataViewSource {
  TargetMemory* memory = nullptr;
  // The frame of the current call stack with that index; null when there is none.
  std::function<StackFrame*(int index)> frame;
  const os::ThreadContext* registers = nullptr;
};

// The variables of the frame, "name" as the user wrote it and the value text (or the error
// text); named constants are marked. False when there is no such frame.
bool variables_of_frame(const DataViewSource& source, int frame_index, std::string& routine,
                        std::vector<ui::variable_row>& variables);

// Every element of the array the expression names, first subscript fastest in Fortran,
// last fastest in C; at most kArrayViewLimit of them. The array's bytes are fetched in one
// read where they can be.
constexpr std::size_t kArrayViewLimit = 100000;
void array_contents_of(const DataViewSource& source, int frame_index, const std::string& expression,
                       ui::array_contents& out);

// The members of the structure the expression names (or of the structure a pointer
// points at).
void structure_contents_of(const DataViewSource& source, int frame_index, const std::string& expression,
                           ui::structure_contents& out);

// One expression as the value window lists it: "expression = value" (or the error text),
// then a row per element of an array (at most element_limit, then "...") or per member of
// a structure. The expression is evaluated once.
void expression_rows_of(const DataViewSource& source, int frame_index, const std::string& expression,
                        std::size_t element_limit, ui::window_rows& rows);

// A watch in the current frame (index 0): out of scope when a name is not visible there.
ui::watch_value watch_value_of(const DataViewSource& source, const std::string& expression);

// The registers dump as rows.
void register_rows_of(const DataViewSource& source, ui::window_rows& rows, std::string& status);

}  // namespace vantor
