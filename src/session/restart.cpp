#include "session/restart.h"

#include <vector>

#include "common/messages.h"
#include "process/debugged_process.h"
#include "session/pending_command.h"
#include "session/session_process.h"
#include "session/startup_globals.h"
#include "ui/window_list.h"

namespace vantor {

bool KeepBreakpointsOnRestart = false;

namespace {

struct carried_breakpoint {
  breakpoint_info record;
  std::uint32_t access = 0;  // data breakpoints: what their hardware slot watched for
};

std::vector<carried_breakpoint> breakpoints_to_carry(DebuggedProcess& process) {
  std::vector<carried_breakpoint> carried;
  const BreakpointList& list = process.breakpoints();
  for (int i = 0; i < list.count(); ++i) {
    const breakpoint_info& record = *list.breakpoint(i);
    if (record.temporary) continue;
    std::uint32_t access = 0;
    if (record.is_data() && record.line >= 0 && record.line < HardwareSlots::kCount)
      access = process.hardware_slots()[record.line].access;
    carried.push_back({record, access});
  }
  return carried;
}

}  // namespace

void RestartProgram() {
  std::vector<carried_breakpoint> carried;
  if (KeepBreakpointsOnRestart && CurrentProcess != nullptr) carried = breakpoints_to_carry(*CurrentProcess);

  ui::OpenWindows.close_all();
  end_current_process();
  DebuggedProcess& process = new_current_process();
  if (!process.launch(full_command_line)) {
    ShowErrorMessage("There was a problem debugging your executable:\n\n" + process.status_text());
    return;
  }
  SetPendingCommand(kStepIntoCommand, kStartFlag);
  for (const carried_breakpoint& breakpoint : carried)
    process.breakpoints().add_carried_breakpoint(breakpoint.record, breakpoint.access);
}

}  // namespace vantor
