// The one debugged program of a session: it creates the program under the system's
// debugging interface, keeps its state, runs it until the next stop, turns debug events
// into stops with a message, and ends it. It owns the loaded modules, the source files,
// the call stacks, the breakpoints and the hardware slots.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "debuginfo/common_block_cache.h"
#include "os/os.h"
#include "process/breakpoint_list.h"
#include "process/hardware_slots.h"
#include "process/stepping.h"
#include "process/target_memory.h"

namespace vantor {

class Module;
class CallStack;
struct source_file;

// Process states.
enum ProcessState : std::int32_t {
  psCreated = 0,
  psLaunching = 1,
  psRunning = 2,
  psPaused = 3,
  psStopped = 4,
  psFailed = 5,
  psEnded = 6,
};

// Why the last stop happened.
enum StopReason : std::int32_t {
  kStopCodeTrap = 1,
  kStopUseDataBreakpoint = 2,
  kStopWriteDataBreakpoint = 3,
};

class DebuggedProcess : public TargetMemory {
 public:
  DebuggedProcess();
  ~DebuggedProcess() override;
  DebuggedProcess(const DebuggedProcess&) = delete;
  DebuggedProcess& operator=(const DebuggedProcess&) = delete;

  // ---- target memory: one cross-process call each ----
  std::size_t read(Address address, void* buffer, std::size_t size) override;
  std::size_t write(Address address, const void* buffer, std::size_t size) override;

  // ---- life cycle ----
  // Creates the program suspended under the debugging interface. On failure the state is
  // psFailed and the status text says why ("File not found", "Could not open executable, error %x").
  bool launch(const std::wstring& command_line);
  // Runs the program in a run mode until the next stop; returns the new state.
  std::int32_t run(std::int32_t mode);
  // Suspends the running program's main thread (state psRunning only).
  void pause();
  // The Pause button: the wait loop pauses the program at its next turn.
  void request_pause() { pause_requested_ = true; }
  // Ends the program (through its own "exit" routine when it has one) and detaches.
  void end();
  bool launched() const { return launched_; }
  // The program's exit code, once the state is psEnded.
  std::uint32_t exit_code() const { return exit_code_; }

  // Exception codes passed back to the program instead of stopping it.
  void add_ignored_exception(std::uint32_t code);
  const std::vector<std::uint32_t>& ignored_exceptions() const { return ignored_exceptions_; }

  // ---- state ----
  std::int32_t state() const { return state_; }
  bool can_run() const { return state_ == psLaunching || state_ == psPaused || state_ == psStopped; }
  const std::string& status_text() const { return status_text_; }
  bool silent() const { return silent_; }
  void set_silent(bool silent) { silent_ = silent; }
  std::int32_t stop_reason() const { return stop_reason_; }

  const os::LaunchedProcess& process_information() const { return process_info_; }
  os::Handle process_handle() const { return process_info_.process; }
  os::Handle thread_handle() const { return process_info_.thread; }

  // The stopped thread's context as last read at a stop.
  os::ThreadContext& context() { return context_; }
  // The last debug event taken, and the thread it came from (the main thread before any).
  const os::DebugEvent& debug_event() const { return debug_event_; }
  os::Handle event_thread_handle() const;
  bool loader_breakpoint_seen() const { return loader_breakpoint_seen_; }

  // ---- breakpoints, line traps, hardware slots and stepping ----
  BreakpointList& breakpoints() { return *breakpoints_; }
  const BreakpointList& breakpoints() const { return *breakpoints_; }
  HardwareSlots& hardware_slots() { return hardware_slots_; }
  Stepping& stepping() { return *stepping_; }
  bool line_traps_armed() const { return breakpoints_->line_traps_armed(); }
  void arm_line_traps() { breakpoints_->arm_line_traps(); }
  void disarm_line_traps() { breakpoints_->disarm_line_traps(); }
  void lift_breakpoints() { breakpoints_->lift_breakpoints(); }
  void add_deferred_breakpoint(const deferred_breakpoint& request);
  const std::vector<deferred_breakpoint>& deferred_breakpoints() const { return breakpoints_->deferred(); }
  void retry_deferred_breakpoints() { breakpoints_->retry_deferred_breakpoints(); }
  // The run mode of the run under way (or of the last one).
  std::int32_t run_mode() const { return run_mode_; }

  // ---- deferred items ----
  // Notes that arise while the program runs and wait for the debugger to be idle: the idle
  // step of the main loop moves them, in order, to the handled list that the windows read.
  void defer_item(std::string item) { deferred_items_.push_back(std::move(item)); }
  void drain_deferred_items();
  const std::vector<std::string>& deferred_items() const { return deferred_items_; }
  const std::vector<std::string>& handled_items() const { return handled_items_; }

  // ---- modules (newest first) ----
  const std::vector<std::unique_ptr<Module>>& modules() const { return modules_; }
  // The module whose image holds the address; null if none.
  Module* module_containing(Address address) const;
  // Takes ownership; the new module goes to the head of the list.
  Module* add_module(std::unique_ptr<Module> module);
  void remove_module_at(Address base);

  // ---- source files, in order of first report ----
  std::vector<std::unique_ptr<source_file>>& source_files() { return source_files_; }

  // ---- call stacks ----
  CallStack* current_stack() const { return current_stack_.get(); }
  CallStack* previous_stack() const { return previous_stack_.get(); }
  // Rebuilds the current call stack from the registers of the thread that stopped (read
  // afresh into context()); the stack it replaces is kept as the previous one.
  void refresh_call_stack();
  // Puts the previous call stack back as the current one: a step that runs on after
  // passing through a callee wants the stack it started from.
  void restore_previous_call_stack();
  // Initialises the system's debug-help library for this process, once; false if it fails.
  bool ensure_symbol_handler();

  // ---- names and COMMON blocks ----
  // Start of the routine with exactly that name in any module; 0 if none.
  Address routine_address(std::string_view name) const;
  // The address of an external name: a routine of any module, else what the system's
  // symbol handler knows; 0 if neither.
  Address address_of_name(std::string_view name);
  // The storage of the COMMON block of that exact name ("/NAME/"); 0 when the program's
  // run-time list does not hold it (or the list is not known yet).
  Address common_block_address(std::string_view name);
  // Every COMMON block of the program, the run-time list walked afresh for new ones.
  const std::vector<CommonBlock>& common_blocks();
  // The first node of the run-time library's COMMON list (0 for an empty list), as its
  // "__get_common_info" answered; all ones until it has.
  Address common_info_address() const { return common_info_address_; }
  void set_common_info_address(Address address) { common_info_address_ = address; }
  std::uint32_t common_probe_attempts() const { return common_probe_attempts_; }
  // At a trap stop: until the run-time library has told where its COMMON list starts, asks
  // it ("__get_common_info", borrowing the stopped thread), three attempts in all over the
  // session. False when the program ended during the call (the state is then psEnded).
  bool probe_common_info();

 protected:
  // ---- the debug-event loop, one handler per event kind (debug_events.cpp) ----
  enum class EventAction { kContinue, kStop };
  std::int32_t wait_for_stop();
  EventAction on_event(const os::DebugEvent& event, std::uint32_t& continue_status);
  EventAction on_exception(const os::DebugEvent& event, std::uint32_t& continue_status);
  EventAction on_trap(const os::DebugEvent& event);
  EventAction on_access_violation(const os::DebugEvent& event);
  bool at_runtime_error_trap(Address address);
  EventAction on_create_process(const os::DebugEvent& event);
  EventAction on_exit_process(const os::DebugEvent& event);
  EventAction on_create_thread(const os::DebugEvent& event);
  EventAction on_exit_thread(const os::DebugEvent& event);
  EventAction on_load_dll(const os::DebugEvent& event);
  EventAction on_unload_dll(const os::DebugEvent& event);
  void fail(std::string text);

  // ---- the trap decision (trap_decision.cpp) ----
  // Start of every run: what breakpoints, line traps and hardware slots need before the
  // program is resumed in this mode.
  void prepare_run(std::int32_t mode);
  // At a breakpoint or single-step exception after the loader breakpoint, with the state
  // already psStopped and the registers read: true to stop, false to run on.
  bool decide_at_trap(const os::DebugEvent& event);

  void continue_pending_event(std::uint32_t status);

  bool launched_ = false;
  bool main_thread_suspended_ = false;
  bool event_pending_ = false;
  bool loader_breakpoint_seen_ = false;
  bool silent_first_stop_handled_ = false;
  bool pause_requested_ = false;
  bool waiting_window_shown_ = false;
  std::uint32_t exit_code_ = 0;
  os::DebugEvent debug_event_;
  std::map<std::uint32_t, os::Handle> threads_;  // thread id -> handle, from thread events
  std::vector<std::uint32_t> ignored_exceptions_;
  std::vector<std::string> deferred_items_;
  std::vector<std::string> handled_items_;

  std::int32_t state_ = psCreated;
  std::string status_text_;
  bool silent_ = false;
  std::int32_t stop_reason_ = kStopCodeTrap;
  os::LaunchedProcess process_info_;
  os::ThreadContext context_;
  std::vector<std::unique_ptr<Module>> modules_;
  std::vector<std::unique_ptr<source_file>> source_files_;
  std::unique_ptr<CallStack> current_stack_;
  std::unique_ptr<CallStack> previous_stack_;

  std::int32_t run_mode_ = 0;
  HardwareSlots hardware_slots_;
  std::unique_ptr<BreakpointHost> breakpoint_host_;
  std::unique_ptr<BreakpointList> breakpoints_;
  std::unique_ptr<Stepping> stepping_;
  bool symbol_handler_initialised_ = false;
  Address common_info_address_ = ~Address{0};
  std::uint32_t common_probe_attempts_ = 0;
  CommonBlockCache common_cache_;

 private:
  // The first node of the run-time COMMON list; 0 when empty or not known yet.
  Address common_list_head() const;
};

// The one debugged process of the session; replaced on restart.
extern DebuggedProcess* CurrentProcess;

}  // namespace vantor
