// The names the debugger gives to the exceptions that stop a program.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace vantor {

// The exceptions the debug-event loop treats itself rather than by name.
constexpr std::uint32_t kAccessViolation = 0xC0000005;
constexpr std::uint32_t kBreakpointException = 0x80000003;
constexpr std::uint32_t kSingleStepException = 0x80000004;

struct exception_name {
  std::uint32_t code;
  const char* text;
};

// Searched in this order; the first row with the code wins.
extern const std::array<exception_name, 25> ExceptionNames;

// The table's text for the code, or "Exception 0x%08X" when the table does not hold it.
std::string exception_text(std::uint32_t code);

}  // namespace vantor
