// The debug-event loop's handlers, one per event kind. Each returns kStop when the run is
// over (the state says why) and kContinue to continue the event and wait on.
#include <algorithm>

#include "common/console.h"
#include "common/messages.h"
#include "common/text_format.h"
#include "debuginfo/module.h"
#include "process/debugged_process.h"
#include "process/exception_names.h"
#include "process/common_probe.h"
#include "process/runtime_errors.h"

namespace vantor {

namespace {

// The access codes of an access violation's first parameter (0 is a read).
constexpr std::uint32_t kAccessWriting = 1;
constexpr std::uint32_t kAccessExecuting = 8;
// The run-time library stops a failing program with `int 9`.
constexpr std::uint8_t kRuntimeErrorTrap[2] = {0xCD, 0x09};

}  // namespace

DebuggedProcess::EventAction DebuggedProcess::on_event(const os::DebugEvent& event, std::uint32_t& continue_status) {
  switch (event.kind) {
    case os::kExceptionEvent:
      return on_exception(event, continue_status);
    case os::kCreateProcessEvent:
      return on_create_process(event);
    case os::kExitProcessEvent:
      return on_exit_process(event);
    case os::kCreateThreadEvent:
      return on_create_thread(event);
    case os::kExitThreadEvent:
      return on_exit_thread(event);
    case os::kLoadDllEvent:
      return on_load_dll(event);
    case os::kUnloadDllEvent:
      return on_unload_dll(event);
    case os::kOutputDebugStringEvent:
      return EventAction::kContinue;
    default:
      console_print("Event %d\n", static_cast<int>(event.kind));
      return EventAction::kContinue;
  }
}

// ---- exceptions ---------------------------------------------------------------------------

DebuggedProcess::EventAction DebuggedProcess::on_exception(const os::DebugEvent& event,
                                                           std::uint32_t& continue_status) {
  const std::uint32_t code = event.exception_code;
  if (code == kBreakpointException && !loader_breakpoint_seen_) {
    // The system's own breakpoint as the program starts: the first moment its modules are
    // all mapped, so the line traps go in here.
    loader_breakpoint_seen_ = true;
    arm_line_traps();
    return EventAction::kContinue;
  }
  if (code == kBreakpointException || code == kSingleStepException) return on_trap(event);
  const bool ignored =
      std::find(ignored_exceptions_.begin(), ignored_exceptions_.end(), code) != ignored_exceptions_.end();
  if (code == kAccessViolation) {
    // A named access violation goes to the program's own handler first; one the program
    // does not handle comes back as a second chance and stops it, so no fault is lost. The
    // run-time library's error trap is never the program's to handle.
    if (!ignored || !event.first_chance || at_runtime_error_trap(event.exception_address))
      return on_access_violation(event);
    continue_status = os::kExceptionNotHandled;
    return EventAction::kContinue;
  }
  if ((code & 0x80000000u) == 0 || ignored) {
    continue_status = os::kExceptionNotHandled;
    return EventAction::kContinue;
  }
  fail(exception_text(code));
  refresh_call_stack();
  lift_breakpoints();
  return EventAction::kStop;
}

DebuggedProcess::EventAction DebuggedProcess::on_trap(const os::DebugEvent& event) {
  state_ = psStopped;
  stop_reason_ = kStopCodeTrap;
  refresh_call_stack();
  if (!probe_common_info()) return EventAction::kStop;
  if (silent_ && !silent_first_stop_handled_) {
    // A silent session starts running at once: the stop at the program's first line is
    // passed over.
    silent_first_stop_handled_ = true;
    disarm_line_traps();
    state_ = psRunning;
    return EventAction::kContinue;
  }
  if (decide_at_trap(event)) return EventAction::kStop;
  state_ = psRunning;
  return EventAction::kContinue;
}

bool DebuggedProcess::at_runtime_error_trap(Address address) {
  std::uint8_t bytes[2] = {0, 0};
  return read(address, bytes, 2) == 2 && bytes[0] == kRuntimeErrorTrap[0] && bytes[1] == kRuntimeErrorTrap[1];
}

DebuggedProcess::EventAction DebuggedProcess::on_access_violation(const os::DebugEvent& event) {
  refresh_call_stack();
  if (at_runtime_error_trap(event.exception_address)) {
    fail(runtime_error_message(static_cast<std::int64_t>(context_.rcx), context_.rdx, *this));
    return EventAction::kStop;
  }
  const std::uint64_t access = event.parameter_count > 0 ? event.parameters[0] : 0;
  const Address address = event.parameter_count > 1 ? event.parameters[1] : 0;
  const char* how = access == kAccessWriting     ? " writing address "
                    : access == kAccessExecuting ? " executing address "
                                                 : " reading address ";
  fail(std::string("Access Violation") + how + "0x" + pointer_text(address));
  return EventAction::kStop;
}

// ---- the process and its threads ----------------------------------------------------------

DebuggedProcess::EventAction DebuggedProcess::on_create_process(const os::DebugEvent& event) {
  VANTOR_ASSERT(event.process_id == process_info_.process_id, "event.dwProcessId == process_info.dwProcessId",
                "DebuggedProcess");
  VANTOR_ASSERT(event.thread_id == process_info_.thread_id, "event.dwThreadId == process_info.dwThreadId",
                "DebuggedProcess");
  if (os::system().is_32bit_process(process_info_.process)) {
    if (event.file != 0) os::system().close_handle(event.file);
    fail("Not a 64-bit program");
    return EventAction::kStop;
  }
  add_module(std::make_unique<Module>(*this, event.file, std::wstring(), event.image_base, true));
  retry_deferred_breakpoints();
  return EventAction::kContinue;
}

DebuggedProcess::EventAction DebuggedProcess::on_exit_process(const os::DebugEvent& event) {
  state_ = psEnded;
  exit_code_ = event.exit_code;
  return EventAction::kStop;
}

DebuggedProcess::EventAction DebuggedProcess::on_create_thread(const os::DebugEvent& event) {
  if (event.thread != 0) threads_[event.thread_id] = event.thread;
  return EventAction::kContinue;
}

DebuggedProcess::EventAction DebuggedProcess::on_exit_thread(const os::DebugEvent& event) {
  if (event.thread_id != process_info_.thread_id) threads_.erase(event.thread_id);
  return EventAction::kContinue;
}

// ---- libraries ----------------------------------------------------------------------------

DebuggedProcess::EventAction DebuggedProcess::on_load_dll(const os::DebugEvent& event) {
  Module* library = add_module(std::make_unique<Module>(*this, event.file, std::wstring(), event.image_base, false));
  // A library loaded in the middle of a step (by the very call being stepped into) gets the
  // line traps its neighbours have, so that the step stops in its routines too.
  if (line_traps_armed()) library->set_line_traps(true);
  retry_deferred_breakpoints();
  return EventAction::kContinue;
}

DebuggedProcess::EventAction DebuggedProcess::on_unload_dll(const os::DebugEvent& event) {
  remove_module_at(event.image_base);
  return EventAction::kContinue;
}

}  // namespace vantor
