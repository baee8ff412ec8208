// Registers of the stopped thread: as values in expressions, and the registers dump.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "os/os.h"
#include "values/element.h"

namespace vantor {

// The 64-bit register of that name (rax ... r15, rip; case ignored) as an INTEGER*8
// constant holding its value in `context`; null for any other name or without a context.
std::unique_ptr<element> register_element(std::string_view name, const os::ThreadContext* context);

// The registers dump, one line each, every line ending in "\n"; no lines without a
// context.
std::vector<std::string> register_dump(const os::ThreadContext* context);

// "(%ld)" for a value that is not 0 and whose magnitude is below 1000000, else nothing:
// small numbers are usually counts or indexes, large ones addresses.
std::string decimal_hint(std::int64_t value);

}  // namespace vantor
