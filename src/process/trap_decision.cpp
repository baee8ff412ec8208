// Where breakpoints, line traps and hardware slots meet the run operation: what is set up
// before each run, and whether a trap stops the program. Until the breakpoint list and the
// stepping rules take the decision, every trap that reaches it stops: a line start while
// the line traps are armed, a breakpoint instruction compiled into the program, the end
// of an instruction step.
#include "debuginfo/module.h"
#include "process/debugged_process.h"

namespace vantor {

void DebuggedProcess::prepare_run(std::int32_t) {
  retry_deferred_breakpoints();
  refresh_call_stack();
}

bool DebuggedProcess::decide_at_trap(const os::DebugEvent&) {
  lift_breakpoints();
  return true;
}

void DebuggedProcess::arm_line_traps() {
  for (const auto& module : modules_) module->set_line_traps(true);
  line_traps_armed_ = true;
}

void DebuggedProcess::disarm_line_traps() {
  if (!line_traps_armed_) return;
  for (const auto& module : modules_) module->set_line_traps(false);
  line_traps_armed_ = false;
}

// No code breakpoint is planted yet: the breakpoint list arrives with the breakpoint engine.
void DebuggedProcess::lift_breakpoints() {}

}  // namespace vantor
