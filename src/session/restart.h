// Restarting the debugged program: the program ends and is launched again with the same
// command line, with its breakpoints when the user asked to keep them.
#pragma once

namespace vantor {

// The restart dialog's "Save current breakpoints".
extern bool KeepBreakpointsOnRestart;

// Run command 7. Every window is closed (they show the old program), the process is ended
// and replaced by a new one launched with full_command_line, and step into is queued. The
// breakpoints that the user made are carried over when KeepBreakpointsOnRestart is set; the
// ones the debugger made for itself never are. A launch that fails is reported, and its
// failed process stays current so that the user may try again.
void RestartProgram();

}  // namespace vantor
