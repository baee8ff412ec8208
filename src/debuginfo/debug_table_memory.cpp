#include "debuginfo/debug_table_memory.h"

#include <algorithm>
#include <cstring>

namespace vantor {

namespace {
// Readability changes only at page boundaries.
constexpr Address kPageSize = 4096;
}  // namespace

std::size_t DebugTableMemory::read(Address address, void* buffer, std::size_t size) {
  auto* out = static_cast<std::uint8_t*>(buffer);
  std::size_t got = target_.read(address, out, size);
  if (got >= size) return size;
  // The common case costs one call; only a failed read pays for finding the readable prefix.
  while (got < size) {
    Address at = address + got;
    std::size_t piece = static_cast<std::size_t>(std::min<Address>(size - got, kPageSize - at % kPageSize));
    if (target_.read(at, out + got, piece) != piece) break;
    got += piece;
  }
  std::memset(out + got, 0, size - got);
  return size;
}

}  // namespace vantor
