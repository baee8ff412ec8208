// What breakpoints and stepping need from the debugged process: its memory, its modules
// (line addresses and line traps), the stopped thread's context and its call stacks, and
// the evaluator for conditions. DebuggedProcess answers through ProcessBreakpointHost;
// native tests answer from a scripted fake, so every decision can be tested without a
// real target.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "os/os.h"
#include "process/target_memory.h"

namespace vantor {

class BreakpointHost {
 public:
  virtual ~BreakpointHost() = default;

  virtual TargetMemory& memory() = 0;

  // Code address of the first byte of `line` in `file`, asking each module in turn and
  // taking the first non-zero answer: by bare file name when `file` holds no backslash,
  // otherwise by full path. 0 when no loaded module has that line.
  virtual Address address_of_line(const std::string& file, std::int32_t line) = 0;

  // Turns every module's line traps on or off. Turning them off writes no-operations over
  // every line start, breakpoints included; the caller re-plants its breakpoints.
  virtual void set_module_line_traps(bool on) = 0;

  // The context held by the process since the last stop; store_context() writes it to the
  // stopped thread (one cross-process call).
  virtual os::ThreadContext& context() = 0;
  virtual bool store_context() = 0;

  // Walks the call stack again from the thread's registers (read anew into context()); the
  // stack it replaces becomes the previous one.
  virtual void refresh_call_stack() = 0;
  // The current call stack: whether one exists, its depth (0 without one), and the stack
  // address that holds the return address of frame `index` (0 when unknown).
  virtual bool has_call_stack() = 0;
  virtual std::int32_t stack_depth() = 0;
  virtual Address return_slot(std::int32_t index) = 0;
  // A stop that is not shown: the stack taken before it becomes the current one again.
  virtual void restore_previous_stack() = 0;

  // Evaluates a breakpoint condition in the scope of the innermost frame, "=" meaning
  // equality. nullopt when there is no frame or the text does not evaluate: both stop.
  virtual std::optional<bool> evaluate_condition(const std::string& condition) = 0;
};

}  // namespace vantor
