// Run-time errors reported by the compiler's run-time library. The library stops a failing
// program with the two-byte trap `int 9` (CD 09), which reaches the debugger as an access
// violation at those bytes; the error number is in RCX and, for the two errors that carry
// text, RDX holds the address of that text in the program (docs/runtime-errors.md).
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "process/target_memory.h"

namespace vantor {

constexpr std::int64_t kRuntimeErrorCount = 448;
// The two errors whose text comes from the program (common/runtime_error_numbers.h).
constexpr std::int64_t kMissingRoutineError = 29;   // RDX: the routine's name
constexpr std::int64_t kProgramMessageError = 345;  // RDX: the whole message
constexpr std::size_t kMissingRoutineNameMax = 512;
constexpr std::size_t kProgramMessageMax = 1024;

struct runtime_error_row {
  std::int32_t number;
  const char* text;
};

// The numbered texts as written in the source, in ascending order of number.
extern const runtime_error_row RuntimeErrorRows[];
extern const std::size_t RuntimeErrorRowCount;

// The 448-entry message table: numbers without a text of their own give entry 0,
// "Undefined error". Null outside 0..447.
const char* runtime_error_text(std::int64_t number);

// The stop message for error `number`, reading the name or message at `text_address`
// from the program when the error carries one.
std::string runtime_error_message(std::int64_t number, Address text_address, TargetMemory& memory);

}  // namespace vantor
