#include "process/breakpoint_condition.h"

#include "values/eval.h"
#include "values/eval_operations.h"

namespace vantor {

std::optional<bool> evaluate_breakpoint_condition(std::string_view condition, StackFrame* frame,
                                                  TargetMemory& memory, const os::ThreadContext* registers) {
  if (frame == nullptr) return std::nullopt;
  EvalResult result = evaluate(condition, scope_of_frame(frame, memory, registers), kEvalEqualsCompares);
  if (result.value->error_code != 0) return std::nullopt;
  bool ok = false;
  bool truth = truth_of(*result.value, memory, ok);
  if (!ok) return std::nullopt;
  return truth;
}

}  // namespace vantor
