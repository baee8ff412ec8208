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

}  // namespace vantor
