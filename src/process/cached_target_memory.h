// A read-through cache over the debugged program's memory for work that takes many small
// values close together while the program stands still: the stack walk reads return slots
// up the stack and decodes routine prologues one instruction at a time. Memory is fetched
// in aligned blocks, one cross-process read per block however many values are then taken
// from it. The cache lives only as long as the program stays stopped; a write through it
// drops every block so that nothing stale is served afterwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "process/target_memory.h"

namespace vantor {

class CachedTargetMemory : public TargetMemory {
 public:
  // `block_size` must be a power of two no larger than the system's page size, so that a
  // block never straddles a readable and an unreadable page.
  explicit CachedTargetMemory(TargetMemory& memory, std::size_t block_size = 4096);

  std::size_t read(Address address, void* buffer, std::size_t size) override;
  std::size_t write(Address address, const void* buffer, std::size_t size) override;

  // Reads made on the underlying memory so far.
  std::size_t fetches() const { return fetches_; }

 private:
  struct Block {
    std::vector<std::uint8_t> bytes;  // the readable prefix of the block
  };
  const Block& block_at(Address block_address);

  TargetMemory& memory_;
  std::size_t block_size_;
  std::map<Address, Block> blocks_;
  std::size_t fetches_ = 0;
};

}  // namespace vantor
