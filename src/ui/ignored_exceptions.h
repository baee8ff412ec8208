// Exception codes the user wants passed straight to the debugged program (its own
// handlers deal with them), kept as "IgnoreException-0" .. "IgnoreException-255" in the
// settings section, each a hexadecimal code. They are read at start-up only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantor::ui {

constexpr int kIgnoredExceptionKeys = 256;

// "IgnoreException-%d"
std::string ignored_exception_key(int index);

// The code an entry names: hexadecimal digits (an optional 0x after a leading 0), up to
// the first other character; 0 for an entry that does not start with a hexadecimal
// digit. A value too large for 32 bits saturates.
std::uint32_t exception_code_from_text(const std::string& text);

// Every non-zero code of the 256 keys, in key order; gaps in the numbering are allowed.
// The caller hands each to the debugged process to pass on without stopping.
std::vector<std::uint32_t> load_ignored_exceptions();

}  // namespace vantor::ui
