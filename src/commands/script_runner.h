// Scripts: files of command lines that drive a session unattended. One line runs each
// time the program stops, so a script alternates with the program: "go", "step" and the
// like hand control to the program, and the next line waits for the stop they lead to.
#pragma once

#include <cstdint>
#include <string>

namespace vantor {

// Whether the running script's lines are shown on the console ("> line") before they run.
extern bool ScriptEcho;

bool script_running();
const std::string& running_script_name();

// Opens the file `name`, or else `name` + ".script", and makes it the running script.
// Neither can be opened: "Could not open script" is shown and false returned.
bool open_script(const std::string& name);
// Ends the running script. The script named at start-up is deleted when it ends: it was
// written for this one session.
void close_script();
// Runs the running script's next line, if the program is stopped; a script whose program
// has ended is closed. Called by the main loop at every pass.
void run_script_line();

// The "script" command: refuses to nest, else opens the script. A CommandResult.
std::uint32_t script_command(const std::string& name);

// Starts the script named by "/script", if any (ScriptFile).
void start_startup_script();

}  // namespace vantor
