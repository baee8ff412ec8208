#include "values/error_codes.h"

#include <cstdio>
#include <cstring>

#include "common/messages.h"

namespace vantor {

namespace {

// The texts are the users' since long ago, the odd grammar of 13 included.
constexpr const char* kErrorTexts[kErrorCodeCount] = {
    "",
    "NULL pointer",
    "Illegal pointer",
    "Invalid floating point number",
    "Syntax error",
    "Constant is not valid",
    "Too many closing brackets",
    "Bracket mismatch",
    "Cannot add pointers together",
    "You can only add integers to pointers",
    "You cannot perform arithmetic on this data type",
    "Unknown variable",
    "You cannot add or subtract from a pointer to a void",
    "You only subtract an integer from a pointer",
    "Pointers are not the same type",
    "Arithmetic overflow",
    "Arithmetic underflow",
    "Division by zero",
    "Too many opening brackets",
    "Pointer required for this operation",
    "You cannot dereference a pointer to a void",
    "Integers are required for this operation",
    "You cannot take the address of this object",
    "Expected a structure member name",
    "Structure expected",
    "Structure element not found",
    "A pointer to a structure expected",
    "Expected an array",
    "Array subscript must be an integer",
    "Too many subscripts for this array",
    "Object does not exist",
    "POINTER not assigned",
    "Array subscript out of bounds",
    "ARRAY not allocated",
    "Data out of scope",
    "Types incompatible",
    "String type expected",
    "Unset pointer",
    "Unaccessed virtual common",
    "Internal debugger error",
};

}  // namespace

void error_text(std::int32_t code, char* buffer, std::size_t length) {
  VANTOR_ASSERT(buffer != nullptr, "buffer != NULL", "error_codes");
  VANTOR_ASSERT(code >= 0, "e >= 0", "error_codes");
  if (buffer == nullptr || length == 0) return;
  if (code >= 0 && code < kErrorCodeCount) {
    std::size_t n = std::strlen(kErrorTexts[code]);
    if (n >= length) n = length - 1;
    std::memcpy(buffer, kErrorTexts[code], n);
    buffer[n] = '\0';
    return;
  }
  std::snprintf(buffer, length, "Illegal error %d", code);
}

std::string error_text(std::int32_t code) {
  char buffer[64];
  error_text(code, buffer, sizeof buffer);
  return buffer;
}

}  // namespace vantor
