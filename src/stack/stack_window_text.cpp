#include "stack/stack_window_text.h"

#include "debuginfo/module.h"
#include "process/debugged_process.h"

namespace vantor {

std::string stack_status_line(const DebuggedProcess& process) {
  switch (process.state()) {
    case psPaused:
      return "Status: " + process.status_text();
    case psStopped:
      if (process.stop_reason() == kStopUseDataBreakpoint) return "Status: Use data breakpoint";
      if (process.stop_reason() == kStopWriteDataBreakpoint) return "Status: Write data breakpoint";
      return "Status: breakpoint";
    case psFailed:
      // Run-time errors and the like already read "Something: detail".
      if (process.status_text().find(':') != std::string::npos) return process.status_text();
      return "Error: " + process.status_text();
    case psEnded:
      return "Status: Program Terminated";
    default:
      return {};
  }
}

std::string frame_row_text(const frame_information& frame) {
  if (!frame.has_source) return frame.routine_name;
  return frame.routine_name + " (" + std::string(bare_file_name(frame.source_file_name)) + ": " +
         std::to_string(frame.line) + ")";
}

void fill_stack_window(DebuggedProcess& process, ui::window_rows& rows, std::string& status) {
  status = stack_status_line(process);
  CallStack* stack = process.current_stack();
  if (process.state() == psEnded || !stack) return;
  for (std::int32_t i = 0; i < stack->depth(); ++i) {
    frame_information info = stack->information(i);
    rows.add(frame_row_text(info), info.has_source ? ui::kRowPlain : ui::kRowWithoutSource);
  }
}

}  // namespace vantor
