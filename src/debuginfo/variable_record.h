// Records of a routine's symbol stream as the debugger keeps them: variables (and
// derived-type components, which have the same layout), array descriptors, derived types
// and COMMON block references. The reader fills them field by field from the target's
// memory; stack frames and the values layer read them.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vantor {

using Address = std::uint64_t;

// Kinds of an array bound.
constexpr std::int32_t kBoundConstant = 251;
constexpr std::int32_t kBoundVariableStatic = 250;  // a variable bound of a static descriptor
// Any other kind is the address type of a variable bound of a dynamic descriptor.

struct ArrayBound {
  std::int32_t kind = kBoundConstant;
  std::int64_t value = 0;
};

struct ArrayDimension {
  std::array<ArrayBound, 3> bounds{};  // start, size, stride
  std::int64_t fourth = 0;             // kept with the dimension
  const ArrayBound& start() const { return bounds[0]; }
  const ArrayBound& size() const { return bounds[1]; }
  const ArrayBound& stride() const { return bounds[2]; }
};

// The language's largest rank.
constexpr int kMaxRank = 7;
// The rank field has four bits: every rank a table can state has room, so a rank above the
// language's is stored as it is and left to the values layer to judge.
constexpr int kMaxStoredRank = 15;

struct ArrayDescriptorRecord {
  std::int32_t rank = 0;
  bool dynamic = false;
  std::array<ArrayDimension, kMaxStoredRank> dimensions{};
};

struct DerivedTypeRecord;

struct CommonBlockRecord {
  std::uint32_t key = 0;
  Address address = 0;  // 0 until resolved through the process
  std::string name;     // "/NAME/"
};

struct VariableRecord {
  std::uint32_t first_word = 0;  // not interpreted
  std::uint32_t descriptor = 0;
  std::uint64_t address_value = 0;
  std::uint32_t size = 0;
  std::uint32_t type_key = 0;
  std::uint32_t common_key = 0;
  std::uint32_t extra_word = 0;  // kept, not interpreted
  std::string name;

  std::vector<std::uint8_t> constant_value;      // address type 4: the value's bytes
  const DerivedTypeRecord* structure = nullptr;  // type code 14, possibly filled later
  CommonBlockRecord* common = nullptr;           // address type 8
  std::unique_ptr<ArrayDescriptorRecord> array;  // descriptor bit 9

  std::uint32_t address_type() const { return descriptor & 0xF; }
  std::uint32_t type_code() const { return (descriptor >> 4) & 0x1F; }
  bool has_array_descriptor() const { return (descriptor & (1u << 9)) != 0; }
  std::uint32_t attributes() const { return descriptor & (0xFu << 10); }
};

struct DerivedTypeRecord {
  std::uint32_t key = 0;
  std::string name;
  std::vector<std::unique_ptr<VariableRecord>> components;  // in order
};

}  // namespace vantor
