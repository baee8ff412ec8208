// The start of every run and the decision taken at every trap stop: whether the program
// stops or runs on, for the run modes step into, go, step over, one instruction and step
// out. Step over and step out wait for a routine's return with a hardware watch on its
// return-address slot rather than with temporary code breakpoints.
#pragma once

#include <cstdint>

#include "process/breakpoint_host.h"
#include "process/breakpoint_list.h"
#include "process/exception_names.h"
#include "process/hardware_slots.h"

namespace vantor {

// Run modes: the main loop's command numbers.
enum RunMode : std::int32_t {
  kModeStepInto = 3,
  kModeGo = 4,
  kModeStepOver = 5,
  kModeOneInstruction = 6,
  kModeStepOut = 8,
};

struct TrapVerdict {
  bool stop = true;
  std::int32_t stop_reason = 1;  // 1 code trap, 2 use data breakpoint, 3 write data breakpoint
};

class Stepping {
 public:
  Stepping(BreakpointHost& host, BreakpointList& breakpoints, HardwareSlots& slots)
      : host_(host), breakpoints_(breakpoints), slots_(slots) {}
  Stepping(const Stepping&) = delete;
  Stepping& operator=(const Stepping&) = delete;

  // Called by the run operation before the program is resumed; the line traps have
  // already been armed or disarmed for the mode. Remembers where the step starts,
  // resolves what deferred requests it can, walks the stack, plants the breakpoints, and
  // programs the debug registers (step out adds its return watch) and the trap flag.
  void start_run(std::int32_t mode);

  // A breakpoint or single-step exception in `mode`, the call stack already refreshed.
  // When the verdict is to stop, the stop's clean-up has been done (breakpoints lifted,
  // one-shot slots freed, the run-to breakpoint removed); when it is to run on, the
  // previous call stack is current again and the caller resumes the program.
  TrapVerdict at_trap(std::int32_t mode, std::uint32_t exception_code, Address exception_address);

  // An exception stop (access violation, run-time error, ...): only the code breakpoints
  // come out of the code.
  void at_exception_stop() { breakpoints_.lift_breakpoints(); }

  // Writes the slots into the held context and stores it (when anything changed).
  void apply_debug_registers();

  // The command language's "getto" breakpoint, removed at the next trap stop; -1 when none.
  std::int32_t run_to_breakpoint() const { return run_to_breakpoint_; }
  void set_run_to_breakpoint(std::int32_t id) { run_to_breakpoint_ = id; }

  std::int32_t remembered_depth() const { return remembered_depth_; }
  Address remembered_stack_pointer() const { return remembered_stack_pointer_; }

 private:
  TrapVerdict stop(std::int32_t reason);
  TrapVerdict run_on();
  // Puts a return-address watch on `slot_address`; false when no slot is free (or the slot
  // is unknown), in which case the line traps stay armed and the next line start stops.
  bool watch_return(Address slot_address);

  BreakpointHost& host_;
  BreakpointList& breakpoints_;
  HardwareSlots& slots_;
  std::int32_t remembered_depth_ = 0;
  Address remembered_stack_pointer_ = 0;
  std::int32_t run_to_breakpoint_ = -1;
};

}  // namespace vantor
