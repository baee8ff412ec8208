// The debugger's start-up: from its own command line to the main loop.
#pragma once

#include <string>
#include <vector>

namespace vantor {

// Runs the whole session for the arguments that follow the debugger's own name and
// returns the debugger's exit status: 0 after a session or a hand-over to the 32-bit
// debugger, 1 for /sourcepath without a path, /version, Cancel and load errors, 2 for
// /runto and /script errors, 3 for an unexpected switch, 4 for two program names.
int start_session(const std::vector<std::wstring>& arguments);

// The command line handed to process creation: the program name (quoted when it holds a
// blank), then a blank and the arguments when there are any.
std::wstring build_full_command_line(const std::wstring& program_name, const std::wstring& program_arguments);

// The name up to, not including, its last backslash; empty when it has none.
std::wstring directory_of(const std::wstring& program_name);

}  // namespace vantor
