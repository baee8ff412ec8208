// A diagnostic dump of an element and everything that hangs from it, one field a line.
#pragma once

#include <string>

#include "process/target_memory.h"
#include "values/element.h"

namespace vantor {

// Lines end in "\n"; each indent level is two blanks. Descriptors are one level deeper
// than their element, the `next` element two levels.
std::string dump_element(const element& e, TargetMemory& memory, int indent = 0);

}  // namespace vantor
