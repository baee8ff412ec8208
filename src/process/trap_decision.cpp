// Where breakpoints, line traps and hardware slots meet the run operation: the start of
// every run, and whether a trap stops the program.
#include "process/debugged_process.h"
#include "process/process_breakpoint_host.h"
#include "stack/call_stack.h"

namespace vantor {

void DebuggedProcess::prepare_run(std::int32_t mode) {
  run_mode_ = mode;
  stepping_->start_run(mode);
}

bool DebuggedProcess::decide_at_trap(const os::DebugEvent& event) {
  TrapVerdict verdict = stepping_->at_trap(run_mode_, event.exception_code, event.exception_address);
  stop_reason_ = verdict.stop_reason;
  return verdict.stop;
}

void DebuggedProcess::add_deferred_breakpoint(const deferred_breakpoint& request) {
  breakpoints_->add_deferred_breakpoint(request.file, request.line, request.after, request.every, request.condition);
}

}  // namespace vantor
