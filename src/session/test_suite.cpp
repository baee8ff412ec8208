#include "session/test_suite.h"

#include "commands/command_handlers.h"
#include "commands/command_host.h"
#include "commands/data_views.h"
#include "commands/stop_windows.h"
#include "common/console.h"
#include "debuginfo/module.h"
#include "process/debugged_process.h"
#include "session/pending_command.h"
#include "session/session_process.h"
#include "session/startup_globals.h"
#include "stack/stack_frame.h"
#include "ui/window_kinds.h"
#include "ui/window_list.h"
#include "winlib/window_library.h"

namespace vantor {

namespace {

// Where the views of an entry's expressions open, as those a script's "print" opens.
constexpr int kValueWindowX = 5;
constexpr int kValueWindowY = 5;
constexpr const char* kExitItem = "exit";

const TestSuiteEntry* entry_for_line(std::int32_t line) {
  for (const TestSuiteEntry& entry : TestSuiteEntries)
    if (entry.line == line) return &entry;
  return nullptr;
}

// The value goes to the view that suits it. Nobody sees a view that the library could not
// put on screen (a session without windows), so such a view is written to the console and
// dropped, as "dprint" does.
void show_expression(const std::string& expression) {
  StackFrame* innermost = frame_at(0);
  auto value = evaluate_argument(expression, innermost, /*on_console=*/true);
  if (!value) return;
  ui::text_window& window = open_window_at(make_value_window(expression, *value, 0), kValueWindowX, kValueWindowY);
  window.refresh();
  if (window.view() != nullptr) return;
  window.dump_to_console();
  window.after_console_dump();
  ui::OpenWindows.close(&window);
}

// Stopped at a line start: true when an entry's "exit" ended the session.
bool carry_out_entry(std::int32_t line) {
  const TestSuiteEntry* entry = entry_for_line(line);
  if (entry == nullptr) return false;
  ui::OpenWindows.refresh_kind(ui::kVariablesKind);
  for (const std::string& item : entry->items) {
    if (item == kExitItem) {
      SetPendingCommand(kQuitCommand, kStartFlag);
      return true;
    }
    show_expression(item);
  }
  return false;
}

}  // namespace

std::string stop_position::text() const { return routine + " (" + file + ": " + std::to_string(line) + ")"; }

stop_position test_suite_position() {
  stop_position position;
  std::int32_t index = first_frame_with_source();
  StackFrame* frame = frame_at(index < 0 ? 0 : index);
  if (frame == nullptr) return position;
  position.routine = frame->routine_name();
  position.file = std::string(bare_file_name(frame->source_file_name()));
  source_file* file = nullptr;
  if (!command_host().frame_source(*frame, file, position.line)) position.line = 0;
  return position;
}

bool RunTestSuiteStep() {
  DebuggedProcess* process = CurrentProcess;
  if (process == nullptr) return false;
  switch (process->state()) {
    case psStopped: {
      stop_position position = test_suite_position();
      console_print("%s\n", position.text().c_str());
      if (!carry_out_entry(position.line)) SetPendingCommand(kStepIntoCommand, kStartFlag);
      return true;
    }
    case psFailed:
      console_print("%s\n", process->status_text().c_str());
      console_print("%s\n", test_suite_position().text().c_str());
      SetPendingCommand(kQuitCommand, 0);
      winlib::window_library().close_main_window();
      return true;
    case psEnded:
      console_print("Process ended, exiting debugger\n");
      close_session_and_main_window();
      return true;
    default:
      return false;
  }
}

}  // namespace vantor
