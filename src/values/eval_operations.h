// What the operators of an expression do to their operands: arithmetic with its
// promotions, pointers, comparisons, logic, dereference, address-of and the intrinsics.
// Every operation hands back a new element; a failure is an element with an error code.
//
// Promotions: an operation on two numbers is carried out in one type. Complex wins over
// real and real over integer. Two reals give the wider REAL; a complex result has parts
// as wide as the widest operand (REAL*4 and integers count as 4 bytes, REAL*8 as 8,
// REAL*10 as 10). Two integers give the wider size (at least 4 bytes in C scopes, where
// small integers are promoted as the language does), unsigned when an operand of that
// size is unsigned; integer arithmetic wraps at that size. Real and complex arithmetic is
// done in double precision and the result is range-checked for its type.
#pragma once

#include <cstdint>
#include <memory>

#include "process/target_memory.h"
#include "values/element.h"

namespace vantor {

struct OperationContext {
  TargetMemory& memory;
  std::int32_t language;  // of the scope: decides the form of truth values
};

// LOGICAL*4 in a Fortran scope, INTEGER*4 elsewhere, holding 1 or 0.
std::unique_ptr<element> truth_value(bool value, std::int32_t language);
// The truth of a value, for the logical operators and breakpoint conditions: numbers and
// pointers are true when not zero. `ok` is false for a value that has no truth.
bool truth_of(const element& e, TargetMemory& memory, bool& ok);

// Unary operators: negate, bitwise not, logical not, dereference, address-of.
std::unique_ptr<element> apply_unary(std::int32_t code, const element& operand, const OperationContext& context);
// Binary arithmetic, bitwise, shift, comparison and logical operators.
std::unique_ptr<element> apply_binary(std::int32_t code, const element& left, const element& right,
                                      const OperationContext& context);
// The intrinsics: length (leng/strlen) and address (loc).
std::unique_ptr<element> apply_intrinsic(std::int32_t code, const element& operand, const OperationContext& context);

// The pointee of a pointer: errors 19, 39, 20 or the refusal to read its address.
std::unique_ptr<element> dereference(const element& pointer, TargetMemory& memory);

// A copy of `e` describing the object at `address` in the debugged process.
std::unique_ptr<element> object_at(const element& e, Address address);

}  // namespace vantor
