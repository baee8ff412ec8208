// The one debugged process of the session: made at start-up, replaced by a restart,
// destroyed at quit.
#pragma once

namespace vantor {

class DebuggedProcess;

// Destroys any current process and makes a new one current, silent as the session is and
// with the ignored exception codes of the settings.
DebuggedProcess& new_current_process();

// Ends and destroys the current process, if any.
void end_current_process();

// What closing the main window does to the session: quit is queued, with no flags, and the
// program, if there is one, is ended (the process itself stays until quit destroys it).
void close_session();

// The way a batch run ends the session: the close action, then the main window closed.
void close_session_and_main_window();

}  // namespace vantor
