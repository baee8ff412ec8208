// The reader under the debug-table buffers. Debug tables are read in whole chunks, and a
// chunk that starts near the end of the image's readable memory would fail as a whole
// (the platform's reads are all or nothing), which the chunked buffer treats as a broken
// invariant. Through this reader the readable part of such a read arrives intact and the
// rest reads as zero bytes: a map or a block that runs off readable memory then ends in an
// empty name or a wrong magic, the same as any other table without debug information.
#pragma once

#include "process/target_memory.h"

namespace vantor {

// Debug tables are read through chunked buffers of this many bytes.
constexpr std::int32_t kDebugTableChunkSize = 128;

class DebugTableMemory : public TargetMemory {
 public:
  explicit DebugTableMemory(TargetMemory& target) : target_(target) {}
  // Always reports `size` bytes; those past the readable prefix are zero.
  std::size_t read(Address address, void* buffer, std::size_t size) override;
  std::size_t write(Address address, const void* buffer, std::size_t size) override {
    return target_.write(address, buffer, size);
  }

 private:
  TargetMemory& target_;
};

}  // namespace vantor
