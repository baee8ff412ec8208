#include "session/main_loop.h"

#include "commands/script_runner.h"
#include "commands/stop_windows.h"
#include "common/console.h"
#include "common/messages.h"
#include "common/text_format.h"
#include "debuginfo/line_dump.h"
#include "process/debugged_process.h"
#include "process/user_space_buffer.h"
#include "session/pending_command.h"
#include "session/restart.h"
#include "session/session_process.h"
#include "session/startup_globals.h"
#include "session/test_suite.h"
#include "stack/stack_window_text.h"
#include "ui/assembler_window.h"
#include "ui/window_kinds.h"
#include "ui/window_list.h"
#include "winlib/window_library.h"

namespace vantor {

std::string CaptionText;
os::Handle IdleEvent = 0;

namespace {

// Bounds the wait for input so that a running script advances without any.
constexpr std::uint32_t kIdleWaitMs = 250;
constexpr std::uint32_t kLastCommand = kStepOutCommand;

void idle() {
  if (!TestSuiteMode) {
    if (CurrentProcess != nullptr) CurrentProcess->drain_deferred_items();
    os::system().wait_for_input(IdleEvent, kIdleWaitMs);
  }
  auto& windows = winlib::window_library();
  windows.yield_program_control();
  windows.refresh_window_list();
}

void run_command(std::uint32_t command, bool line_traps) {
  DebuggedProcess* process = CurrentProcess;
  const std::uint32_t instruction_flag = PendingCommand & kInstructionFlag;
  if (process == nullptr || !process->can_run()) {
    PendingCommand = 0;
    return;
  }
  if (line_traps)
    process->arm_line_traps();
  else
    process->disarm_line_traps();
  PendingCommand = 0;
  RunAndReport(static_cast<std::int32_t>(command | instruction_flag));
}

void quit() {
  if (CurrentProcess == nullptr) return;
  ui::OpenWindows.close_all();
  end_current_process();
}

// The line-dump run ends after its first stop: the tables are complete once the program
// has started.
void dump_lines_and_close() {
  if (CurrentProcess != nullptr && !write_line_dump(*CurrentProcess))
    ShowErrorMessage("Could not write linedump.txt");
  close_session_and_main_window();
}

// Where the program stopped, as the call-stack window names its innermost frame; the
// address when the frame has no source position (code of the system, say).
std::string stop_position(DebuggedProcess& process) {
  CallStack* stack = process.current_stack();
  if (stack != nullptr && stack->depth() > 0) {
    frame_information innermost = stack->information(0);
    if (innermost.has_source && innermost.line > 0) return frame_row_text(innermost);
  }
  return "0x" + pointer_text(process.context().rip);
}

// A session without windows has nobody to ask what next after a stop, so it reports the
// stop as a line and goes on to the end unless a script says what to do: a trap or a pause
// runs on, a failed or ended program closes it. Batch runs do their own reporting.
void report_stop_without_windows() {
  DebuggedProcess* process = CurrentProcess;
  if (process == nullptr || TestSuiteMode || DumpLinesMode) return;
  switch (process->state()) {
    case psPaused:
    case psStopped:
      if (process->status_text().empty())
        console_print("Stopped at %s\n", stop_position(*process).c_str());
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

enum class Pass { kNext, kEndLoop };

Pass run_pass() {
  run_script_line();

  if (PendingCommand == 0) {
    if (CurrentProcess != nullptr && CurrentProcess->state() == psEnded && CurrentProcess->silent())
      return Pass::kEndLoop;
    if (TestSuiteMode) {
      if (RunTestSuiteStep()) return Pass::kNext;
    } else if (left_stopped_without_windows()) {
      SetPendingCommand(kGoCommand, kStartFlag);
      return Pass::kNext;
    }
    idle();
    return Pass::kNext;
  }

  const std::uint32_t command = PendingCommand & kCommandMask;
  if (command == 0 || command > kLastCommand) {
    PendingCommand = 0;
    idle();
    return Pass::kNext;
  }
  switch (command) {
    case kQuitCommand:
      quit();
      return Pass::kEndLoop;
    case kRebuildWindowCommand:
      winlib::window_library().rebuild_main_window();
      PendingCommand = 0;
      break;
    case kStepIntoCommand:
      run_command(command, true);
      if (DumpLinesMode) {
        dump_lines_and_close();
        return Pass::kEndLoop;
      }
      break;
    case kStepOverCommand:
    case kStepOutCommand:
      run_command(command, true);
      break;
    case kGoCommand:
    case kStepInstructionCommand:
      run_command(command, false);
      break;
    case kRestartCommand:
      PendingCommand = 0;
      RestartProgram();
      break;
  }
  idle();
  return Pass::kNext;
}

}  // namespace

void RunMainLoop() {
  CaptionText = " [" + narrow_from_wide(ProgramName) + "]";
  winlib::window_library().append_to_main_caption(CaptionText);
  IdleEvent = os::system().create_event();
  start_startup_script();
  while (run_pass() == Pass::kNext) {
  }
  os::system().close_handle(IdleEvent);
  IdleEvent = 0;
}

void RunAndReport(std::int32_t mode) {
  DebuggedProcess* process = CurrentProcess;
  switch (process->run(mode & static_cast<std::int32_t>(kCommandMask))) {
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
  if (!windows.main_window_exists()) windows.build_main_window();
  if ((flags & static_cast<int>(kInstructionFlag)) != 0)
    if (auto* code = ui::OpenWindows.find_first_of<ui::assembler_window>(ui::kAssemblerKind)) {
      code->show_frame(0);
      ui::OpenWindows.bring_forward(code);
    }
  show_stop_in_windows((flags & static_cast<int>(kCommandMask)) == static_cast<int>(kStepInstructionCommand));
  if (!windows.main_window_exists()) report_stop_without_windows();
}

}  // namespace vantor
