#include "process/exception_names.h"

#include "common/text_format.h"

namespace vantor {

const std::array<exception_name, 25> ExceptionNames = {{
    {0xC000008D, "Denormal floating point operands"},
    {0xC000008E, "Floating point division by zero"},
    {0xC000008F, "The result has become inexact"},
    {0xC0000090, "Invalid floating point operation"},
    {0xC0000092, "Floating point stack overflow"},
    {0xC0000093, "Floating point underflow"},
    {0xC0000094, "Integer Division by zero"},
    {0xC0000095, "Integer overflow"},
    {0xC0000096, "Privileged instruction"},
    {0xC0000006, "In page error"},
    {0xC000001D, "Illegal instruction"},
    {0xC00000FD, "Stack overflow"},
    {0xC0000026, "Invalid disposition"},
    {0xC0000008, "Invalid handle"},
    {0x80000002, "Datatype misalignment"},
    {0xC000008C, "Array bounds exceeded"},
    {0x80000001, "Guard page"},
    {0xC0000138, "Ordinal not found"},
    {0xC0000139, "Entrypoint not found"},
    {0xC0000135, "DLL not found"},
    {0xC0000142, "DLL initialisation failed"},
    {0xC0000374, "Heap corruption"},
    {0xC0000409, "Stack buffer overrun"},
    {0xC0000420, "Assertion failure"},
    {0x40010005, "Ctrl+C pressed"},
}};

std::string exception_text(std::uint32_t code) {
  for (const auto& entry : ExceptionNames)
    if (entry.code == code) return entry.text;
  return format_text("Exception 0x%08X", code);
}

}  // namespace vantor
