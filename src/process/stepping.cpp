#include "process/stepping.h"

namespace vantor {

void Stepping::apply_debug_registers() {
  if (slots_.encode(host_.context())) host_.store_context();
}

bool Stepping::watch_return(Address slot_address) {
  if (slot_address == 0) return false;
  return breakpoints_.set_hardware_slot(kAccessUse, kSlotReturnWatch, slot_address, 8) >= 0;
}

void Stepping::start_run(std::int32_t mode) {
  remembered_depth_ = host_.stack_depth();
  breakpoints_.retry_deferred_breakpoints();
  host_.refresh_call_stack();
  remembered_stack_pointer_ = host_.context().rsp;
  // Switching the line traps for the mode has just planted them when it changed anything;
  // every write is a cross-process call.
  if (!breakpoints_.planted()) breakpoints_.plant_breakpoints();
  // Before the first stop there is no context to program.
  if (!host_.has_call_stack()) return;

  os::ThreadContext& context = host_.context();
  bool changed = slots_.encode(context);
  if (mode == kModeStepOut) {
    if (watch_return(host_.return_slot(0))) breakpoints_.disarm_line_traps();
    changed |= slots_.encode(context);
  }
  const std::uint32_t flags = mode == kModeOneInstruction ? context.eflags | os::kTrapFlag
                                                          : context.eflags & ~os::kTrapFlag;
  changed |= flags != context.eflags;
  context.eflags = flags;
  // One store for the registers and the trap flag: each store is a cross-process call.
  if (changed) host_.store_context();
}

TrapVerdict Stepping::stop(std::int32_t reason) {
  breakpoints_.lift_breakpoints();
  slots_.free_one_shot_slots();
  if (run_to_breakpoint_ != -1) {
    breakpoints_.remove_breakpoint(static_cast<std::uint32_t>(run_to_breakpoint_));
    run_to_breakpoint_ = -1;
  }
  return {true, reason};
}

TrapVerdict Stepping::run_on() {
  host_.restore_previous_stack();
  return {false, 1};
}

TrapVerdict Stepping::at_trap(std::int32_t mode, std::uint32_t exception_code, Address exception_address) {
  // ---- hardware: a watch or execution breakpoint reported by the debug status register
  int slot = slots_.slot_hit(host_.context().dr6);
  if (slot >= 0) {
    const hardware_slot hit = slots_[slot];
    if (hit.kind == kSlotReturnWatch || hit.kind == kSlotUnarmedReturnWatch) {
      // The routine being waited for is returning: the next line start (in its caller)
      // stops the program.
      slots_.free(slot);
      breakpoints_.arm_line_traps();
      apply_debug_registers();
      return run_on();
    }
    if (hit.kind == kSlotDataBreakpoint) {
      // Counted, but a data breakpoint stops whatever its after and every counts.
      breakpoints_.check_breakpoint(hit.address);
      return stop(hit.access == kAccessUse ? 2 : 3);
    }
  }

  // ---- code trap. A trap-flag step executed no trap byte, so it hits no breakpoint.
  BreakpointCheck check =
      exception_code == kSingleStepException ? kNoBreakpoint : breakpoints_.check_breakpoint(exception_address);
  if (!breakpoints_.line_traps_armed() && check == kBreakpointRunOn) return run_on();
  if (check == kBreakpointStop) return stop(1);

  if (mode == kModeStepOver && breakpoints_.line_traps_armed()) {
    // At or above the stack pointer of the start: the same routine or a caller.
    if (host_.context().rsp >= remembered_stack_pointer_) return stop(1);
    const std::int32_t depth = host_.stack_depth();
    if (depth > remembered_depth_) {
      // The first routine called from the stepping one: run until it returns.
      if (watch_return(host_.return_slot(depth - (remembered_depth_ + 1)))) {
        breakpoints_.disarm_line_traps();
        apply_debug_registers();
        return run_on();
      }
    }
  }
  return stop(1);
}

}  // namespace vantor
