// Text built into a caller's fixed buffer with a remaining capacity. Every piece is
// appended by one rule: a piece at least as long as the remaining capacity is cut to
// capacity - 1 characters, the text is terminated and the capacity becomes 0, so every
// later piece is dropped; a shorter piece is appended whole.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "values/crt_format.h"

namespace vantor {

class TextBuffer {
 public:
  // `capacity` counts the terminating zero; the buffer starts as the empty text.
  TextBuffer(char* buffer, std::size_t capacity) : start_(buffer), end_(buffer), capacity_(capacity) {
    if (capacity_ > 0) *end_ = '\0';
  }
  TextBuffer(const TextBuffer&) = delete;
  TextBuffer& operator=(const TextBuffer&) = delete;

  void append(std::string_view piece);
  void append_format(const char* format, ...) VANTOR_PRINTF_FORMAT(2, 3);

  std::size_t capacity() const { return capacity_; }
  bool full() const { return capacity_ == 0; }
  std::size_t length() const { return static_cast<std::size_t>(end_ - start_); }
  std::string_view text() const { return {start_, length()}; }

 private:
  char* start_;
  char* end_;
  std::size_t capacity_;
};

// A TextBuffer over its own storage, for callers that want a std::string back.
class TextOutput {
 public:
  explicit TextOutput(std::size_t capacity = 4096) : storage_(capacity ? capacity : 1, '\0'), buffer_(storage_.data(), capacity) {}
  TextBuffer& buffer() { return buffer_; }
  std::string str() const { return std::string(buffer_.text()); }

 private:
  std::string storage_;
  TextBuffer buffer_;
};

}  // namespace vantor
