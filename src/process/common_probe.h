// Calling a routine of the debugged program from a stop: the stopped thread is borrowed,
// made to run the routine as if it had been called from where it stands, caught when the
// routine returns, and put back exactly as it was. The debugger uses it once per session
// to ask the run-time library where its COMMON list lives ("__get_common_info").
//
// The call is laid out so that it is safe wherever the thread stopped:
//  - the routine's frame starts 128 bytes below the thread's stack pointer, so that nothing
//    the interrupted code may still keep just below its stack pointer is overwritten;
//  - the stack is aligned to 16 bytes at the call, with the 32-byte shadow area above the
//    return address, as the calling convention requires of any caller;
//  - the return address is an address that is never mapped (below 64 KiB), so the return
//    raises an execute fault at that exact address: the debugger's own trap, with no code
//    written into the program;
//  - the trap flag and the direction flag are cleared and the hardware watches disabled
//    for the call; argument registers and RAX are zeroed.
// Everything (all registers, the debug registers, the flags) is restored from the saved
// context after the return. The probe's fault is the event then pending in place of the
// stop's own; continuing it resumes the restored context, so the caller's bookkeeping
// ("an event is pending") stays true. See docs/common-probe.md.
#pragma once

#include <cstdint>

#include "os/os.h"
#include "process/exception_names.h"
#include "process/target_memory.h"

namespace vantor {

constexpr const char* kCommonInfoRoutine = "__get_common_info";
// Where the borrowed thread "returns" to.
constexpr Address kProbeReturnTrap = 0xC0DE;

struct TargetCall {
  os::Handle process = 0;
  os::Handle thread = 0;
  std::uint32_t process_id = 0;
  std::uint32_t thread_id = 0;
  Address routine = 0;
  // How long the routine may run before the call is abandoned.
  std::uint32_t time_limit_ms = 2000;
};

struct TargetCallOutcome {
  bool returned = false;  // the routine came back to the trap
  std::uint64_t rax = 0;  // its result when it did
  // What the caller must know afterwards. In every case the thread's registers are back as
  // they were at the stop.
  enum After {
    kEventPending,     // an event of the thread awaits its continue, as before the call
    kThreadSuspended,  // the routine never came back: the thread was suspended instead
    kProcessEnded,     // the program ended during the call; `exit_code` holds its status
  } after = kEventPending;
  std::uint32_t exit_code = 0;
};

// `memory` writes the return address onto the thread's stack. The thread must be stopped
// in a debug event that has not been continued.
TargetCallOutcome call_in_stopped_thread(TargetMemory& memory, const TargetCall& call);

// The stack pointer at the routine's entry for a thread stopped with stack pointer `rsp`.
Address probe_entry_stack_pointer(Address rsp);

}  // namespace vantor
