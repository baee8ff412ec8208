// Strings of the debugged process as the value texts show them: C strings with their
// escapes, and Fortran CHARACTER values with their unprintable characters replaced.
#pragma once

#include <cstdint>
#include <string>

#include "process/target_memory.h"
#include "values/text_buffer.h"

namespace vantor {

// The C escape of one byte ("\n", "\0", "\xff", "\\", ...; printable bytes as themselves).
void escape_character(std::uint8_t byte, std::string& output);

// The C string at `address`, escaped: up to its zero byte when count is 0, else exactly
// count bytes (zero bytes written as "\0"); never more than 32768 characters of text.
// Exactly 60 characters of text gain "...".
void c_string_from_process(TargetMemory& memory, Address address, TextBuffer& output, std::int64_t count);

// Fortran strings of `length` characters: zero bytes, tabs, line feeds and carriage
// returns show as "?". Lengths are capped at 8092, and only lengths above 0 and below
// 8092 are copied: a string of 8092 characters or more shows as nothing.
void fortran_string_from_process(TargetMemory& memory, Address address, TextBuffer& output, std::int64_t length);
void fortran_string_from_constant(const std::uint8_t* bytes, TextBuffer& output, std::int64_t length);

constexpr std::int64_t kFortranStringLimit = 8092;
constexpr std::size_t kCStringTextLimit = 32768;

}  // namespace vantor
