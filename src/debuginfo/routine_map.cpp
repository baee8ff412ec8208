// Reading the routine map and, for each routine, the header and line table of its debug
// block. Everything here is read from the running process, not from the file: the map
// and the blocks hold addresses that are only final once the image is loaded.
#include <algorithm>
#include <cctype>
#include <cstring>

#include "common/console.h"
#include "debuginfo/debug_table_memory.h"
#include "debuginfo/module.h"
#include "debuginfo/source_files.h"
#include "process/debugged_process.h"
#include "process/user_space_buffer.h"

namespace vantor {

namespace {

constexpr Address kDebugInfoOffsetField = 28;  // a reserved word of the DOS header
constexpr std::int32_t kMapVersion = 2;
constexpr std::uint64_t kRelativeAddresses = 1;
constexpr int kLongestRoutineName = 511;
constexpr int kLongestFileName = 1023;
// The header before the symbol stream: lead word, magic, stream size, unused word.
constexpr std::int32_t kBlockHeaderSize = 16;
// No routine has this many lines; a larger count is a corrupt table.
constexpr std::int32_t kMostLineRecords = 1 << 24;

bool magic_is(UserSpaceBuffer& buffer, const char* magic) {
  char bytes[4];
  buffer.read_block(bytes, 4);
  return std::memcmp(bytes, magic, 4) == 0;
}

std::string lower_case(const std::string& text) {
  std::string lower = text;
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

}  // namespace

void Module::read_routine_map() {
  std::int32_t map_offset = 0;
  if (process_.read(load_base_ + kDebugInfoOffsetField, &map_offset, 4) != 4 || map_offset < 1) return;

  DebugTableMemory memory(process_);
  UserSpaceBuffer map(memory, load_base_ + static_cast<Address>(map_offset), kDebugTableChunkSize);
  if (!magic_is(map, "QUOR")) return;
  std::int32_t version = map.read_32();
  if (version != kMapVersion) {
    console_print("map version %d\n", version);
    return;
  }

  char name[kLongestRoutineName + 1];
  for (;;) {
    map.read_string(name, sizeof name);
    if (name[0] == '\0') break;
    auto routine = std::make_unique<MapEntry>();
    routine->name = name;
    routine->lower_name = lower_case(routine->name);
    routine->flags = map.read_64();
    routine->start = map.read_64();
    routine->end = map.read_64();
    routine->debug_block = map.read_64();
    routine->second_value = static_cast<std::uint32_t>(map.read_32());
    routine->frame_offset = map.read_32();
    if (routine->flags & kRelativeAddresses) {
      routine->start += load_base_;
      routine->end += load_base_;
      if (routine->debug_block) routine->debug_block += load_base_;
    }
    if (routine->debug_block) {
      read_debug_block_header(memory, *routine);
      if (routine->lines) register_routine(process_.source_files(), *this, *routine);
    }
    routines_.push_back(std::move(routine));
  }
  // Lookups take the first match, and a routine stored later in the map must win.
  std::reverse(routines_.begin(), routines_.end());
}

void Module::read_debug_block_header(TargetMemory& memory, MapEntry& routine) {
  // A block outside the image, or one whose line table would not fit in it, is as good as
  // none: its counts cannot be trusted to size anything.
  Address block = routine.debug_block;
  if (block < load_base_ || block >= end_address_) {
    routine.debug_block = 0;
    return;
  }
  UserSpaceBuffer buffer(memory, block, kDebugTableChunkSize);
  routine.lead_word = static_cast<std::uint32_t>(buffer.read_32());
  if (!magic_is(buffer, "RHUB")) {
    routine.debug_block = 0;
    return;
  }
  std::int32_t stream_size = buffer.read_32();
  Address table = block + 4 + static_cast<Address>(static_cast<std::int64_t>(stream_size));
  if (stream_size < kBlockHeaderSize - 4 || table + 4 > end_address_) {
    routine.debug_block = 0;
    return;
  }
  buffer.skip(stream_size - 8);
  std::int32_t count = std::max(buffer.read_32(), 0);
  if (count > kMostLineRecords || static_cast<Address>(count) * 8 > end_address_ - (table + 4)) {
    routine.debug_block = 0;
    return;
  }

  auto lines = std::make_unique<LineTable>();
  lines->records.resize(static_cast<std::size_t>(count));
  static_assert(sizeof(LineRecord) == 8, "line records are read as stored");
  buffer.read_block(lines->records.data(), count * 8);
  char file_name[kLongestFileName + 1];
  buffer.read_string(file_name, sizeof file_name);
  lines->file_name = file_name;
  routine.lines = std::move(lines);
}

}  // namespace vantor
