// Every read and write of the debugged program's memory goes through a TargetMemory:
// debug information, stacks and values never call the OS layer themselves. Each call of
// read() or write() is one cross-process round trip, so callers batch through
// UserSpaceBuffer wherever they read sequentially.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vantor {

using Address = std::uint64_t;

class TargetMemory {
 public:
  virtual ~TargetMemory() = default;
  // Both return the number of bytes transferred (0 or fewer than asked on failure).
  virtual std::size_t read(Address address, void* buffer, std::size_t size) = 0;
  virtual std::size_t write(Address address, const void* buffer, std::size_t size) = 0;

  // The single-value readers report failure in the value: 0xFF, 0xFFFFFFFF or all ones.
  std::uint32_t read_u8(Address address);
  std::uint32_t read_u16(Address address);
  std::uint32_t read_u32(Address address);
  std::uint64_t read_u64(Address address);
  bool is_readable(Address address);
  // Reads byte by byte until a zero byte, a byte that reads as 0xFF (unreadable or a real
  // 0xFF: both end the string) or n bytes, then stores a zero: `destination` needs n + 1.
  void read_narrow_string(char* destination, Address address, std::size_t n);
  // Not to be used (asserts on entry): copies the low byte of n - 1 wide characters.
  void read_wide_string_as_narrow(char* destination, Address address, std::size_t n);
};

}  // namespace vantor
