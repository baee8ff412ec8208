// The one typed value of the debugger: a variable found by name, a constant, a component,
// an array section, a pointee, or the result of an expression. An element says what the
// value is (type code and language), where it lives (an address in the debugged process,
// or bytes held by the element itself) and whether making it failed (an error code from
// the table of error_codes.h). Values are fetched anew from the process at each read, so
// an element means something only while the process is stopped in the scope it came from.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "debuginfo/variable_record.h"
#include "process/target_memory.h"

namespace vantor {

// Element type codes.
enum ElementType : std::int32_t {
  kTypeLogical1 = 0,
  kTypeLogical2 = 1,
  kTypeLogical4 = 2,
  kTypeLogical8 = 3,
  kTypeInteger1 = 4,  // C char
  kTypeInteger2 = 5,
  kTypeInteger4 = 6,
  kTypeInteger8 = 7,
  kTypeUnsigned1 = 8,
  kTypeUnsigned2 = 9,
  kTypeUnsigned4 = 10,
  kTypeUnsigned8 = 11,
  kTypeEnum = 12,
  kTypeReal4 = 13,
  kTypeReal8 = 14,
  kTypeReal10 = 15,
  kTypeComplex8 = 16,
  kTypeComplex16 = 17,
  kTypeComplex20 = 18,
  kTypeVoid = 19,
  kTypePointer8 = 20,
  kTypeReference = 21,
  kTypeStructure = 22,
  kTypeArray = 23,
  kTypeCharacter = 24,
  kTypeFunction = 25,
  kTypeCodeCount = 26,
};

// Language codes: 1 is C; 0, 3 and 4 are Fortran dialects (3 carries the compiler's name
// decoration in derived-type names, 4 writes an assumed-size upper bound as 0x80000000).
constexpr std::int32_t kLangFortran = 0;
constexpr std::int32_t kLangC = 1;
constexpr std::int32_t kLangFortranDecorated = 3;
constexpr std::int32_t kLangFortran95 = 4;
constexpr bool is_fortran_language(std::int32_t lang) { return lang == 0 || lang == 3 || lang == 4; }

// Flag bits.
constexpr std::uint8_t kElementConstant = 1;    // the value is held by the element
constexpr std::uint8_t kElementTypedef = 2;     // a type name, not an object
constexpr std::uint8_t kElementHeapValue = 4;   // the held value lives in heap_value
constexpr std::uint8_t kElementCanMutate = 8;

// address_kind: how the address is qualified.
constexpr std::uint8_t kAddressPlain = 0;
constexpr std::uint8_t kAddressSection = 1;  // an array section: the address of its first element

constexpr std::int64_t kInlineValueSize = 20;

struct array_info {
  std::array<std::int64_t, kMaxRank> first_element{};  // lower bound
  std::array<std::int64_t, kMaxRank> last_element{};   // upper bound; below first: extent unknown
  std::array<std::int64_t, kMaxRank> distance{};       // bytes between neighbours of the dimension
  std::array<std::int64_t, kMaxRank> indexes{};        // subscripts given so far
  std::int8_t indexes_given = 0;
  std::int8_t num_dims = 0;
  bool enforce_bounds = false;
  // Subscripts given as lower:upper pairs, one bit per dimension. Their dimension has
  // already been narrowed to the pair; the others are single subscripts.
  std::uint8_t section_dims = 0;
};

struct structure_info {
  const DerivedTypeRecord* type = nullptr;
  bool give_all_components = false;
};

struct element {
  element() = default;
  element(const element&) = delete;
  element& operator=(const element&) = delete;

  std::unique_ptr<element> next;  // pointee, referee or array element type
  std::int32_t type = 0;
  Address address = 0;  // for a constant: where its bytes are held in the debugger
  std::int64_t size = 0;
  std::uint32_t bit_offset = 0;
  std::uint32_t bit_count = 0;  // 0: not a bit field
  std::int32_t lang_code = kLangC;
  std::uint8_t flags = 0;
  std::uint8_t address_kind = 0;  // two bits
  std::unique_ptr<array_info> array;
  std::unique_ptr<std::uint8_t[]> heap_value;  // a held value above 20 bytes
  std::unique_ptr<structure_info> structure;
  std::array<std::uint8_t, kInlineValueSize> value{};
  std::int32_t error_code = 0;

  bool is_constant() const { return (flags & kElementConstant) != 0; }
  bool is_typedef() const { return (flags & kElementTypedef) != 0; }
};

// ---- type classes ----
constexpr bool is_logical_type(std::int32_t t) { return t >= kTypeLogical1 && t <= kTypeLogical4; }
constexpr bool is_integer_type(std::int32_t t) { return t >= kTypeInteger1 && t <= kTypeEnum; }
constexpr bool is_real_type(std::int32_t t) { return t >= kTypeReal4 && t <= kTypeReal10; }
constexpr bool is_complex_type(std::int32_t t) { return t >= kTypeComplex8 && t <= kTypeComplex20; }
constexpr bool is_numeric_type(std::int32_t t) { return is_integer_type(t) || is_real_type(t) || is_complex_type(t); }
constexpr bool is_unsigned_type(std::int32_t t) { return t >= kTypeUnsigned1 && t <= kTypeUnsigned8; }
// The size in bytes of a scalar type code; 0 for the others.
std::int64_t scalar_size(std::int32_t type);

// ---- making and copying ----
std::unique_ptr<element> make_element(std::int32_t type = 0, std::int32_t lang_code = kLangC);
std::unique_ptr<element> make_error_element(std::int32_t error_code, std::int32_t lang_code = kLangC);
// A deep copy: descriptors and the next chain included; a held value is copied and the
// copy's address points at its own bytes.
std::unique_ptr<element> clone_element(const element& e);

// ---- held values ----
// Replaces the held value: above 20 bytes a heap block, else the inline bytes.
void set_constant(element& e, const void* bytes, std::int64_t size, std::int32_t type);
// REAL*4/8/10 (4, 8 or 10 bytes; a REAL*10 holds the double in its first 8 bytes).
void set_real_constant(element& e, double value, std::int32_t type);
void set_complex_constant(element& e, double real, double imaginary, std::int32_t type);
void set_integer_constant(element& e, std::int64_t value, std::int32_t type);
// The bytes of a constant's value (size() bytes); null for a non-constant.
const std::uint8_t* constant_bytes(const element& e);
std::uint8_t* constant_bytes(element& e);

// ---- reading ----
// Copies the element's `size` bytes (held or from the process); false when the process
// could not give them all.
bool read_value(const element& e, TargetMemory& memory, void* destination);
// 0 when the element's address can be read, else the error code of the refusal:
// 1 for a null address, 2 for any other.
std::int32_t unreadable_error(const element& e, TargetMemory& memory);
std::int32_t unreadable_address_error(Address address, TargetMemory& memory);

std::int32_t value_int32(const element& e, TargetMemory& memory);
std::int64_t value_int64(const element& e, TargetMemory& memory);
double value_double(const element& e, TargetMemory& memory);
// Real and imaginary parts of a complex value; other numbers give (value, 0).
void value_complex(const element& e, TargetMemory& memory, double& real, double& imaginary);

// Equal numeric codes, or two pointers to the same type.
bool same_type(const element& a, const element& b);
// Every byte of the value is 0x80: the pattern of a variable never assigned.
bool is_undefined(const element& e, TargetMemory& memory);

// 0, or 15/16 when a value is too large/too small in magnitude for the REAL type.
std::int32_t real_range_error(double value, std::int32_t type);
// The part-by-part check of a COMPLEX value (the REAL code of its parts is implied).
std::int32_t complex_range_error(double real, double imaginary, std::int32_t type);

}  // namespace vantor
