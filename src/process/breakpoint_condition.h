// The condition of a code breakpoint, evaluated when its after and every counts say stop.
#pragma once

#include <optional>
#include <string_view>

#include "os/os.h"
#include "process/target_memory.h"

namespace vantor {

class StackFrame;

// Evaluates `condition` in the scope of `frame` (the innermost one), "=" comparing as "=="
// does. nullopt when there is no frame, when the text does not evaluate, or when its value
// has no truth (a string, a structure): the breakpoint then stops rather than be ignored.
std::optional<bool> evaluate_breakpoint_condition(std::string_view condition, StackFrame* frame,
                                                  TargetMemory& memory, const os::ThreadContext* registers);

}  // namespace vantor
