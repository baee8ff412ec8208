// The debugged process's view of names: its call stacks, routines by name, and the COMMON
// blocks that its run-time library lists.
#include "debuginfo/module.h"
#include "process/common_probe.h"
#include "process/debugged_process.h"
#include "stack/call_stack.h"

namespace vantor {

void DebuggedProcess::refresh_call_stack() {
  os::system().get_context(event_thread_handle(), context_);
  previous_stack_ = std::move(current_stack_);
  current_stack_ = std::make_unique<CallStack>(*this, context_);
}

void DebuggedProcess::restore_previous_call_stack() {
  if (previous_stack_) current_stack_ = std::move(previous_stack_);
}

bool DebuggedProcess::ensure_symbol_handler() {
  if (!symbol_handler_initialised_) symbol_handler_initialised_ = os::system().symbols_initialize(process_handle());
  return symbol_handler_initialised_;
}

Address DebuggedProcess::routine_address(std::string_view name) const {
  for (const auto& module : modules_)
    if (Address start = module->routine_start(std::string(name))) return start;
  return 0;
}

Address DebuggedProcess::address_of_name(std::string_view name) {
  if (Address start = routine_address(name)) return start;
  Address address = 0;
  if (ensure_symbol_handler() && os::system().symbol_address(process_handle(), std::string(name), address))
    return address;
  return 0;
}

Address DebuggedProcess::common_list_head() const {
  return common_info_address_ == ~Address{0} ? 0 : common_info_address_;
}

Address DebuggedProcess::common_block_address(std::string_view name) {
  if (const CommonBlock* block = common_cache_.find(name)) return block->address;
  return common_cache_.address_by_name(*this, common_list_head(), name);
}

const std::vector<CommonBlock>& DebuggedProcess::common_blocks() {
  common_cache_.refresh(*this, common_list_head());
  return common_cache_.blocks();
}

namespace {
constexpr std::uint32_t kCommonProbeAttempts = 3;
}  // namespace

bool DebuggedProcess::probe_common_info() {
  while (common_info_address_ == ~Address{0} && common_probe_attempts_ < kCommonProbeAttempts) {
    ++common_probe_attempts_;
    // The main program's list: a DLL of our compiler has a routine and a list of its own.
    Address routine = 0;
    for (const auto& module : modules_)
      if (module->main_image() && (routine = module->routine_start(kCommonInfoRoutine)) != 0) break;
    if (routine == 0) routine = routine_address(kCommonInfoRoutine);
    if (routine == 0) continue;

    TargetCall call;
    call.process = process_handle();
    call.thread = event_thread_handle();
    call.process_id = process_info_.process_id;
    call.thread_id = debug_event_.thread_id;
    call.routine = routine;
    const os::DebugEvent stop = debug_event_;
    TargetCallOutcome outcome = call_in_stopped_thread(*this, call);
    debug_event_ = stop;
    if (outcome.returned) common_info_address_ = outcome.rax;
    if (outcome.after == TargetCallOutcome::kProcessEnded) {
      state_ = psEnded;
      exit_code_ = outcome.exit_code;
      return false;
    }
    if (outcome.after == TargetCallOutcome::kThreadSuspended) {
      // Nothing is pending any more; the next run resumes the thread instead.
      event_pending_ = false;
      main_thread_suspended_ = true;
      return true;
    }
  }
  return true;
}

}  // namespace vantor
