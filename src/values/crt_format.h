// printf-style formatting with one output on every build. The texts the debugger shows
// are those of the Windows C runtime: "%p" is 16 upper-case hexadecimal digits without
// "0x", "%I64d"/"%I64u"/"%I64x" are 64-bit conversions, and a floating exponent has at
// least two digits ("1e+10", as the current runtime prints it; the old runtime's three
// digits are not reproduced). The native C library and mingw-w64's (which defaults to
// three exponent digits) differ on these points, so every conversion that can differ is
// produced here rather than handed to the library as it stands. Infinities and NaNs print
// as "inf", "-inf", "nan" and "-nan" ("INF"/"NAN" for the upper-case conversions).
#pragma once

#include <cstdarg>
#include <string>

// The conversions checked are those of the C standard, whatever the target's own printf.
#if defined(__clang__)
#define VANTOR_PRINTF_FORMAT(format_index, first_argument) \
  __attribute__((format(printf, format_index, first_argument)))
#else
#define VANTOR_PRINTF_FORMAT(format_index, first_argument) \
  __attribute__((format(gnu_printf, format_index, first_argument)))
#endif

namespace vantor {

std::string crt_format(const char* format, ...) VANTOR_PRINTF_FORMAT(1, 2);
std::string crt_vformat(const char* format, std::va_list arguments);

}  // namespace vantor
