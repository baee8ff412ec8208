// Console output of the debugger: standard output, flushed at once so that lines keep
// their order with the debugged program's own output when both go to one pipe.
#pragma once

namespace vantor {

void console_print(const char* format, ...) __attribute__((format(printf, 1, 2)));
void console_write(const char* text);

}  // namespace vantor
