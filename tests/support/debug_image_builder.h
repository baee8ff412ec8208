// Test support: builds an image of our compiler's output byte for byte in the in-memory
// target, so that Module, the call stack and values can be tested without a compiler.
//
//   DebugImageBuilder image(0x140000000);
//   auto& main = image.routine("MAIN", 0x1000, 0x40).source("C:\\src\\prog.f95");
//   main.line(3, 0).line(4, 7).line(6, 0x12);
//   int point = main.derived_type("POINT", {VariableSpec::scalar("X", kDebugReal8, 0)});
//   main.variable(VariableSpec::local("P", kDebugDerivedType, -16, 16).with_type(point));
//   image.install(target.system, L"C:\\prog.exe");
//   Module module(process, 0, L"C:\\prog.exe", image.base(), true);
//
// Addresses given to routines are offsets from the load base (RVAs). By default routines
// are stored relative (flags bit 0) and the map and debug blocks go after the last routine.
// The setters that break the format exist for the reader's failure tests.
#pragma once

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "debuginfo/debug_type_codes.h"
#include "os/inmemory/in_memory_system.h"

namespace vantor::testing {

using Address = std::uint64_t;

// One bound of an array dimension: a constant, or a variable bound whose slot holds where
// the value lives (with the bound's address type in a dynamic descriptor).
struct BoundSpec {
  std::int64_t value = 0;
  bool variable = false;
  std::uint8_t address_type = 0;  // dynamic descriptors only
  static BoundSpec constant(std::int64_t value) { return {value, false, 0}; }
  static BoundSpec in_variable(std::int64_t value, std::uint8_t address_type = 0) {
    return {value, true, address_type};
  }
};

struct DimensionSpec {
  BoundSpec start, size, stride;
  std::int64_t fourth = 0;
};

struct ArraySpec {
  bool dynamic = false;
  std::vector<DimensionSpec> dimensions;
  // Constant bounds: each pair is (start, size); strides are distances in bytes, the
  // element size times the sizes of the dimensions before.
  static ArraySpec fixed(const std::vector<std::pair<std::int64_t, std::int64_t>>& bounds, std::int64_t element_size);
};

struct VariableSpec {
  std::string name;
  std::uint32_t address_type = 1;
  std::uint32_t type_code = kDebugInteger4;
  std::uint64_t address_value = 0;
  std::uint32_t size = 4;
  std::uint32_t attributes = 0;   // the kAttribute* bits
  int derived_type = -1;          // a handle from RoutineBuilder::declare_type / derived_type
  int common_block = -1;          // a handle from RoutineBuilder::common_block
  std::vector<std::uint8_t> constant;  // address type 4: the value's bytes (size follows it)
  std::optional<ArraySpec> array;
  std::uint32_t first_word = 0;
  std::uint32_t extra_word = 0;
  std::uint32_t format_marker = 0;  // non-zero: the old, unsupported layout
  std::optional<std::uint32_t> type_key;    // raw keys, written instead of the handles'
  std::optional<std::uint32_t> common_key;

  // A variable of the given address type with its address value.
  static VariableSpec at(std::string name, std::uint32_t address_type, std::uint32_t type_code,
                         std::uint64_t address_value, std::uint32_t size);
  // A constant (address type 4) holding the bytes of `value`.
  template <typename T>
  static VariableSpec constant_of(std::string name, std::uint32_t type_code, T value) {
    VariableSpec spec = at(std::move(name), 4, type_code, 0, sizeof value);
    spec.constant.resize(sizeof value);
    std::memcpy(spec.constant.data(), &value, sizeof value);
    return spec;
  }
  VariableSpec& with_type(int handle) { derived_type = handle; return *this; }
  VariableSpec& in_common(int handle) { common_block = handle; return *this; }
  VariableSpec& with_array(ArraySpec spec) { array = std::move(spec); return *this; }
};

class DebugImageBuilder;

class RoutineBuilder {
 public:
  RoutineBuilder& line(std::int32_t line, std::int32_t offset);
  RoutineBuilder& source(std::string file_name) { file_name_ = std::move(file_name); return *this; }
  RoutineBuilder& lead_word(std::uint32_t value) { lead_word_ = value; return *this; }
  RoutineBuilder& frame_offset(std::int32_t value) { frame_offset_ = value; return *this; }
  RoutineBuilder& second_value(std::uint32_t value) { second_value_ = value; return *this; }
  // Stores start, end and block as absolute addresses (flags bit 0 clear).
  RoutineBuilder& absolute() { relative_ = false; return *this; }
  RoutineBuilder& no_debug_block() { has_block_ = false; return *this; }
  RoutineBuilder& block_magic(const std::string& magic) { block_magic_ = magic; return *this; }
  RoutineBuilder& end_magic(const std::string& magic) { end_magic_ = magic; return *this; }
  RoutineBuilder& stream_size_word(std::int32_t value) { stream_size_word_ = value; return *this; }
  RoutineBuilder& line_count_word(std::int32_t value) { line_count_word_ = value; return *this; }

  // ---- the symbol stream, in the order of the calls ----
  RoutineBuilder& variable(const VariableSpec& spec);
  // Reserves a derived type whose record comes later (or never): variables may use it now.
  int declare_type(const std::string& name);
  // Writes the record of a reserved type here.
  RoutineBuilder& define_type(int handle, const std::vector<VariableSpec>& components);
  int derived_type(const std::string& name, const std::vector<VariableSpec>& components);
  int common_block(const std::string& name);
  RoutineBuilder& raw_tag(std::uint8_t tag);
  RoutineBuilder& raw_bytes(const std::vector<std::uint8_t>& bytes);

  // ---- known once the routine is built ----
  const std::string& name() const { return name_; }
  // A type's or block's key: where its record is in the debug block.
  std::uint32_t type_key(int handle) const;
  std::uint32_t common_key(int handle) const { return common_keys_.at(static_cast<std::size_t>(handle)); }
  const std::vector<std::pair<std::int32_t, std::int32_t>>& lines() const { return lines_; }
  // The debug block's bytes as they go into the image.
  std::vector<std::uint8_t> debug_block() const;

 private:
  friend class DebugImageBuilder;
  RoutineBuilder(std::string name, std::uint32_t start, std::uint32_t length)
      : name_(std::move(name)), start_(start), length_(length) {}
  void write_variable(const VariableSpec& spec);
  std::uint32_t key_of_next_record() const;

  std::string name_;
  std::uint32_t start_, length_;
  std::string file_name_ = "prog.f95";
  std::vector<std::pair<std::int32_t, std::int32_t>> lines_;  // (line, offset)
  std::uint32_t lead_word_ = 0x40;
  std::int32_t frame_offset_ = 0;
  std::uint32_t second_value_ = 0;
  bool relative_ = true;
  bool has_block_ = true;
  std::string block_magic_ = "RHUB";
  std::string end_magic_ = "BARB";
  std::optional<std::int32_t> stream_size_word_;
  std::optional<std::int32_t> line_count_word_;
  std::vector<std::uint8_t> stream_;
  struct TypeSlot {
    std::string name;
    std::optional<std::uint32_t> key;
  };
  std::vector<TypeSlot> types_;
  std::vector<std::uint32_t> common_keys_;
  std::vector<std::pair<std::size_t, int>> type_key_patches_;  // stream position, handle
};

class DebugImageBuilder {
 public:
  explicit DebugImageBuilder(Address base, std::uint32_t size_of_image = 0x40000);

  // A routine covering [start_rva, start_rva + length - 1].
  RoutineBuilder& routine(const std::string& name, std::uint32_t start_rva, std::uint32_t length);

  // ---- layout and format overrides ----
  DebugImageBuilder& map_rva(std::uint32_t rva) { map_rva_ = rva; return *this; }
  DebugImageBuilder& blocks_rva(std::uint32_t rva) { blocks_rva_ = rva; return *this; }
  DebugImageBuilder& debug_info_offset(std::int32_t value) { debug_info_offset_ = value; return *this; }
  DebugImageBuilder& map_magic(const std::string& magic) { map_magic_ = magic; return *this; }
  DebugImageBuilder& map_version(std::int32_t version) { map_version_ = version; return *this; }
  DebugImageBuilder& new_header_offset(std::uint32_t offset) { new_header_offset_ = offset; return *this; }
  DebugImageBuilder& pe_signature(const std::string& signature) { pe_signature_ = signature; return *this; }
  DebugImageBuilder& no_debug_info() { with_map_ = false; return *this; }

  // Writes the image into the target's memory at the base and its headers to `path` in the
  // target's file system (where Module maps them from).
  void install(os::InMemorySystem& system, const std::wstring& path);

  Address base() const { return base_; }
  std::uint32_t size_of_image() const { return size_of_image_; }
  Address end() const { return base_ + size_of_image_; }
  // Absolute addresses, valid after install.
  Address address_of(const std::string& routine) const;
  Address block_address(const std::string& routine) const;
  RoutineBuilder& operator[](const std::string& name);
  const std::vector<std::unique_ptr<RoutineBuilder>>& routines() const { return routines_; }

  // The bytes of the image file: DOS header, PE signature, file and optional headers.
  std::vector<std::uint8_t> file_bytes() const;

 private:
  std::vector<std::uint8_t> map_bytes() const;

  Address base_;
  std::uint32_t size_of_image_;
  std::vector<std::unique_ptr<RoutineBuilder>> routines_;
  std::optional<std::uint32_t> map_rva_, blocks_rva_;
  std::optional<std::int32_t> debug_info_offset_;
  std::string map_magic_ = "QUOR";
  std::int32_t map_version_ = 2;
  std::uint32_t new_header_offset_ = 0x80;
  std::string pe_signature_ = std::string("PE\0\0", 4);
  bool with_map_ = true;
  std::uint32_t placed_map_rva_ = 0;
  std::map<std::string, std::uint32_t> block_rvas_;
};

}  // namespace vantor::testing
