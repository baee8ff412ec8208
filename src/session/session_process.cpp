#include "session/session_process.h"

#include "process/debugged_process.h"
#include "session/startup_globals.h"
#include "ui/ignored_exceptions.h"

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

}  // namespace vantor
