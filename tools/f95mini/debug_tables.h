// The debug tables that the debugger reads from a running image: one debug block per
// routine (lead word, "RHUB", symbol stream closed by tag 2 and "BARB", line table,
// source file name) and the routine map ("QUOR", version 2). The symbol stream is laid out
// here byte for byte; the parts that only the assembler knows (code offsets of line
// records, image-relative addresses) are written as assembler expressions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace f95mini {

// Address types of variable records (the low four bits of the descriptor word).
enum AddressType : std::uint32_t {
  kAddrRelative = 0,      // given base + value (structure components)
  kAddrFrame = 1,         // frame base + frame offset + value
  kAddrHostFrame = 3,     // caller's frame base + value + caller's frame offset
  kAddrConstant = 4,      // value bytes follow the name
  kAddrDummy = 5,         // pointer read at return slot + value
  kAddrHostDummy = 7,     // pointer read at the caller's return slot + value
  kAddrCommon = 8,        // COMMON block address + value
  kAddrStatic = 9,        // load base + lead word + value
  kAddrFramePointer = 11, // as 1, then the pointer read there
  kAddrHostPointer = 12,  // as 3, then the pointer read there
};

constexpr std::uint32_t kArrayDescriptorFollows = 1u << 9;
constexpr std::uint32_t kFrameOffset = 32;  // locals sit above the 32-byte shadow area

struct BoundRecord {
  bool variable = false;       // held in a variable: address_type + value locate it
  std::uint8_t address_type = 0;
  std::int64_t value = 0;      // the constant, or the variable's address value
};

struct ArrayRecord {
  bool dynamic = false;
  struct Dim {
    BoundRecord start, size, stride;
    std::int64_t fourth = 0;
  };
  std::vector<Dim> dims;
};

struct VariableRecord {
  std::string name;  // written in upper case
  std::uint32_t address_type = kAddrFrame;
  std::uint32_t type_code = 0;
  std::uint32_t attributes = 0;     // kAttribute* bits of debug_type_codes.h
  std::int64_t value = 0;
  std::uint32_t size = 0;
  int type_index = -1;              // index into DebugBlock::types for type code 14
  int common_index = -1;            // index into DebugBlock::commons for address type 8
  std::vector<std::uint8_t> constant;  // address type 4
  std::optional<ArrayRecord> array;
};

struct TypeRecord {
  std::string name;
  std::vector<VariableRecord> members;
};

struct LineRecord {
  int line = 0;
  std::string label;  // assembler label of the line's 0x90 byte
};

// Deliberately broken output for the debugger's negative tests.
struct BrokenOutput {
  bool old_format = false;  // non-zero format marker in variable records
  bool bad_magic = false;   // the block's magic is not "RHUB"
  bool bad_tag = false;     // an unknown tag before the end of the symbol stream
};

struct DebugBlock {
  // Lead word: the image-relative address of the routine's static data when it has any
  // (written as ".rva lead_symbol"), else the frame size.
  std::string lead_symbol;
  std::uint32_t lead_value = 0;
  std::vector<std::string> commons;  // block names, without slashes
  std::vector<VariableRecord> variables;
  std::vector<TypeRecord> types;
  std::string start_label;           // the routine's first byte
  std::vector<LineRecord> lines;
  std::string file_name;
  BrokenOutput broken;
};

// The symbol stream: the bytes from block offset 16 up to and including "BARB". COMMON
// records come first, then variables, then derived types, so every variable of a derived
// type refers to its type before the type's record appears.
std::vector<std::uint8_t> symbol_stream(const DebugBlock& block);

// Bytes of one variable record; type and COMMON keys as given.
std::vector<std::uint8_t> variable_record_bytes(const VariableRecord& v, std::uint32_t type_key,
                                                std::uint32_t common_key, bool old_format);

// Assembler text of the whole block, starting with the label `block_label`.
void write_debug_block(const DebugBlock& block, const std::string& block_label, std::string& out);

struct MapEntryText {
  std::string name;
  std::string start_label;
  std::string last_byte_label;  // the routine's last byte (the map's end is inclusive)
  std::string block_label;      // "" when the routine has no debug block
};

// The routine map. `version` is 2 except for negative tests.
void write_routine_map(const std::vector<MapEntryText>& entries, std::uint32_t version, std::string& out);

// Appends `.byte` lines for raw bytes.
void write_bytes(const std::vector<std::uint8_t>& bytes, std::string& out);

}  // namespace f95mini
