// A run command given to the debugged process as the main loop gives it: the line traps
// armed for the stepping commands and disarmed for the others, then the run.
#pragma once

#include <cstdint>

#include "process/debugged_process.h"
#include "process/stepping.h"

namespace vantor::testing {

inline std::int32_t run_command(DebuggedProcess& process, std::int32_t mode) {
  if (mode == kModeStepInto || mode == kModeStepOver || mode == kModeStepOut)
    process.arm_line_traps();
  else
    process.disarm_line_traps();
  return process.run(mode);
}

}  // namespace vantor::testing
