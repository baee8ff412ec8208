#include "session/startup.h"

#include "common/messages.h"
#include "os/os.h"
#include "process/debugged_process.h"
#include "process/user_space_buffer.h"
#include "session/command_line.h"
#include "session/executable_check.h"
#include "session/hand_over.h"
#include "session/main_loop.h"
#include "session/pending_command.h"
#include "session/program_dialog.h"
#include "session/session_process.h"
#include "session/startup_globals.h"
#include "ui/settings.h"
#include "winlib/window_library.h"

namespace vantor {

namespace {

constexpr int kStatusEndOfSession = 0;
constexpr int kStatusClosed = 1;

int close_session(int status) {
  DebuggerClosing = true;
  winlib::window_library().close_main_window();
  return status;
}

}  // namespace

std::wstring build_full_command_line(const std::wstring& program_name, const std::wstring& program_arguments) {
  std::wstring line = quoted_argument(program_name);
  if (!program_arguments.empty()) line += L" " + program_arguments;
  return line;
}

std::wstring directory_of(const std::wstring& program_name) {
  std::size_t slash = program_name.rfind(L'\\');
  return slash == std::wstring::npos ? std::wstring() : program_name.substr(0, slash);
}

int start_session(const std::vector<std::wstring>& arguments) {
  if (auto status = parse_command_line(arguments)) return *status;

  auto& windows = winlib::window_library();
  if (!SilentMode) windows.build_main_window();
  if (SourcePath.empty())
    if (auto path = os::system().environment(L"SOURCEPATH")) SourcePath = *path;

  // Until a program is launched: ask for one when none was named, and again after every
  // failed launch.
  bool ask = ProgramName.empty();
  for (;;) {
    if (ask && !ask_for_program()) return close_session(kStatusClosed);
    ask = true;

    ExecutableKind kind = check_executable(ProgramName);
    if (kind == ExecutableKind::kNotExecutable || kind == ExecutableKind::kDamaged) {
      ShowErrorMessage(load_error_text(kind), "Load Error");
      return close_session(kStatusClosed);
    }
    if (kind == ExecutableKind::kI386) {
      hand_over_to_32bit_debugger(arguments);
      return close_session(kStatusEndOfSession);
    }

    full_command_line = build_full_command_line(ProgramName, ProgramArguments);
    ProgramDirectory = directory_of(ProgramName);
    DebuggedProcess& process = new_current_process();
    if (process.launch(full_command_line)) break;
    ShowErrorMessage("There was a problem debugging your executable:\n\n" + process.status_text());
  }

  if (LogCommandLine) os::system().append_file(L"vantor64.log", narrow_from_wide(full_command_line) + "\n");

  if (RunToLine != 0) {
    deferred_breakpoint run_to;
    run_to.file = RunToFile;
    run_to.line = RunToLine;
    run_to.after = 1;
    run_to.every = 1;
    CurrentProcess->add_deferred_breakpoint(std::move(run_to));
    RunToLine = 0;
  }

  ui::set_setting_text(ui::kLastCommandLine, narrow_from_wide(full_command_line));

  SetPendingCommand(SilentMode ? kGoCommand : kStepIntoCommand, kStartFlag);
  RunMainLoop();
  return kStatusEndOfSession;
}

}  // namespace vantor
