// The debugged process as breakpoints and stepping see it: its modules answer line
// addresses and switch line traps, its call stacks give depths and return slots, and the
// evaluator decides conditions in the innermost frame.
#pragma once

#include "process/breakpoint_host.h"

namespace vantor {

class DebuggedProcess;

class ProcessBreakpointHost : public BreakpointHost {
 public:
  explicit ProcessBreakpointHost(DebuggedProcess& process) : process_(process) {}

  TargetMemory& memory() override;
  Address address_of_line(const std::string& file, std::int32_t line) override;
  void set_module_line_traps(bool on) override;
  os::ThreadContext& context() override;
  bool store_context() override;
  void refresh_call_stack() override;
  bool has_call_stack() override;
  std::int32_t stack_depth() override;
  Address return_slot(std::int32_t index) override;
  void restore_previous_stack() override;
  std::optional<bool> evaluate_condition(const std::string& condition) override;

 private:
  DebuggedProcess& process_;
  bool stack_taken_ = false;
};

}  // namespace vantor
