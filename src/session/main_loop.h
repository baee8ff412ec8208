// The loop that runs on the debugger's one thread for the whole session: it gives the
// window library its time and carries out the run command that is pending.
#pragma once

#include <cstdint>

namespace vantor {

// Called once by start-up; returns when the session ends.
void RunMainLoop();

// Runs the current process in `mode` and presents the state it stops in.
void RunAndReport(std::int32_t mode);

// Brings the windows up to date after a stop.
void ShowStop(int flags);

}  // namespace vantor
