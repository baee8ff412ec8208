#include "values/eval_operations.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <vector>

#include "common/messages.h"
#include "values/error_codes.h"
#include "values/eval_tokens.h"

namespace vantor {

namespace {

std::unique_ptr<element> failure(std::int32_t code, std::int32_t language) { return make_error_element(code, language); }

bool is_pointer(const element& e) { return e.type == kTypePointer8; }
// Logical values take part in comparisons and logic like the integers of their width.
bool is_integer_like(std::int32_t t) { return is_integer_type(t) || is_logical_type(t) || t == kTypeLogical8; }

std::int64_t integer_size(std::int32_t type) { return type == kTypeEnum ? 4 : scalar_size(type); }

// The value of an integer: zero-extended for the unsigned types, sign-extended otherwise.
std::int64_t integer_of(const element& e, TargetMemory& memory) {
  switch (e.type) {
    case kTypeUnsigned1:
    case kTypeUnsigned2:
    case kTypeUnsigned4: return static_cast<std::uint32_t>(value_int32(e, memory));
    default: return value_int64(e, memory);
  }
}

std::int32_t integer_type_of_size(std::int64_t size, bool is_unsigned) {
  switch (size) {
    case 1: return is_unsigned ? kTypeUnsigned1 : kTypeInteger1;
    case 2: return is_unsigned ? kTypeUnsigned2 : kTypeInteger2;
    case 8: return is_unsigned ? kTypeUnsigned8 : kTypeInteger8;
    default: return is_unsigned ? kTypeUnsigned4 : kTypeInteger4;
  }
}

std::int32_t integer_result_type(std::int32_t a, std::int32_t b, std::int32_t language) {
  std::int64_t sa = integer_size(a), sb = integer_size(b);
  std::int64_t size = std::max(sa, sb);
  if (language == kLangC) size = std::max<std::int64_t>(size, 4);
  bool is_unsigned = (is_unsigned_type(a) && sa == size) || (is_unsigned_type(b) && sb == size);
  return integer_type_of_size(size, is_unsigned);
}

int part_width(std::int32_t type) {
  switch (type) {
    case kTypeReal8:
    case kTypeComplex16: return 8;
    case kTypeReal10:
    case kTypeComplex20: return 10;
    default: return 4;
  }
}

std::int32_t numeric_result_type(std::int32_t a, std::int32_t b, std::int32_t language) {
  if (is_complex_type(a) || is_complex_type(b)) {
    int width = std::max(part_width(a), part_width(b));
    return width == 10 ? kTypeComplex20 : width == 8 ? kTypeComplex16 : kTypeComplex8;
  }
  if (is_real_type(a) || is_real_type(b)) {
    std::int32_t ra = is_real_type(a) ? a : kTypeReal4, rb = is_real_type(b) ? b : kTypeReal4;
    return std::max(ra, rb);
  }
  return integer_result_type(a, b, language);
}

std::unique_ptr<element> integer_constant(std::int64_t value, std::int32_t type, std::int32_t language) {
  auto e = make_element(0, language);
  set_integer_constant(*e, value, type);
  return e;
}

std::unique_ptr<element> real_result(double value, std::int32_t type, std::int32_t language) {
  if (std::int32_t error = real_range_error(value, type)) return failure(error, language);
  auto e = make_element(0, language);
  set_real_constant(*e, value, type);
  return e;
}

std::unique_ptr<element> complex_result(std::complex<double> value, std::int32_t type, std::int32_t language) {
  if (std::int32_t error = complex_range_error(value.real(), value.imag(), type)) return failure(error, language);
  auto e = make_element(0, language);
  set_complex_constant(*e, value.real(), value.imag(), type);
  return e;
}

std::complex<double> complex_of(const element& e, TargetMemory& memory) {
  double re = 0, im = 0;
  value_complex(e, memory, re, im);
  return {re, im};
}

std::uint64_t integer_power(std::int64_t base, std::int64_t exponent, bool& division_by_zero) {
  if (exponent < 0) {
    if (base == 0) division_by_zero = true;
    if (base == 1) return 1;
    if (base == -1) return (exponent & 1) ? static_cast<std::uint64_t>(-1) : 1;
    return 0;
  }
  std::uint64_t result = 1, factor = static_cast<std::uint64_t>(base);
  for (std::uint64_t e = static_cast<std::uint64_t>(exponent); e; e >>= 1) {
    if (e & 1) result *= factor;
    factor *= factor;
  }
  return result;
}

std::unique_ptr<element> integer_arithmetic(std::int32_t code, const element& left, const element& right,
                                            std::int32_t type, const OperationContext& c) {
  std::int64_t a = integer_of(left, c.memory), b = integer_of(right, c.memory);
  std::uint64_t ua = static_cast<std::uint64_t>(a), ub = static_cast<std::uint64_t>(b);
  bool is_unsigned = is_unsigned_type(type);
  std::uint64_t result = 0;
  switch (code) {
    case kOpPlus: result = ua + ub; break;
    case kOpMinus: result = ua - ub; break;
    case kOpTimes: result = ua * ub; break;
    case kOpDivide:
    case kOpRemainder: {
      if (b == 0) return failure(kErrorDivisionByZero, c.language);
      bool divide = code == kOpDivide;
      if (is_unsigned && integer_size(type) == 8)
        result = divide ? ua / ub : ua % ub;
      else if (b == -1)  // INT64_MIN / -1 wraps instead of trapping
        result = divide ? 0 - ua : 0;
      else
        result = static_cast<std::uint64_t>(divide ? a / b : a % b);
      break;
    }
    case kOpPower: {
      bool division_by_zero = false;
      result = integer_power(a, b, division_by_zero);
      if (division_by_zero) return failure(kErrorDivisionByZero, c.language);
      break;
    }
    case kOpBitAnd: result = ua & ub; break;
    case kOpBitOr: result = ua | ub; break;
    case kOpBitXor: result = ua ^ ub; break;
    case kOpShiftLeft: result = (b < 0 || b > 63) ? 0 : ua << b; break;
    case kOpShiftRight:
      if (b < 0 || b > 63)
        result = (!is_unsigned && a < 0) ? ~std::uint64_t{0} : 0;
      else
        result = is_unsigned ? ua >> b : static_cast<std::uint64_t>(a >> b);
      break;
    default: return failure(kErrorInternal, c.language);
  }
  return integer_constant(static_cast<std::int64_t>(result), type, c.language);
}

std::unique_ptr<element> real_arithmetic(std::int32_t code, const element& left, const element& right,
                                         std::int32_t type, const OperationContext& c) {
  double a = value_double(left, c.memory), b = value_double(right, c.memory);
  switch (code) {
    case kOpPlus: return real_result(a + b, type, c.language);
    case kOpMinus: return real_result(a - b, type, c.language);
    case kOpTimes: return real_result(a * b, type, c.language);
    case kOpDivide:
      if (b == 0) return failure(kErrorDivisionByZero, c.language);
      return real_result(a / b, type, c.language);
    case kOpPower:
      if (a == 0 && b < 0) return failure(kErrorDivisionByZero, c.language);
      return real_result(std::pow(a, b), type, c.language);
    default: return failure(kErrorIntegersRequired, c.language);
  }
}

std::unique_ptr<element> complex_arithmetic(std::int32_t code, const element& left, const element& right,
                                            std::int32_t type, const OperationContext& c) {
  std::complex<double> x = complex_of(left, c.memory), y = complex_of(right, c.memory);
  double a = x.real(), b = x.imag(), cr = y.real(), d = y.imag();
  switch (code) {
    case kOpPlus: return complex_result({a + cr, b + d}, type, c.language);
    case kOpMinus: return complex_result({a - cr, b - d}, type, c.language);
    case kOpTimes: return complex_result({a * cr - b * d, a * d + b * cr}, type, c.language);
    case kOpDivide: {
      if (cr == 0 && d == 0) return failure(kErrorDivisionByZero, c.language);
      double denominator = cr * cr + d * d;
      return complex_result({(a * cr + b * d) / denominator, (b * cr - a * d) / denominator}, type, c.language);
    }
    case kOpPower:
      if (x == 0.0 && (y.real() < 0 || y.imag() != 0)) return failure(kErrorDivisionByZero, c.language);
      if (y == 0.0) return complex_result({1, 0}, type, c.language);
      if (x == 0.0) return complex_result({0, 0}, type, c.language);
      return complex_result(std::pow(x, y), type, c.language);
    default: return failure(kErrorIntegersRequired, c.language);
  }
}

std::int64_t pointee_size(const element& pointer) {
  return pointer.next && pointer.next->size > 0 ? pointer.next->size : 1;
}

std::unique_ptr<element> pointer_constant(const element& model, Address address, std::int32_t language) {
  auto e = make_element(0, language);
  if (model.next) e->next = clone_element(*model.next);
  set_constant(*e, &address, 8, kTypePointer8);
  return e;
}

bool points_to_void(const element& pointer) { return !pointer.next || pointer.next->type == kTypeVoid; }

std::unique_ptr<element> pointer_arithmetic(std::int32_t code, const element& left, const element& right,
                                            const OperationContext& c) {
  bool lp = is_pointer(left), rp = is_pointer(right);
  if (code == kOpPlus) {
    if (lp && rp) return failure(kErrorAddPointers, c.language);
    const element& pointer = lp ? left : right;
    const element& offset = lp ? right : left;
    if (!is_integer_type(offset.type)) return failure(kErrorAddNonInteger, c.language);
    if (points_to_void(pointer)) return failure(kErrorVoidPointerArithmetic, c.language);
    std::uint64_t moved = static_cast<std::uint64_t>(value_int64(pointer, c.memory)) +
                          static_cast<std::uint64_t>(integer_of(offset, c.memory)) * static_cast<std::uint64_t>(pointee_size(pointer));
    return pointer_constant(pointer, moved, c.language);
  }
  if (code == kOpMinus && lp) {
    if (rp) {
      if (!same_type(left, right)) return failure(kErrorPointerTypes, c.language);
      if (points_to_void(left)) return failure(kErrorVoidPointerArithmetic, c.language);
      std::int64_t difference = static_cast<std::int64_t>(static_cast<std::uint64_t>(value_int64(left, c.memory)) -
                                                          static_cast<std::uint64_t>(value_int64(right, c.memory)));
      return integer_constant(difference / pointee_size(left), kTypeInteger8, c.language);
    }
    if (!is_integer_type(right.type)) return failure(kErrorSubtractNonInteger, c.language);
    if (points_to_void(left)) return failure(kErrorVoidPointerArithmetic, c.language);
    std::uint64_t moved = static_cast<std::uint64_t>(value_int64(left, c.memory)) -
                          static_cast<std::uint64_t>(integer_of(right, c.memory)) * static_cast<std::uint64_t>(pointee_size(left));
    return pointer_constant(left, moved, c.language);
  }
  return failure(kErrorNoArithmetic, c.language);
}

// ---- comparisons ----

bool is_comparison(std::int32_t code) {
  return code == kOpEqual || code == kOpNotEqual || code == kOpLess || code == kOpGreater || code == kOpLessEqual ||
         code == kOpGreaterEqual;
}

template <typename T>
bool compare(std::int32_t code, T a, T b) {
  switch (code) {
    case kOpEqual: return a == b;
    case kOpNotEqual: return a != b;
    case kOpLess: return a < b;
    case kOpGreater: return a > b;
    case kOpLessEqual: return a <= b;
    default: return a >= b;
  }
}

std::string character_of(const element& e, TargetMemory& memory) {
  std::int64_t size = std::clamp<std::int64_t>(e.size, 0, 1 << 20);
  std::string text(static_cast<std::size_t>(size), ' ');
  if (e.is_constant()) {
    if (const std::uint8_t* held = constant_bytes(e)) std::memcpy(text.data(), held, text.size());
  } else if (memory.read(e.address, text.data(), text.size()) != text.size()) {
    text.assign(text.size(), ' ');
  }
  return text;
}

// CHARACTER values compare as Fortran does: the shorter one padded with blanks.
int compare_characters(std::string a, std::string b) {
  std::size_t n = std::max(a.size(), b.size());
  a.resize(n, ' ');
  b.resize(n, ' ');
  return a.compare(b);
}

std::unique_ptr<element> comparison(std::int32_t code, const element& left, const element& right,
                                    const OperationContext& c) {
  std::int32_t a = left.type, b = right.type;
  if (a == kTypeCharacter || b == kTypeCharacter) {
    if (a != b) return failure(kErrorTypesIncompatible, c.language);
    return truth_value(compare(code, compare_characters(character_of(left, c.memory), character_of(right, c.memory)), 0),
                       c.language);
  }
  if (is_pointer(left) || is_pointer(right)) {
    if (is_pointer(left) && is_pointer(right) && !same_type(left, right) && !points_to_void(left) &&
        !points_to_void(right))
      return failure(kErrorPointerTypes, c.language);
    const element& other = is_pointer(left) ? right : left;
    if (!is_pointer(other) && !is_integer_type(other.type)) return failure(kErrorTypesIncompatible, c.language);
    auto address = [&](const element& e) {
      return is_pointer(e) ? static_cast<std::uint64_t>(value_int64(e, c.memory))
                           : static_cast<std::uint64_t>(integer_of(e, c.memory));
    };
    return truth_value(compare(code, address(left), address(right)), c.language);
  }
  bool na = is_numeric_type(a) || is_integer_like(a), nb = is_numeric_type(b) || is_integer_like(b);
  if (!na || !nb) return failure(kErrorNoArithmetic, c.language);
  if (is_complex_type(a) || is_complex_type(b)) {
    if (code != kOpEqual && code != kOpNotEqual) return failure(kErrorNoArithmetic, c.language);
    bool equal = complex_of(left, c.memory) == complex_of(right, c.memory);
    return truth_value(code == kOpEqual ? equal : !equal, c.language);
  }
  if (is_real_type(a) || is_real_type(b))
    return truth_value(compare(code, value_double(left, c.memory), value_double(right, c.memory)), c.language);
  std::int32_t type = integer_result_type(is_integer_type(a) ? a : kTypeInteger8, is_integer_type(b) ? b : kTypeInteger8,
                                          c.language);
  std::int64_t x = integer_of(left, c.memory), y = integer_of(right, c.memory);
  if (is_unsigned_type(type) && integer_size(type) == 8)
    return truth_value(compare(code, static_cast<std::uint64_t>(x), static_cast<std::uint64_t>(y)), c.language);
  return truth_value(compare(code, x, y), c.language);
}


bool needs_integers(std::int32_t code) {
  return code == kOpRemainder || code == kOpBitAnd || code == kOpBitOr || code == kOpBitXor ||
         code == kOpShiftLeft || code == kOpShiftRight;
}

std::int64_t character_length(const element& e, TargetMemory& memory) {
  std::string text = character_of(e, memory);
  std::size_t last = text.find_last_not_of(' ');
  return last == std::string::npos ? 0 : static_cast<std::int64_t>(last + 1);
}

// Bytes before the first zero byte, reading until a zero or an unreadable byte.
std::int64_t c_string_length(Address address, TargetMemory& memory) {
  constexpr std::int64_t kLimit = 1 << 24;  // a string of garbage must end somewhere
  std::uint8_t block[64];
  std::int64_t length = 0;
  while (length < kLimit) {
    Address at = address + static_cast<Address>(length);
    std::size_t got = memory.read(at, block, sizeof block) == sizeof block ? sizeof block : 0;
    if (got == 0)
      while (got < sizeof block && memory.read(at + got, block + got, 1) == 1) ++got;
    for (std::size_t i = 0; i < got; ++i)
      if (block[i] == 0) return length + static_cast<std::int64_t>(i);
    length += static_cast<std::int64_t>(got);
    if (got < sizeof block) break;
  }
  return length;
}

}  // namespace

std::unique_ptr<element> truth_value(bool value, std::int32_t language) {
  auto e = make_element(0, language);
  set_integer_constant(*e, value ? 1 : 0, is_fortran_language(language) ? kTypeLogical4 : kTypeInteger4);
  return e;
}

bool truth_of(const element& e, TargetMemory& memory, bool& ok) {
  ok = true;
  if (is_integer_like(e.type) || e.type == kTypePointer8) return value_int64(e, memory) != 0;
  if (is_real_type(e.type) || is_complex_type(e.type)) return complex_of(e, memory) != 0.0;
  ok = false;
  return false;
}

std::unique_ptr<element> object_at(const element& e, Address address) {
  auto object = clone_element(e);
  object->flags &= static_cast<std::uint8_t>(~(kElementConstant | kElementHeapValue));
  object->heap_value.reset();
  object->value.fill(0);
  object->address = address;
  return object;
}

std::unique_ptr<element> dereference(const element& pointer, TargetMemory& memory) {
  if (!is_pointer(pointer)) return failure(kErrorPointerRequired, pointer.lang_code);
  if (!pointer.next) return failure(kErrorInternal, pointer.lang_code);
  if (pointer.next->type == kTypeVoid) return failure(kErrorVoidDereference, pointer.lang_code);
  Address target = static_cast<Address>(value_int64(pointer, memory));
  if (std::int32_t refusal = unreadable_address_error(target, memory)) return failure(refusal, pointer.lang_code);
  return object_at(*pointer.next, target);
}

std::unique_ptr<element> apply_unary(std::int32_t code, const element& operand, const OperationContext& c) {
  std::int32_t t = operand.type;
  switch (code) {
    case kOpNegate:
      if (is_integer_type(t)) {
        std::int32_t type = integer_result_type(t, t, c.language);
        return integer_constant(static_cast<std::int64_t>(0 - static_cast<std::uint64_t>(integer_of(operand, c.memory))),
                                type, c.language);
      }
      if (is_real_type(t)) return real_result(-value_double(operand, c.memory), t, c.language);
      if (is_complex_type(t)) return complex_result(-complex_of(operand, c.memory), t, c.language);
      return failure(kErrorNoArithmetic, c.language);
    case kOpBitNot:
      if (is_integer_type(t))
        return integer_constant(~integer_of(operand, c.memory), integer_result_type(t, t, c.language), c.language);
      return failure(is_numeric_type(t) ? kErrorIntegersRequired : kErrorNoArithmetic, c.language);
    case kOpNot: {
      bool ok = false;
      bool truth = truth_of(operand, c.memory, ok);
      if (!ok) return failure(kErrorNoArithmetic, c.language);
      return truth_value(!truth, c.language);
    }
    case kOpDereference: return dereference(operand, c.memory);
    case kOpAddressOf: {
      if (operand.is_typedef()) return failure(kErrorNoObject, c.language);
      if (operand.is_constant() || operand.bit_count != 0) return failure(kErrorNoAddress, c.language);
      auto pointer = make_element(0, c.language);
      pointer->next = object_at(operand, operand.address);
      Address address = operand.address;
      set_constant(*pointer, &address, 8, kTypePointer8);
      return pointer;
    }
    default: return failure(kErrorInternal, c.language);
  }
}

std::unique_ptr<element> apply_binary(std::int32_t code, const element& left, const element& right,
                                      const OperationContext& c) {
  if (is_comparison(code)) return comparison(code, left, right, c);
  if (code == kOpAnd || code == kOpOr) {
    bool ok_left = false, ok_right = false;
    bool a = truth_of(left, c.memory, ok_left), b = truth_of(right, c.memory, ok_right);
    if (!ok_left || !ok_right) return failure(kErrorNoArithmetic, c.language);
    return truth_value(code == kOpAnd ? (a && b) : (a || b), c.language);
  }
  if (is_pointer(left) || is_pointer(right)) {
    if (code == kOpPlus || code == kOpMinus) return pointer_arithmetic(code, left, right, c);
    return failure(kErrorNoArithmetic, c.language);
  }
  if (needs_integers(code)) {
    if (is_integer_type(left.type) && is_integer_type(right.type))
      return integer_arithmetic(code, left, right, integer_result_type(left.type, right.type, c.language), c);
    bool numeric = is_numeric_type(left.type) && is_numeric_type(right.type);
    return failure(numeric ? kErrorIntegersRequired : kErrorNoArithmetic, c.language);
  }
  if (!is_numeric_type(left.type) || !is_numeric_type(right.type)) return failure(kErrorNoArithmetic, c.language);
  std::int32_t type = numeric_result_type(left.type, right.type, c.language);
  if (is_complex_type(type)) return complex_arithmetic(code, left, right, type, c);
  if (is_real_type(type)) return real_arithmetic(code, left, right, type, c);
  return integer_arithmetic(code, left, right, type, c);
}

std::unique_ptr<element> apply_intrinsic(std::int32_t code, const element& operand, const OperationContext& c) {
  if (code == kOpAddress) {
    if (operand.is_typedef()) return failure(kErrorNoObject, c.language);
    if (operand.is_constant()) return failure(kErrorNoAddress, c.language);
    return integer_constant(static_cast<std::int64_t>(operand.address), kTypeInteger8, c.language);
  }
  if (code == kOpLength) {
    std::int64_t length;
    if (operand.type == kTypeCharacter)
      length = character_length(operand, c.memory);
    else if (is_pointer(operand) && operand.next && operand.next->type == kTypeInteger1)
      length = c_string_length(static_cast<Address>(value_int64(operand, c.memory)), c.memory);
    else
      return failure(kErrorStringExpected, c.language);
    return integer_constant(length, kTypeInteger4, c.language);
  }
  return failure(kErrorInternal, c.language);
}

}  // namespace vantor
