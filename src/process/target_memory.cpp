#include "process/target_memory.h"

#include "common/messages.h"

namespace vantor {

std::uint32_t TargetMemory::read_u8(Address address) {
  std::uint8_t value = 0;
  return read(address, &value, 1) == 1 ? value : 0xFFu;
}

std::uint32_t TargetMemory::read_u16(Address address) {
  std::uint16_t value = 0;
  return read(address, &value, 2) == 2 ? value : 0xFFFFFFFFu;
}

std::uint32_t TargetMemory::read_u32(Address address) {
  std::uint32_t value = 0;
  return read(address, &value, 4) == 4 ? value : 0xFFFFFFFFu;
}

std::uint64_t TargetMemory::read_u64(Address address) {
  std::uint64_t value = 0;
  return read(address, &value, 8) == 8 ? value : ~std::uint64_t{0};
}

bool TargetMemory::is_readable(Address address) {
  std::uint8_t value;
  return read(address, &value, 1) == 1;
}

void TargetMemory::read_narrow_string(char* destination, Address address, std::size_t n) {
  std::size_t i = 0;
  for (; i < n; ++i) {
    std::uint32_t byte = read_u8(address + i);
    if (byte == 0 || byte == 0xFF) break;
    destination[i] = static_cast<char>(byte);
  }
  destination[i] = '\0';
}

void TargetMemory::read_wide_string_as_narrow(char* destination, Address address, std::size_t n) {
  VANTOR_ASSERT(false, "false", "DebuggedProcess");
  std::size_t i = 0;
  for (; i + 1 < n; ++i) {
    std::uint16_t wide = 0;
    if (read(address + 2 * i, &wide, 2) != 2) break;
    destination[i] = static_cast<char>(wide & 0xFF);
  }
  if (n > 0) destination[i] = '\0';
}

}  // namespace vantor
