// The process's knowledge of its COMMON blocks. Their addresses are not in the debug
// tables: the program's run-time library keeps a linked list of every block (name,
// storage, size) in its own memory. Walking it costs cross-process reads, so one walk
// caches every block it passes, and a name already cached never walks again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "process/target_memory.h"

namespace vantor {

struct CommonBlock {
  Address address = 0;
  std::string name;  // as the run-time library spells it, at most 255 characters
  std::uint64_t size = 0;
};

// A node of the run-time library's list, as laid out in the program's memory.
struct RuntimeCommonNode {
  std::uint64_t next;     // 0 ends the list
  std::uint64_t name;     // NUL-terminated
  std::uint64_t storage;  // the block's first byte
  std::uint64_t size;     // in bytes
};
static_assert(sizeof(RuntimeCommonNode) == 32);

class CommonBlockCache {
 public:
  static constexpr std::size_t kMaxNameLength = 255;

  // The address of the block named exactly `name` (case matters); 0 when the list, walked
  // from `head` (its first node, 0 for an empty list), does not hold it.
  Address address_by_name(TargetMemory& memory, Address head, std::string_view name);
  // Walks the whole list from `head`, adding the blocks not cached yet.
  void refresh(TargetMemory& memory, Address head);

  // In order of first sight.
  const std::vector<CommonBlock>& blocks() const { return blocks_; }
  const CommonBlock* find(std::string_view name) const;
  // How many times the run-time list has been walked.
  std::size_t walks() const { return walks_; }

 private:
  // Walks the list, caching new names; returns the index of `wanted` or -1.
  std::ptrdiff_t walk(TargetMemory& memory, Address head, std::string_view wanted);

  std::vector<CommonBlock> blocks_;
  std::size_t walks_ = 0;
};

// Reads a NUL-terminated string of at most `max_length` characters from the program in
// page-bounded chunks rather than byte by byte; an unreadable byte ends the string.
std::string read_target_string(TargetMemory& memory, Address address, std::size_t max_length);

}  // namespace vantor
