// Assignment: the value is converted to the type of the target and written into the
// debugged process's memory (the "let" command's last step).
#pragma once

#include <cstdint>

#include "process/target_memory.h"
#include "values/element.h"

namespace vantor {

// Returns 0, or the error code: the target's or the value's own; 22 for a target that is
// held by the debugger (a constant, a register copy); 35 when the value cannot become the
// target's type; 15/16 when a real is out of the target's range; 2 when the process
// refuses the write. Nothing is written on failure.
//
// Conversions: integers and reals convert by value (reals to integers by truncation,
// complex numbers give their real part), a number to COMPLEX gets a zero imaginary
// part, integers and logicals give a LOGICAL .TRUE. (1) or .FALSE. (0), CHARACTER values
// are cut or blank-padded to the target's length, pointers take pointers and integers,
// and a structure takes a structure of the same type.
std::int32_t assign(const element& target, const element& value, TargetMemory& memory);

}  // namespace vantor
