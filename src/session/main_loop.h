// The loop that runs on the debugger's one thread for the whole session: it gives the
// window library its time, runs a step of the running script, and carries out the run
// command that is pending.
#pragma once

#include <cstdint>
#include <string>

#include "os/os.h"

namespace vantor {

// The main window's caption suffix, " [" + ProgramName + "]", made when the loop starts.
extern std::string CaptionText;
// Never signalled: the idle wait waits on it so that input or the time-out ends the wait.
// Exists while the loop runs.
extern os::Handle IdleEvent;

// Called once by start-up; returns when the session ends: quit, a silent session's program
// at its end with nothing pending, or the end of a line-dump run.
void RunMainLoop();

// Runs the current process in the run mode of `mode` (its command number) and presents
// the state it stops in. The instruction-level flag of the request may ride along in
// `mode` for the presentation.
void RunAndReport(std::int32_t mode);

// Brings the windows up to date after a stop; `flags` holds the run command and its flags.
void ShowStop(int flags);

}  // namespace vantor
