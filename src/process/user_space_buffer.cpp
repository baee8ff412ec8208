#include "process/user_space_buffer.h"

#include <cstring>

#include "common/messages.h"
#include "os/os.h"

namespace vantor {

UserSpaceBuffer::UserSpaceBuffer(TargetMemory& process, Address address, std::int32_t chunk_size)
    : process_(process),
      base_(address),
      chunk_size_(chunk_size > 0 ? chunk_size : 0),
      this_chunk_size_(chunk_size_) {
  // A caller's nonsensical size is an empty window that grows on first use, never a
  // read past the buffer.
  data_.resize(static_cast<std::size_t>(chunk_size_));
  fill("nbytes == chunk_size");
}

void UserSpaceBuffer::fill(const char* expression) {
  std::size_t size = static_cast<std::size_t>(this_chunk_size_);
  std::size_t nbytes = process_.read(base_, data_.data(), size);
  VANTOR_ASSERT(nbytes == size, expression, "UserSpaceBuffer");
  // After a Cancel the bytes that could not be read are zero rather than stale.
  if (nbytes < size) std::memset(data_.data() + nbytes, 0, size - nbytes);
}

void UserSpaceBuffer::ensure(std::int32_t n, bool keep) {
  std::int32_t used = cursor_;
  if (used + n <= this_chunk_size_) return;
  if (keep) {
    this_chunk_size_ = n + used;
    data_.assign(static_cast<std::size_t>(this_chunk_size_), 0);
    fill("nbytes == this_chunk_size");
    cursor_ = used;
    return;
  }
  base_ += static_cast<Address>(used);
  if (n > this_chunk_size_) {
    this_chunk_size_ = n + chunk_size_ / 2;
    data_.assign(static_cast<std::size_t>(this_chunk_size_), 0);
  }
  fill("nbytes == this_chunk_size");
  cursor_ = 0;
}

std::uint32_t UserSpaceBuffer::read_unsigned_byte() {
  ensure(1, false);
  return data_[static_cast<std::size_t>(cursor_++)];
}

std::int32_t UserSpaceBuffer::read_signed_byte() {
  ensure(1, false);
  return static_cast<std::int8_t>(data_[static_cast<std::size_t>(cursor_++)]);
}

std::int32_t UserSpaceBuffer::read_32() {
  std::int32_t value;
  read_block(&value, 4);
  return value;
}

std::uint64_t UserSpaceBuffer::read_64() {
  std::uint64_t value;
  read_block(&value, 8);
  return value;
}

std::uint64_t UserSpaceBuffer::peek_64() {
  ensure(8, false);
  std::uint64_t value;
  std::memcpy(&value, data_.data() + cursor_, 8);
  return value;
}

bool UserSpaceBuffer::read_block(void* destination, std::int32_t n) {
  if (n <= 0) return true;
  ensure(n, false);
  std::memcpy(destination, data_.data() + cursor_, static_cast<std::size_t>(n));
  cursor_ += n;
  return true;
}

bool UserSpaceBuffer::read_string(char* destination, std::int32_t capacity) {
  std::int32_t i = 0;
  for (; i < capacity - 1; ++i) {
    ensure(1, false);
    char c = static_cast<char>(data_[static_cast<std::size_t>(cursor_)]);
    ++cursor_;
    destination[i] = c;
    if (c == '\0') return true;
  }
  if (capacity > 0) destination[i] = '\0';
  return false;
}

void UserSpaceBuffer::skip(std::int32_t delta) {
  base_ = base_ + static_cast<Address>(cursor_) + static_cast<Address>(static_cast<std::int64_t>(delta));
  fill("nbytes == this_chunk_size");
  cursor_ = 0;
}

std::wstring wide_from_narrow(const std::string& text) { return os::system().wide_from_oem(text); }
std::string narrow_from_wide(const std::wstring& text) { return os::system().oem_from_wide(text); }

}  // namespace vantor
