// Notes that wait for the debugger to be idle.
#include "process/debugged_process.h"

namespace vantor {

void DebuggedProcess::drain_deferred_items() {
  handled_items_.insert(handled_items_.end(), std::make_move_iterator(deferred_items_.begin()),
                        std::make_move_iterator(deferred_items_.end()));
  deferred_items_.clear();
}

}  // namespace vantor
