#include "common/console.h"

#include <cstdarg>
#include <cstdio>

namespace vantor {

void console_print(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::vprintf(format, args);
  va_end(args);
  std::fflush(stdout);
}

void console_write(const char* text) {
  std::fputs(text, stdout);
  std::fflush(stdout);
}

}  // namespace vantor
