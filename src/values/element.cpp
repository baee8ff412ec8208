#include "values/element.h"

#include <cmath>
#include <cstring>

#include "common/messages.h"
#include "values/error_codes.h"

namespace vantor {

namespace {

constexpr std::int64_t kScalarSizes[kTypeCodeCount] = {
    1, 2, 4, 8,      // LOGICAL
    1, 2, 4, 8,      // INTEGER
    1, 2, 4, 8,      // unsigned
    4,               // enum
    4, 8, 10,        // REAL
    8, 16, 20,       // COMPLEX
    0, 8, 8, 0, 0, 0, 8,
};

// The value bytes of a scalar, at most 20 of them: a constant's own, or read from the
// process. Unreadable bytes read as zero.
struct ScalarBytes {
  std::uint8_t bytes[kInlineValueSize + 4] = {};
  bool ok = false;
};

ScalarBytes fetch_scalar(const element& e, TargetMemory& memory, const char* size_assertion) {
  ScalarBytes out;
  std::int64_t size = e.size;
  if (e.is_constant()) {
    const std::uint8_t* held = constant_bytes(e);
    VANTOR_ASSERT(held != nullptr, "addr != NULL", "element");
    if (held == nullptr) return out;
    std::memcpy(out.bytes, held, static_cast<std::size_t>(std::min<std::int64_t>(size, kInlineValueSize)));
    out.ok = true;
    return out;
  }
  // The integer readings hold their bytes in a small buffer; complex values (up to 20
  // bytes) are read by value_complex, which passes no assertion text.
  if (size_assertion) VANTOR_ASSERT(size < kInlineValueSize, size_assertion, "element");
  if (size <= 0) return out;
  if (size > kInlineValueSize) size = kInlineValueSize;
  out.ok = memory.read(e.address, out.bytes, static_cast<std::size_t>(size)) == static_cast<std::size_t>(size);
  if (!out.ok) std::memset(out.bytes, 0, sizeof out.bytes);
  return out;
}

template <typename T>
T load(const std::uint8_t* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

// Doubles that do not fit an integer are cut the way the hardware's conversion does it
// (the "integer indefinite" value), not left to undefined behaviour.
std::int64_t truncate_to_int64(double value) {
  if (!(value >= -9223372036854775808.0 && value < 9223372036854775808.0)) return INT64_MIN;
  return static_cast<std::int64_t>(value);
}

std::int32_t truncate_to_int32(double value) {
  if (!(value > -2147483649.0 && value < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(value);
}

std::uint64_t extract_bits(const std::uint8_t* bytes, std::int64_t size, std::uint32_t offset, std::uint32_t count) {
  std::uint64_t result = 0;
  for (std::uint32_t i = 0; i < count && i < 64; ++i) {
    std::uint64_t bit = std::uint64_t{offset} + i;
    if (bit >= static_cast<std::uint64_t>(size) * 8) break;
    if (bytes[bit / 8] & (1u << (bit % 8))) result |= std::uint64_t{1} << i;
  }
  return result;
}

bool is_scalar_code(std::int32_t type) { return type >= 0 && type < kTypeVoid; }

// Out-of-range doubles become infinities, as the hardware conversion gives them.
float float_from_double(double value) {
  if (value > 3.4028234663852886e38) return HUGE_VALF;
  if (value < -3.4028234663852886e38) return -HUGE_VALF;
  return static_cast<float>(value);
}

}  // namespace

std::int64_t scalar_size(std::int32_t type) {
  return type >= 0 && type < kTypeCodeCount ? kScalarSizes[type] : 0;
}

std::unique_ptr<element> make_element(std::int32_t type, std::int32_t lang_code) {
  auto e = std::make_unique<element>();
  e->type = type;
  e->lang_code = lang_code;
  return e;
}

std::unique_ptr<element> make_error_element(std::int32_t error_code, std::int32_t lang_code) {
  auto e = make_element(0, lang_code);
  e->error_code = error_code;
  return e;
}

std::unique_ptr<element> clone_element(const element& e) {
  auto copy = std::make_unique<element>();
  if (e.next) copy->next = clone_element(*e.next);
  copy->type = e.type;
  copy->address = e.address;
  copy->size = e.size;
  copy->bit_offset = e.bit_offset;
  copy->bit_count = e.bit_count;
  copy->lang_code = e.lang_code;
  copy->flags = e.flags;
  copy->address_kind = e.address_kind;
  if (e.array) copy->array = std::make_unique<array_info>(*e.array);
  if (e.structure) copy->structure = std::make_unique<structure_info>(*e.structure);
  copy->value = e.value;
  copy->error_code = e.error_code;
  if (e.is_constant()) {
    if (e.flags & kElementHeapValue) {
      copy->heap_value = std::make_unique<std::uint8_t[]>(static_cast<std::size_t>(e.size));
      std::memcpy(copy->heap_value.get(), e.heap_value.get(), static_cast<std::size_t>(e.size));
      copy->address = reinterpret_cast<Address>(copy->heap_value.get());
    } else {
      copy->address = reinterpret_cast<Address>(copy->value.data());
    }
  }
  return copy;
}

void set_constant(element& e, const void* bytes, std::int64_t size, std::int32_t type) {
  e.heap_value.reset();
  e.flags &= static_cast<std::uint8_t>(~kElementHeapValue);
  if (size < 0) size = 0;
  if (size > kInlineValueSize) {
    e.heap_value = std::make_unique<std::uint8_t[]>(static_cast<std::size_t>(size));
    if (bytes) std::memcpy(e.heap_value.get(), bytes, static_cast<std::size_t>(size));
    e.flags |= kElementHeapValue;
    e.address = reinterpret_cast<Address>(e.heap_value.get());
  } else {
    e.value.fill(0);
    if (bytes && size > 0) std::memcpy(e.value.data(), bytes, static_cast<std::size_t>(size));
    e.address = reinterpret_cast<Address>(e.value.data());
  }
  e.size = size;
  e.flags |= kElementConstant;
  e.type = type;
}

void set_real_constant(element& e, double value, std::int32_t type) {
  std::uint8_t bytes[10] = {};
  if (type == kTypeReal4) {
    float f = float_from_double(value);
    std::memcpy(bytes, &f, 4);
    set_constant(e, bytes, 4, type);
  } else {
    std::memcpy(bytes, &value, 8);
    set_constant(e, bytes, type == kTypeReal10 ? 10 : 8, type == kTypeReal10 ? kTypeReal10 : kTypeReal8);
  }
}

void set_complex_constant(element& e, double real, double imaginary, std::int32_t type) {
  std::uint8_t bytes[20] = {};
  if (type == kTypeComplex8) {
    float parts[2] = {float_from_double(real), float_from_double(imaginary)};
    std::memcpy(bytes, parts, 8);
    set_constant(e, bytes, 8, type);
  } else if (type == kTypeComplex20) {
    std::memcpy(bytes, &real, 8);
    std::memcpy(bytes + 10, &imaginary, 8);
    set_constant(e, bytes, 20, type);
  } else {
    std::memcpy(bytes, &real, 8);
    std::memcpy(bytes + 8, &imaginary, 8);
    set_constant(e, bytes, 16, kTypeComplex16);
  }
}

void set_integer_constant(element& e, std::int64_t value, std::int32_t type) {
  std::int64_t size = scalar_size(type);
  if (size <= 0 || size > 8) size = 8;
  set_constant(e, &value, size, type);  // little-endian: the low bytes come first
}

const std::uint8_t* constant_bytes(const element& e) {
  if (!e.is_constant()) return nullptr;
  return (e.flags & kElementHeapValue) ? e.heap_value.get() : e.value.data();
}

std::uint8_t* constant_bytes(element& e) {
  if (!e.is_constant()) return nullptr;
  return (e.flags & kElementHeapValue) ? e.heap_value.get() : e.value.data();
}

bool read_value(const element& e, TargetMemory& memory, void* destination) {
  if (e.size <= 0) return true;
  if (e.is_constant()) {
    const std::uint8_t* held = constant_bytes(e);
    if (!held) return false;
    std::memcpy(destination, held, static_cast<std::size_t>(e.size));
    return true;
  }
  return memory.read(e.address, destination, static_cast<std::size_t>(e.size)) == static_cast<std::size_t>(e.size);
}

std::int32_t unreadable_address_error(Address address, TargetMemory& memory) {
  if (memory.is_readable(address)) return 0;
  return address == 0 ? kErrorNullPointer : kErrorIllegalPointer;
}

std::int32_t unreadable_error(const element& e, TargetMemory& memory) {
  if (e.is_constant()) return 0;
  return unreadable_address_error(e.address, memory);
}

std::int32_t value_int32(const element& e, TargetMemory& memory) {
  if (e.type == kTypeArray) return static_cast<std::int32_t>(e.address & 0xFFFFFFFFu);
  if (e.type == kTypePointer8) {
    VANTOR_ASSERT(false, "type == pointer_8", "element");
    return 0;
  }
  if (!is_scalar_code(e.type) || is_complex_type(e.type)) return 0;
  ScalarBytes v = fetch_scalar(e, memory, "size<20");
  const std::uint8_t* b = v.bytes;
  std::int32_t result = 0;
  switch (e.type) {
    case kTypeLogical1:
    case kTypeUnsigned1: result = load<std::uint8_t>(b); break;
    case kTypeLogical2:
    case kTypeUnsigned2: result = load<std::uint16_t>(b); break;
    case kTypeLogical4:
    case kTypeInteger4:
    case kTypeInteger8:
    case kTypeUnsigned4:
    case kTypeUnsigned8:
    case kTypeEnum: result = static_cast<std::int32_t>(load<std::uint32_t>(b)); break;
    case kTypeInteger1: result = load<std::int8_t>(b); break;
    case kTypeInteger2: result = load<std::int16_t>(b); break;
    case kTypeReal4: result = truncate_to_int32(load<float>(b)); break;
    case kTypeReal8:
    case kTypeReal10: result = truncate_to_int32(load<double>(b)); break;
    default: return 0;
  }
  if (e.bit_count != 0) {
    std::int64_t field_size = std::min<std::int64_t>(std::max<std::int64_t>(e.size, 0), kInlineValueSize);
    std::uint32_t field = static_cast<std::uint32_t>(extract_bits(b, field_size, e.bit_offset, e.bit_count));
    bool is_signed = e.type == kTypeInteger1 || e.type == kTypeInteger2 || e.type == kTypeInteger4;
    if (is_signed && e.bit_count < 32 && (field & (1u << (e.bit_count - 1))))
      field |= ~((1u << e.bit_count) - 1);
    result = static_cast<std::int32_t>(field);
  }
  return result;
}

std::int64_t value_int64(const element& e, TargetMemory& memory) {
  if (e.type == kTypeArray) return static_cast<std::int64_t>(e.address);
  if (e.type == kTypeInteger8 || e.type == kTypeUnsigned8 || e.type == kTypePointer8 || e.type == kTypeLogical8 ||
      e.type == kTypeReference) {
    if (e.bit_count == 0 || e.type == kTypePointer8 || e.type == kTypeReference) {
      ScalarBytes v = fetch_scalar(e, memory, "size < 20");
      return load<std::int64_t>(v.bytes);
    }
    ScalarBytes v = fetch_scalar(e, memory, "size < 20");
    return static_cast<std::int64_t>(extract_bits(v.bytes, 8, e.bit_offset, e.bit_count));
  }
  // Logicals count as their truth word, like the integers of their width.
  if (is_integer_type(e.type) || is_logical_type(e.type)) return value_int32(e, memory);
  if (!is_real_type(e.type)) return 0;
  ScalarBytes v = fetch_scalar(e, memory, "size < 20");
  if (e.type == kTypeReal4) return truncate_to_int64(load<float>(v.bytes));
  return truncate_to_int64(load<double>(v.bytes));
}

double value_double(const element& e, TargetMemory& memory) {
  if (e.type == kTypeUnsigned8) return static_cast<double>(static_cast<std::uint64_t>(value_int64(e, memory)));
  if (is_unsigned_type(e.type)) return static_cast<double>(static_cast<std::uint32_t>(value_int32(e, memory)));
  if (is_integer_type(e.type) || is_logical_type(e.type) || e.type == kTypeLogical8)
    return static_cast<double>(value_int64(e, memory));
  double real = 0, imaginary = 0;
  if (is_real_type(e.type) || is_complex_type(e.type)) value_complex(e, memory, real, imaginary);
  return real;
}

void value_complex(const element& e, TargetMemory& memory, double& real, double& imaginary) {
  real = imaginary = 0;
  if (!is_real_type(e.type) && !is_complex_type(e.type)) {
    real = value_double(e, memory);
    return;
  }
  ScalarBytes v = fetch_scalar(e, memory, nullptr);
  switch (e.type) {
    case kTypeReal4: real = load<float>(v.bytes); break;
    case kTypeReal8:
    case kTypeReal10: real = load<double>(v.bytes); break;
    case kTypeComplex8:
      real = load<float>(v.bytes);
      imaginary = load<float>(v.bytes + 4);
      break;
    case kTypeComplex16:
      real = load<double>(v.bytes);
      imaginary = load<double>(v.bytes + 8);
      break;
    case kTypeComplex20:  // each part is a double in the first 8 of its 10 bytes
      real = load<double>(v.bytes);
      imaginary = load<double>(v.bytes + 10);
      break;
    default: break;
  }
}

bool same_type(const element& a, const element& b) {
  if (a.type == kTypePointer8 && b.type == kTypePointer8) {
    if (!a.next || !b.next) return !a.next && !b.next;
    if (a.next->type == kTypePointer8 || a.next->type == b.next->type) {
      if (a.next->type == kTypePointer8) return same_type(*a.next, *b.next);
      // Pointers to the same non-numeric type (structures, void, characters) match too.
      if (a.next->type == kTypeStructure)
        return a.next->structure && b.next->structure && a.next->structure->type == b.next->structure->type;
      return true;
    }
    return false;
  }
  return a.type == b.type && is_numeric_type(a.type);
}

bool is_undefined(const element& e, TargetMemory& memory) {
  if (e.size <= 0) return false;
  if (e.is_constant()) {
    const std::uint8_t* held = constant_bytes(e);
    if (!held) return false;
    for (std::int64_t i = 0; i < e.size; ++i)
      if (held[i] != 0x80) return false;
    return true;
  }
  // Read in blocks rather than byte by byte: every read is a round trip to the process.
  std::uint8_t block[256];
  for (std::int64_t done = 0; done < e.size;) {
    std::size_t n = static_cast<std::size_t>(std::min<std::int64_t>(e.size - done, sizeof block));
    if (memory.read(e.address + static_cast<Address>(done), block, n) != n) return false;
    for (std::size_t i = 0; i < n; ++i)
      if (block[i] != 0x80) return false;
    done += static_cast<std::int64_t>(n);
  }
  return true;
}

std::int32_t real_range_error(double value, std::int32_t type) {
  double magnitude = std::fabs(value);
  if (type == kTypeReal4 || type == kTypeComplex8) {
    if (magnitude > 3.4028234663852886e38) return kErrorOverflow;
    if (magnitude != 0 && magnitude < 1.1754943508222875e-38) return kErrorUnderflow;
  } else if (type == kTypeReal8 || type == kTypeComplex16) {
    if (magnitude > 1.7976931348623157e308) return kErrorOverflow;
  }
  return 0;
}

std::int32_t complex_range_error(double real, double imaginary, std::int32_t type) {
  if (std::int32_t error = real_range_error(real, type)) return error;
  return real_range_error(imaginary, type);
}

}  // namespace vantor
