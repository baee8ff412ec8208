// The text of an element: the name of its type and the text of its value, in Fortran or
// C notation by the element's language code (1 C; 0, 3 and 4 Fortran; any other code
// gives no text). Values come from the element when it holds them, else from the
// debugged process at each call. Output goes into a TextBuffer and is cut at its capacity.
#pragma once

#include <cstdint>
#include <string>

#include "process/target_memory.h"
#include "values/element.h"
#include "values/text_buffer.h"

namespace vantor {

// Writes the type name and returns 0; an element with an error code writes nothing and
// returns the code.
std::int32_t type_name(const element& e, TargetMemory& memory, TextBuffer& output);
std::string type_name_text(const element& e, TargetMemory& memory);

// Writes the value text and returns 0, or returns the error code: the element's own, or
// the refusal of the process to read the element's address (then also stored in the
// element).
std::int32_t value_text(element& e, TargetMemory& memory, TextBuffer& output);
// The value text, or the error text of the code that prevented it.
std::string value_text_or_error(element& e, TargetMemory& memory, std::size_t capacity = 4096);

// The name of the enumerator with a given value, for enum values; the debug information
// of our compilers has no enumerations, so by default there is none (empty).
using EnumeratorNameLookup = std::string (*)(const element& e, std::int64_t value);
void set_enumerator_name_lookup(EnumeratorNameLookup lookup);

// The structure name of a code-22 element as stored in the debug information; empty
// when the element has no type record.
std::string structure_name(const element& e);

}  // namespace vantor
