// A forward-reading cursor over a stretch of the debugged program's memory. It fetches
// the memory in chunks so that long sequential reads (debug tables, stacks, strings) cost
// one cross-process read per chunk instead of one per value.
#pragma once

#include <cstdint>
#include <vector>

#include "process/target_memory.h"

namespace vantor {

class UserSpaceBuffer {
 public:
  // Reads chunk_size bytes at address at once (a short read is an assertion).
  UserSpaceBuffer(TargetMemory& process, Address address, std::int32_t chunk_size);
  UserSpaceBuffer(const UserSpaceBuffer&) = delete;
  UserSpaceBuffer& operator=(const UserSpaceBuffer&) = delete;

  // Makes at least n bytes available at the cursor. keep = true re-reads the chunk from the
  // same base, grown so that the bytes already consumed stay valid; keep = false slides the
  // window forward to the cursor (growing it to n + chunk_size / 2 when n is larger).
  void ensure(std::int32_t n, bool keep);

  std::uint32_t read_unsigned_byte();
  std::int32_t read_signed_byte();
  std::int32_t read_32();
  std::uint64_t read_64();
  std::uint64_t peek_64();
  bool read_block(void* destination, std::int32_t n);
  // Copies bytes up to a zero byte; true when the zero byte was reached (and consumed),
  // false when the string was cut at capacity - 1 bytes. The copy always ends with a zero.
  bool read_string(char* destination, std::int32_t capacity);
  // Moves the cursor by delta (may be negative) and always re-reads a chunk there.
  void skip(std::int32_t delta);

  Address cursor_address() const { return base_ + static_cast<Address>(cursor_); }
  Address base() const { return base_; }
  std::int32_t chunk_size() const { return chunk_size_; }
  std::int32_t this_chunk_size() const { return this_chunk_size_; }
  // The bytes held, for readers that need positions inside a block to stay valid.
  const std::uint8_t* data() const { return data_.data(); }

 private:
  void fill(const char* expression);

  TargetMemory& process_;
  Address base_;
  std::int32_t chunk_size_;
  std::vector<std::uint8_t> data_;
  std::int32_t this_chunk_size_;
  std::int32_t cursor_ = 0;  // offset of the next byte in data_
};

// OEM code-page conversions (the system's, through the OS layer).
std::wstring wide_from_narrow(const std::string& text);
std::string narrow_from_wide(const std::wstring& text);

}  // namespace vantor
