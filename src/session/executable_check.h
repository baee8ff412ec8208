// The look at the program file before it is launched: is it a Windows executable, and is
// it one for this debugger or for the 32-bit one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantor {

enum class ExecutableKind {
  kUnreadable,      // could not be opened: launching will report it
  kNotExecutable,   // no "MZ", or no "PE" at the header offset
  kDamaged,         // the header offset lies outside the first 1024 bytes
  kI386,            // a 32-bit program: handed to the 32-bit debugger
  kOther,           // anything else goes on to launching
};

constexpr std::size_t kHeaderBytesRead = 1024;

// Classifies the first bytes of a file (fewer than 1024 when the file is shorter).
ExecutableKind classify_executable(const std::vector<std::uint8_t>& first_bytes);
// Reads the first 1024 bytes of `path` through the OS layer and classifies them.
ExecutableKind check_executable(const std::wstring& path);

// The "Load Error" text for a rejected file; empty for the kinds that go on.
const char* load_error_text(ExecutableKind kind);

}  // namespace vantor
