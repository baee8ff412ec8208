// Launching the program, running it until the next stop, pausing it and ending it.
#include <cstring>

#include "common/messages.h"
#include "common/text_format.h"
#include "debuginfo/module.h"
#include "process/debugged_process.h"
#include "process/stepping.h"
#include "winlib/window_library.h"

namespace vantor {

namespace {

constexpr std::uint32_t kWaitSliceMs = 500;
constexpr std::uint64_t kWaitingWindowDelayMs = 3000;
constexpr std::uint32_t kFileNotFound = 2;
// After TerminateProcess the remaining events are drained until the process is gone; the
// bound only guards against a system that never reports the end.
constexpr std::uint64_t kEndDrainLimitMs = 10000;
constexpr int kFinalContinues = 50;

// Takes the next event, if any, of a process being ended: only its thread matters, and an
// image file handle it carries is closed since no Module will own it.
void take_event_while_ending(std::uint32_t timeout_ms, std::uint32_t& thread_id) {
  os::DebugEvent event;
  if (!os::system().wait_for_event(event, timeout_ms)) return;
  thread_id = event.thread_id;
  if (event.file != 0) os::system().close_handle(event.file);
}

}  // namespace

bool DebuggedProcess::launch(const std::wstring& command_line) {
  state_ = psLaunching;
  loader_breakpoint_seen_ = false;
  std::uint32_t error = 0;
  os::LaunchedProcess launched;
  if (!os::system().create_process(command_line, launched, error)) {
    fail(error == kFileNotFound ? "File not found" : format_text("Could not open executable, error %x", error));
    return false;
  }
  process_info_ = launched;
  threads_[launched.thread_id] = launched.thread;
  debug_event_ = os::DebugEvent{};
  debug_event_.process_id = launched.process_id;
  debug_event_.thread_id = launched.thread_id;
  state_ = psPaused;
  launched_ = true;
  main_thread_suspended_ = true;
  event_pending_ = false;
  return true;
}

std::int32_t DebuggedProcess::run(std::int32_t mode) {
  if (!launched_ || !can_run()) return state_;
  prepare_run(mode);
  if (main_thread_suspended_) {
    os::system().resume_thread(process_info_.thread);
    main_thread_suspended_ = false;
  }
  state_ = psRunning;
  if (event_pending_) continue_pending_event(os::kContinue);
  return wait_for_stop();
}

void DebuggedProcess::continue_pending_event(std::uint32_t status) {
  os::system().continue_event(debug_event_.process_id, debug_event_.thread_id, status);
  event_pending_ = false;
}

std::int32_t DebuggedProcess::wait_for_stop() {
  auto& system = os::system();
  auto& windows = winlib::window_library();
  const std::uint64_t started = system.milliseconds();
  pause_requested_ = false;
  waiting_window_shown_ = false;
  for (;;) {
    if (!silent_ && !waiting_window_shown_ && system.milliseconds() - started >= kWaitingWindowDelayMs) {
      waiting_window_shown_ = true;
      windows.show_waiting_window([this] { request_pause(); });
    }
    if (pause_requested_) {
      pause_requested_ = false;
      pause();
      state_ = psPaused;
      status_text_ = "Program Paused";
      refresh_call_stack();
      windows.close_waiting_window();
      return state_;
    }

    os::DebugEvent event;
    if (!system.wait_for_event(event, kWaitSliceMs)) {
      windows.yield_program_control();
      continue;
    }
    if (event.process_id != process_info_.process_id) {
      system.continue_event(event.process_id, event.thread_id, os::kContinue);
      continue;
    }
    debug_event_ = event;
    event_pending_ = true;
    std::uint32_t status = os::kContinue;
    if (on_event(event, status) == EventAction::kStop) {
      windows.close_waiting_window();
      return state_;
    }
    continue_pending_event(status);
  }
}

void DebuggedProcess::pause() {
  VANTOR_ASSERT(state_ == psRunning, "state == psRunning", "DebuggedProcess");
  int suspend_count = os::system().suspend_thread(process_info_.thread);
  VANTOR_ASSERT(suspend_count == 0, "suspend_count == 0", "DebuggedProcess");
  main_thread_suspended_ = true;
}

void DebuggedProcess::end() {
  if (!launched_) return;
  auto& system = os::system();

  // A program that can still run leaves through its own "exit" routine, so that its files
  // are flushed and closed as at a normal end.
  Address exit_routine = 0;
  if (state_ != psEnded)
    for (const auto& module : modules_)
      if ((exit_routine = module->routine_start("exit")) != 0) break;
  if (exit_routine != 0) {
    os::Handle thread = event_thread_handle();
    os::ThreadContext cpu;
    if (system.get_context(thread, cpu)) {
      VANTOR_ASSERT((cpu.eflags & os::kTrapFlag) == 0, "(cpu.EFlags&EFLAGS_TF) == 0", "DebuggedProcess");
      cpu.eflags &= ~os::kTrapFlag;
      cpu.rip = exit_routine;
      cpu.rsp -= 8;
      const std::uint64_t no_return = 0;
      write(cpu.rsp, &no_return, sizeof no_return);
      system.set_context(thread, cpu);
    }
  }

  const std::uint32_t pid = debug_event_.process_id;
  std::uint32_t tid = debug_event_.thread_id;
  system.continue_event(pid, tid, os::kContinue);
  system.continue_event(pid, tid, os::kContinue);
  event_pending_ = false;
  system.terminate_process(process_info_.process, 0);

  // Every event still queued has to be taken and continued before the system lets the
  // process go.
  const std::uint64_t started = system.milliseconds();
  for (;;) {
    auto code = system.exit_code(process_info_.process);
    if (!code || *code != os::kStillActive) break;
    if (system.milliseconds() - started > kEndDrainLimitMs) break;
    take_event_while_ending(20, tid);
    system.continue_event(pid, tid, os::kContinue);
  }
  for (int i = 0; i < kFinalContinues; ++i) {
    take_event_while_ending(0, tid);
    system.continue_event(pid, tid, os::kContinue);
  }
  system.stop_debugging(pid);
  system.close_handle(process_info_.process);
  system.close_handle(process_info_.thread);
  launched_ = false;
  main_thread_suspended_ = false;
}

os::Handle DebuggedProcess::event_thread_handle() const {
  auto it = threads_.find(debug_event_.thread_id);
  return it != threads_.end() ? it->second : process_info_.thread;
}

void DebuggedProcess::add_ignored_exception(std::uint32_t code) { ignored_exceptions_.push_back(code); }

void DebuggedProcess::fail(std::string text) {
  state_ = psFailed;
  status_text_ = std::move(text);
}

}  // namespace vantor
