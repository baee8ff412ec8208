// The one typed value of the debugger: a variable found by name, a constant, a component,
// an array section, a pointee, or the result of an expression.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "debuginfo/variable_record.h"

namespace vantor {

struct array_info {
  std::array<std::int64_t, kMaxRank> first_element{};
  std::array<std::int64_t, kMaxRank> last_element{};
  std::array<std::int64_t, kMaxRank> distance{};
  std::array<std::int64_t, kMaxRank> indexes{};
  std::int8_t indexes_given = 0;
  std::int8_t num_dims = 0;
  bool enforce_bounds = false;
};

struct structure_info {
  const DerivedTypeRecord* type = nullptr;
  bool give_all_components = false;
};

struct element {
  std::unique_ptr<element> next;
  std::int32_t type = 0;
  Address address = 0;
  std::int64_t size = 0;
  std::uint32_t bit_offset = 0;
  std::uint32_t bit_count = 0;
  std::int32_t lang_code = 1;
  std::uint8_t flags = 0;
  std::uint8_t address_kind = 0;  // two bits
  std::unique_ptr<array_info> array;
  std::unique_ptr<std::uint8_t[]> heap_value;  // the constant's bytes when above 20
  std::unique_ptr<structure_info> structure;
  std::array<std::uint8_t, 20> value{};
  std::int32_t error_code = 0;
};

}  // namespace vantor
