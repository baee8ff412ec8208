#include "process/process_breakpoint_host.h"

#include "debuginfo/module.h"
#include "process/breakpoint_condition.h"
#include "process/debugged_process.h"
#include "stack/call_stack.h"

namespace vantor {

TargetMemory& ProcessBreakpointHost::memory() { return process_; }

Address ProcessBreakpointHost::address_of_line(const std::string& file, std::int32_t line) {
  const bool whole_path = file.find('\\') != std::string::npos;
  for (const auto& module : process_.modules()) {
    Address address =
        whole_path ? module->line_address(file, line) : module->line_address_by_bare_name(file, line);
    if (address != 0) return address;
  }
  return 0;
}

void ProcessBreakpointHost::set_module_line_traps(bool on) {
  for (const auto& module : process_.modules()) module->set_line_traps(on);
}

os::ThreadContext& ProcessBreakpointHost::context() { return process_.context(); }

bool ProcessBreakpointHost::store_context() {
  return os::system().set_context(process_.event_thread_handle(), process_.context());
}

void ProcessBreakpointHost::refresh_call_stack() {
  process_.refresh_call_stack();
  stack_taken_ = true;
}

// Once the stack has been taken the held context is the thread's own and may be written
// back; before that (a program not yet started) there is nothing to program.
bool ProcessBreakpointHost::has_call_stack() { return stack_taken_ || process_.current_stack() != nullptr; }

std::int32_t ProcessBreakpointHost::stack_depth() {
  return process_.current_stack() ? process_.current_stack()->depth() : 0;
}

Address ProcessBreakpointHost::return_slot(std::int32_t index) {
  const CallStack* stack = process_.current_stack();
  if (!stack || index < 0 || index >= stack->depth()) return 0;
  return stack->items()[static_cast<std::size_t>(index)].return_slot;
}

void ProcessBreakpointHost::restore_previous_stack() { process_.restore_previous_call_stack(); }

std::optional<bool> ProcessBreakpointHost::evaluate_condition(const std::string& condition) {
  const CallStack* stack = process_.current_stack();
  StackFrame* innermost = stack ? stack->frame(0) : nullptr;
  return evaluate_breakpoint_condition(condition, innermost, process_, &process_.context());
}

}  // namespace vantor
