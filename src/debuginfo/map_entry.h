// One routine of an image's routine map, with its line table and (once loaded) symbols.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "debuginfo/symbol_table.h"

namespace vantor {

struct LineRecord {
  std::int32_t line = 0;
  std::int32_t offset = 0;  // from the routine's start
};

// Records in ascending order of offset: the line-trap patcher relies on it.
struct LineTable {
  std::vector<LineRecord> records;
  std::string file_name;  // as stored
  std::int32_t count() const { return static_cast<std::int32_t>(records.size()); }
};

struct MapEntry {
  std::string name;
  std::string lower_name;
  std::uint64_t flags = 0;  // bit 0: addresses relative to the load base
  Address start = 0;
  Address end = 0;  // last byte of the routine, inclusive
  Address debug_block = 0;
  std::uint32_t lead_word = 0;
  std::int32_t frame_offset = 0;
  std::uint32_t second_value = 0;
  bool symbols_loaded = false;
  std::unique_ptr<F95SymbolTable> symbols;
  std::unique_ptr<LineTable> lines;

  bool has_lines() const { return lines && lines->count() > 0; }
};

}  // namespace vantor
