#include "process/common_probe.h"

namespace vantor {

namespace {

constexpr Address kRedZone = 128;
constexpr Address kShadowArea = 32;
constexpr std::uint32_t kDirectionFlag = 0x400;
constexpr std::uint32_t kWaitSliceMs = 500;

bool is_probe_return(const os::DebugEvent& event, const TargetCall& call) {
  return event.kind == os::kExceptionEvent && event.thread_id == call.thread_id &&
         event.exception_code == kAccessViolation && event.exception_address == kProbeReturnTrap;
}

}  // namespace

Address probe_entry_stack_pointer(Address rsp) {
  Address aligned = (rsp - kRedZone) & ~Address{15};
  return aligned - kShadowArea - 8;  // the return address sits where a call would push it
}

TargetCallOutcome call_in_stopped_thread(TargetMemory& memory, const TargetCall& call) {
  os::System& system = os::system();
  TargetCallOutcome outcome;
  os::ThreadContext saved;
  if (!system.get_context(call.thread, saved)) return outcome;

  os::ThreadContext probe = saved;
  probe.rsp = probe_entry_stack_pointer(saved.rsp);
  std::uint64_t return_address = kProbeReturnTrap;
  if (memory.write(probe.rsp, &return_address, 8) != 8) return outcome;
  probe.rip = call.routine;
  probe.rax = probe.rcx = probe.rdx = probe.r8 = probe.r9 = 0;
  probe.eflags &= ~(os::kTrapFlag | kDirectionFlag);
  probe.dr7 = 0;
  if (!system.set_context(call.thread, probe)) return outcome;
  if (!system.continue_event(call.process_id, call.thread_id, os::kContinue)) {
    system.set_context(call.thread, saved);
    return outcome;
  }

  // ---- the routine runs: wait for its return, passing on whatever else happens ----
  std::uint32_t waited = 0;
  os::DebugEvent event;
  for (;;) {
    if (!system.wait_for_event(event, kWaitSliceMs)) {
      waited += kWaitSliceMs;
      if (waited < call.time_limit_ms) continue;
      system.suspend_thread(call.thread);
      system.set_context(call.thread, saved);
      outcome.after = TargetCallOutcome::kThreadSuspended;
      return outcome;
    }
    if (event.process_id != call.process_id) continue;

    if (is_probe_return(event, call)) {
      os::ThreadContext returned;
      if (system.get_context(call.thread, returned)) {
        outcome.returned = true;
        outcome.rax = returned.rax;
      }
      system.set_context(call.thread, saved);
      return outcome;
    }

    std::uint32_t status = os::kContinue;
    switch (event.kind) {
      case os::kExitProcessEvent:
        outcome.after = TargetCallOutcome::kProcessEnded;
        outcome.exit_code = event.exit_code;
        return outcome;
      case os::kCreateProcessEvent:
      case os::kLoadDllEvent:
        // The image handle belongs to whoever takes the event.
        if (event.file) system.close_handle(event.file);
        break;
      case os::kExceptionEvent: {
        bool trap = event.exception_code == kBreakpointException || event.exception_code == kSingleStepException;
        if (event.thread_id == call.thread_id && !trap) {
          // The routine itself failed: abandon the call; this fault is now the pending event.
          system.set_context(call.thread, saved);
          return outcome;
        }
        // A line trap passed on the way resumes after its byte; other threads' faults are
        // theirs to handle.
        if (!trap) status = os::kExceptionNotHandled;
        break;
      }
      default:
        break;
    }
    system.continue_event(event.process_id, event.thread_id, status);
  }
}

}  // namespace vantor
