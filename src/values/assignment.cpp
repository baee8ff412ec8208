#include "values/assignment.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "values/error_codes.h"

namespace vantor {

namespace {

bool is_integer_like(std::int32_t t) { return is_integer_type(t) || is_logical_type(t) || t == kTypeLogical8; }

std::int64_t integer_from(const element& value, TargetMemory& memory) {
  switch (value.type) {
    case kTypeUnsigned1:
    case kTypeUnsigned2:
    case kTypeUnsigned4: return static_cast<std::uint32_t>(value_int32(value, memory));
    default: break;
  }
  if (is_integer_like(value.type)) return value_int64(value, memory);
  double real = value_double(value, memory);
  if (!(real >= -9223372036854775808.0 && real < 9223372036854775808.0)) return INT64_MIN;
  return static_cast<std::int64_t>(real);
}

// Replaces the bit field's bits in the bytes already there.
bool merge_bit_field(const element& target, std::uint64_t field, TargetMemory& memory, std::vector<std::uint8_t>& bytes) {
  if (memory.read(target.address, bytes.data(), bytes.size()) != bytes.size()) return false;
  for (std::uint32_t i = 0; i < target.bit_count && i < 64; ++i) {
    std::uint64_t bit = std::uint64_t{target.bit_offset} + i;
    if (bit >= bytes.size() * 8) break;
    std::uint8_t mask = static_cast<std::uint8_t>(1u << (bit % 8));
    if ((field >> i) & 1)
      bytes[bit / 8] |= mask;
    else
      bytes[bit / 8] &= static_cast<std::uint8_t>(~mask);
  }
  return true;
}

}  // namespace

std::int32_t assign(const element& target, const element& value, TargetMemory& memory) {
  if (target.error_code) return target.error_code;
  if (value.error_code) return value.error_code;
  if (target.is_constant() || target.is_typedef()) return kErrorNoAddress;
  if (target.size <= 0 || target.size > (1 << 24)) return kErrorTypesIncompatible;

  std::int32_t t = target.type, v = value.type;
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(target.size), 0);
  bool numeric_value = is_numeric_type(v) || is_integer_like(v);

  if (is_integer_type(t)) {
    if (!numeric_value) return kErrorTypesIncompatible;
    std::int64_t n = integer_from(value, memory);
    if (target.bit_count != 0) {
      if (!merge_bit_field(target, static_cast<std::uint64_t>(n), memory, bytes)) return kErrorIllegalPointer;
    } else {
      std::memcpy(bytes.data(), &n, std::min<std::size_t>(bytes.size(), 8));
    }
  } else if (is_logical_type(t) || t == kTypeLogical8) {
    if (!is_integer_like(v)) return kErrorTypesIncompatible;
    std::int64_t truth = value_int64(value, memory) != 0 ? 1 : 0;
    std::memcpy(bytes.data(), &truth, std::min<std::size_t>(bytes.size(), 8));
  } else if (is_real_type(t)) {
    if (!numeric_value) return kErrorTypesIncompatible;
    double real = value_double(value, memory);
    if (std::int32_t error = real_range_error(real, t)) return error;
    if (t == kTypeReal4) {
      float f = static_cast<float>(real);
      std::memcpy(bytes.data(), &f, 4);
    } else {
      std::memcpy(bytes.data(), &real, 8);
      bytes.resize(8);  // the last two bytes of a REAL*10 are left as they are
    }
  } else if (is_complex_type(t)) {
    if (!numeric_value) return kErrorTypesIncompatible;
    double re = 0, im = 0;
    value_complex(value, memory, re, im);
    if (std::int32_t error = complex_range_error(re, im, t)) return error;
    if (t == kTypeComplex8) {
      float parts[2] = {static_cast<float>(re), static_cast<float>(im)};
      std::memcpy(bytes.data(), parts, 8);
    } else {
      std::size_t half = t == kTypeComplex20 ? 10 : 8;
      if (t == kTypeComplex20) {
        if (memory.read(target.address, bytes.data(), bytes.size()) != bytes.size()) return kErrorIllegalPointer;
      }
      std::memcpy(bytes.data(), &re, 8);
      std::memcpy(bytes.data() + half, &im, 8);
    }
  } else if (t == kTypeCharacter) {
    if (v != kTypeCharacter) return kErrorTypesIncompatible;
    std::vector<std::uint8_t> text(static_cast<std::size_t>(std::clamp<std::int64_t>(value.size, 0, 1 << 24)));
    if (!read_value(value, memory, text.data())) return kErrorIllegalPointer;
    std::fill(bytes.begin(), bytes.end(), ' ');
    if (!text.empty()) std::memcpy(bytes.data(), text.data(), std::min(text.size(), bytes.size()));
  } else if (t == kTypePointer8) {
    if (v != kTypePointer8 && !is_integer_type(v)) return kErrorTypesIncompatible;
    if (v == kTypePointer8 && !same_type(target, value) && value.next && value.next->type != kTypeVoid &&
        target.next && target.next->type != kTypeVoid)
      return kErrorPointerTypes;
    std::int64_t address = v == kTypePointer8 ? value_int64(value, memory) : integer_from(value, memory);
    std::memcpy(bytes.data(), &address, std::min<std::size_t>(bytes.size(), 8));
  } else if (t == kTypeStructure) {
    if (v != kTypeStructure || !target.structure || !value.structure || target.structure->type != value.structure->type ||
        value.size != target.size)
      return kErrorTypesIncompatible;
    if (!read_value(value, memory, bytes.data())) return kErrorIllegalPointer;
  } else {
    return kErrorTypesIncompatible;
  }

  if (memory.write(target.address, bytes.data(), bytes.size()) != bytes.size()) return kErrorIllegalPointer;
  return 0;
}

}  // namespace vantor
