#include "debuginfo/common_block_cache.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

namespace vantor {

namespace {
// A list longer than this is taken to be corrupt, not a real program's blocks.
constexpr std::size_t kMaxNodes = 1 << 20;
constexpr Address kPage = 4096;
}  // namespace

std::string read_target_string(TargetMemory& memory, Address address, std::size_t max_length) {
  std::string text;
  char chunk[256];
  while (text.size() < max_length) {
    // Never ask across a page end: the next page may be unreadable while this one is fine.
    std::size_t want = std::min<std::size_t>({sizeof chunk, max_length - text.size(),
                                              static_cast<std::size_t>(kPage - (address & (kPage - 1)))});
    std::size_t got = memory.read(address, chunk, want);
    const char* end = static_cast<const char*>(std::memchr(chunk, 0, got));
    if (end) {
      text.append(chunk, static_cast<std::size_t>(end - chunk));
      return text;
    }
    text.append(chunk, got);
    if (got < want) break;
    address += got;
  }
  return text;
}

const CommonBlock* CommonBlockCache::find(std::string_view name) const {
  for (const auto& block : blocks_)
    if (block.name == name) return &block;
  return nullptr;
}

std::ptrdiff_t CommonBlockCache::walk(TargetMemory& memory, Address head, std::string_view wanted) {
  ++walks_;
  std::ptrdiff_t found = -1;
  Address node_address = head;
  std::unordered_set<Address> seen;  // a corrupt list may loop
  while (node_address != 0 && seen.size() < kMaxNodes && seen.insert(node_address).second) {
    RuntimeCommonNode node;
    if (memory.read(node_address, &node, sizeof node) != sizeof node) break;
    std::string name = read_target_string(memory, node.name, kMaxNameLength);
    auto known = std::find_if(blocks_.begin(), blocks_.end(), [&](const CommonBlock& b) { return b.name == name; });
    if (known == blocks_.end()) {
      blocks_.push_back(CommonBlock{node.storage, name, node.size});
      known = blocks_.end() - 1;
    }
    if (found < 0 && name == wanted) found = known - blocks_.begin();
    node_address = node.next;
  }
  return found;
}

Address CommonBlockCache::address_by_name(TargetMemory& memory, Address head, std::string_view name) {
  if (const CommonBlock* block = find(name)) return block->address;
  std::ptrdiff_t index = walk(memory, head, name);
  return index < 0 ? 0 : blocks_[static_cast<std::size_t>(index)].address;
}

void CommonBlockCache::refresh(TargetMemory& memory, Address head) { walk(memory, head, {}); }

}  // namespace vantor
