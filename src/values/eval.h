// The expression evaluator: a line of text (a variable, an array element or section, a
// component, a pointer chain, arithmetic, a comparison, a constant) becomes one element,
// or an element whose error code says why it could not. C operators and the dotted
// Fortran operators are read side by side; the scope's language decides how names,
// apostrophes and "%" are read and what a comparison yields (LOGICAL*4 in Fortran,
// INTEGER*4 elsewhere). Names are looked up afresh at every evaluation.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "os/os.h"
#include "process/target_memory.h"
#include "values/element.h"

namespace vantor {

class StackFrame;

// What names mean during one evaluation, and where values are read.
struct EvalScope {
  TargetMemory* memory = nullptr;
  // The current scope; without one, names go to the global look-up.
  StackFrame* frame = nullptr;
  std::function<std::unique_ptr<element>(std::string_view name)> global_lookup;
  // The stopped thread's registers, for register names; null when there is none.
  const os::ThreadContext* registers = nullptr;
  // 1 C, otherwise the Fortran dialect (0, 3 or 4).
  std::int32_t language = kLangC;
};

// The scope of a frame: its language (frames of code without our debug information
// count as C) and its variables.
EvalScope scope_of_frame(StackFrame* frame, TargetMemory& memory, const os::ThreadContext* registers);

// Flag bit 2: "=" compares, as "==" does. Without it "=" ends the expression, so that an
// assignment's left side can be read up to its "=".
constexpr unsigned kEvalEqualsCompares = 4;

struct EvalResult {
  std::unique_ptr<element> value;  // never null; check its error_code
  std::size_t stop = 0;            // where reading stopped: the end, or the "," or "=" that ended it
};

EvalResult evaluate(std::string_view text, const EvalScope& scope, unsigned flags = 0);

}  // namespace vantor
