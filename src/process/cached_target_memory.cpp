#include "process/cached_target_memory.h"

#include <algorithm>
#include <cstring>

namespace vantor {

CachedTargetMemory::CachedTargetMemory(TargetMemory& memory, std::size_t block_size)
    : memory_(memory), block_size_(block_size) {}

const CachedTargetMemory::Block& CachedTargetMemory::block_at(Address block_address) {
  auto it = blocks_.find(block_address);
  if (it != blocks_.end()) return it->second;
  Block block;
  block.bytes.resize(block_size_);
  ++fetches_;
  std::size_t got = memory_.read(block_address, block.bytes.data(), block_size_);
  block.bytes.resize(std::min(got, block_size_));
  return blocks_.emplace(block_address, std::move(block)).first->second;
}

std::size_t CachedTargetMemory::read(Address address, void* buffer, std::size_t size) {
  auto* out = static_cast<std::uint8_t*>(buffer);
  std::size_t done = 0;
  while (done < size) {
    Address at = address + done;
    if (at < address) break;  // wrapped past the top of the address space
    Address block_address = at & ~static_cast<Address>(block_size_ - 1);
    const Block& block = block_at(block_address);
    std::size_t offset = static_cast<std::size_t>(at - block_address);
    if (offset >= block.bytes.size()) break;
    std::size_t n = std::min(size - done, block.bytes.size() - offset);
    std::memcpy(out + done, block.bytes.data() + offset, n);
    done += n;
    if (block.bytes.size() < block_size_ && offset + n == block.bytes.size()) break;
  }
  return done;
}

std::size_t CachedTargetMemory::write(Address address, const void* buffer, std::size_t size) {
  blocks_.clear();
  return memory_.write(address, buffer, size);
}

}  // namespace vantor
