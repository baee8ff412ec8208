#include "session/session_process.h"

#include "process/debugged_process.h"
#include "session/pending_command.h"
#include "session/startup_globals.h"
#include "ui/ignored_exceptions.h"
#include "winlib/window_library.h"

namespace vantor {

DebuggedProcess& new_current_process() {
  delete CurrentProcess;
  CurrentProcess = new DebuggedProcess();
  CurrentProcess->set_silent(SilentMode);
  for (std::uint32_t code : ui::load_ignored_exceptions()) CurrentProcess->add_ignored_exception(code);
  return *CurrentProcess;
}

void end_current_process() {
  if (CurrentProcess == nullptr) return;
  CurrentProcess->end();
  delete CurrentProcess;
  CurrentProcess = nullptr;
}

void close_session() {
  SetPendingCommand(kQuitCommand, 0);
  if (CurrentProcess != nullptr) CurrentProcess->end();
}

// The window's own close action does the same when there is a window; a session without
// one must not wait for it.
void close_session_and_main_window() {
  close_session();
  winlib::window_library().close_main_window();
}

}  // namespace vantor
