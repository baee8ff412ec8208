// printf-style text for messages, with the Windows C runtime's conventions pinned down so
// that the native build (tests) and the mingw build print the same thing.
#pragma once

#include <cstdint>
#include <string>

namespace vantor {

std::string format_text(const char* format, ...) __attribute__((format(printf, 1, 2)));

// What "%p" prints on Windows: 16 upper-case hexadecimal digits, no prefix.
std::string pointer_text(std::uint64_t address);

}  // namespace vantor
