// Array subscripts and sections, and structure components, as the evaluator applies them.
// Subscripts are stored in the array's descriptor as they come (so a[1][2] fills two
// dimensions); the element they name is formed only when the array is taken as an
// operand. A subscript pair lower:upper makes a section: its dimension is narrowed to the
// pair, clamped to the declared bounds.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "process/target_memory.h"
#include "values/element.h"

namespace vantor {

struct Subscript {
  std::unique_ptr<element> value;  // a single subscript
  bool is_section = false;         // a lower:upper pair; a missing bound is the declared one
  bool has_lower = false, has_upper = false;
  std::int64_t lower = 0, upper = 0;
};

// Adds the subscripts to an array (a pointer is first made the array it points at).
// Returns 0 or the error code (27, 28, 29).
std::int32_t apply_subscripts(std::unique_ptr<element>& base, std::vector<Subscript>& subscripts,
                              TargetMemory& memory);

// The element named by an array's subscripts, or the section they leave when some
// dimensions remain; an array without subscripts is handed back unchanged. A subscript
// outside the bounds of an array whose first dimension has a real extent is error 32.
std::unique_ptr<element> form_subscripted(std::unique_ptr<element> array);

// Component selection: "." (or "%") on a structure, "->" through a pointer to one.
std::unique_ptr<element> select_component(const element& base, std::string_view name, bool through_pointer,
                                          TargetMemory& memory);

}  // namespace vantor
