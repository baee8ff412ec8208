// The one debugged program of a session: it creates the program under the system's
// debugging interface, keeps its state, runs it until the next stop, turns debug events
// into stops with a message, and ends it. It owns the loaded modules, the source files,
// the call stacks, the breakpoints and the hardware slots.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "os/os.h"
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

 protected:
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
};

// The one debugged process of the session; replaced on restart.
extern DebuggedProcess* CurrentProcess;

}  // namespace vantor
