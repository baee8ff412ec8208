#include "values/text_buffer.h"

#include <cstdarg>
#include <cstring>

#include "values/crt_format.h"

namespace vantor {

void TextBuffer::append(std::string_view piece) {
  if (capacity_ == 0) return;
  if (piece.size() >= capacity_) {
    std::memcpy(end_, piece.data(), capacity_ - 1);
    end_ += capacity_ - 1;
    *end_ = '\0';
    capacity_ = 0;
    return;
  }
  std::memcpy(end_, piece.data(), piece.size());
  end_ += piece.size();
  *end_ = '\0';
  capacity_ -= piece.size();
}

void TextBuffer::append_format(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::string piece = crt_vformat(format, arguments);
  va_end(arguments);
  append(piece);
}

}  // namespace vantor
