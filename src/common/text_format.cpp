#include "common/text_format.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

namespace vantor {

std::string format_text(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list again;
  va_copy(again, args);
  int length = std::vsnprintf(nullptr, 0, format, args);
  va_end(args);
  std::string out;
  if (length > 0) {
    std::vector<char> buffer(static_cast<std::size_t>(length) + 1);
    std::vsnprintf(buffer.data(), buffer.size(), format, again);
    out.assign(buffer.data(), static_cast<std::size_t>(length));
  }
  va_end(again);
  return out;
}

std::string pointer_text(std::uint64_t address) {
  return format_text("%016llX", static_cast<unsigned long long>(address));
}

}  // namespace vantor
