#include "session/main_loop.h"

#include "commands/script_runner.h"
#include "commands/stop_windows.h"
#include "common/console.h"
#include "common/text_format.h"
#include "os/os.h"
#include "process/debugged_process.h"
#include "session/pending_command.h"
#include "session/session_process.h"
#include "session/startup_globals.h"
#include "winlib/window_library.h"

namespace vantor {

namespace {

constexpr std::uint32_t kIdleWaitMs = 250;

void idle() {
  if (!TestSuiteMode && CurrentProcess != nullptr) CurrentProcess->drain_deferred_items();
  os::system().idle_wait(kIdleWaitMs);
  winlib::window_library().yield_program_control();
}

void run_command(std::uint32_t command, bool line_traps) {
  DebuggedProcess* process = CurrentProcess;
  PendingCommand = 0;
  if (process == nullptr || !process->can_run()) return;
  if (line_traps)
    process->arm_line_traps();
  else
    process->disarm_line_traps();
  RunAndReport(static_cast<std::int32_t>(command));
}

// Without windows a stop is reported as a line, and the session, having nobody to ask what
// next, goes on to the end unless a script says what to do: a trap or a pause runs on, a
// failed or ended program closes it.
void report_stop_without_windows() {
  DebuggedProcess* process = CurrentProcess;
  if (process == nullptr) return;
  switch (process->state()) {
    case psPaused:
    case psStopped:
      if (process->status_text().empty())
        console_print("Stopped at 0x%s\n", pointer_text(process->context().rip).c_str());
      else
        console_print("Stopped: %s\n", process->status_text().c_str());
      if (!script_running()) SetPendingCommand(kGoCommand, kStartFlag);
      break;
    case psFailed:
      console_print("Stopped: %s\n", process->status_text().c_str());
      SetPendingCommand(kQuitCommand, kStartFlag);
      break;
    case psEnded:
      console_print("Program ended with exit code %u\n", process->exit_code());
      SetPendingCommand(kQuitCommand, kStartFlag);
      break;
    default:
      break;
  }
}

// A session without windows whose script has ended with the program stopped: nobody is
// left to say what next, so the program runs on as it would have without the script.
bool left_stopped_without_windows() {
  return CurrentProcess != nullptr && CurrentProcess->can_run() && CurrentProcess->state() != psLaunching &&
         !script_running() && !winlib::window_library().main_window_exists();
}

}  // namespace

void RunMainLoop() {
  start_startup_script();
  for (;;) {
    run_script_line();
    if (PendingCommand == 0) {
      if (CurrentProcess != nullptr && CurrentProcess->state() == psEnded && CurrentProcess->silent()) return;
      if (left_stopped_without_windows()) {
        SetPendingCommand(kGoCommand, kStartFlag);
        continue;
      }
      idle();
      continue;
    }
    const std::uint32_t command = PendingCommand & kCommandMask;
    switch (command) {
      case kQuitCommand:
        end_current_process();
        return;
      case kStepIntoCommand:
      case kStepOverCommand:
      case kStepOutCommand:
        run_command(command, true);
        break;
      case kGoCommand:
      case kStepInstructionCommand:
        run_command(command, false);
        break;
      default:
        // Rebuilding the main window and restarting need the windowed session.
        PendingCommand = 0;
        idle();
        break;
    }
  }
}

void RunAndReport(std::int32_t mode) {
  DebuggedProcess* process = CurrentProcess;
  switch (process->run(mode)) {
    case psPaused:
    case psStopped:
    case psFailed:
      ShowStop(mode);
      break;
    case psEnded:
      if (!process->silent()) ShowStop(mode);
      break;
    default:
      console_print("State %d\n", static_cast<int>(process->state()));
      break;
  }
}

void ShowStop(int flags) {
  auto& windows = winlib::window_library();
  show_stop_in_windows((flags & kInstructionFlag) != 0 || (flags & kCommandMask) == kStepInstructionCommand);
  if (!windows.main_window_exists()) windows.build_main_window();
  if (!windows.main_window_exists()) report_stop_without_windows();
}

}  // namespace vantor
