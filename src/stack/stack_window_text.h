// What the call-stack window shows, as text: a status line built from the process's state
// and one row per frame, innermost first. The window scrolls, selects and draws them.
#pragma once

#include <string>

#include "stack/call_stack.h"
#include "ui/text_window.h"

namespace vantor {

class DebuggedProcess;

// The first line of the window; empty in states that have nothing to report.
std::string stack_status_line(const DebuggedProcess& process);

// A frame as the window lists it: "NAME (file: line)" with the file's name after its last
// backslash, or the bare name when the frame has no source position.
std::string frame_row_text(const frame_information& frame);

// The status line, then one row per frame of the current call stack: the frame's name and,
// when it knows its source position, " (file: line)" with the file's name after its last
// backslash. Rows without a source position carry kRowWithoutSource. No rows once the
// program has ended.
void fill_stack_window(DebuggedProcess& process, ui::window_rows& rows, std::string& status);

}  // namespace vantor
