#include "values/value_format.h"

#include <cstring>

#include "values/display_name.h"
#include "values/error_codes.h"
#include "values/string_readers.h"

namespace vantor {

namespace {

EnumeratorNameLookup enumerator_lookup = nullptr;

constexpr const char* kCTypeNames[kTypeCodeCount] = {
    "", "", "", "",                                                  // LOGICAL: none in C
    "char ", "short ", "int ", "long long ",                         //
    "unsigned char ", "unsigned short ", "unsigned int ", "unsigned long long ",
    "enum ", "float ", "double ", "long double ",                    //
    "", "", "",                                                      // COMPLEX: none in C
    "void ", "*", "&", "", "", "", "()",
};

constexpr const char* kFortranTypeNames[19] = {
    "LOGICAL*1 ", "LOGICAL*2 ", "LOGICAL*4 ", "LOGICAL*8 ",
    "INTEGER*1 ", "INTEGER*2 ", "INTEGER*4 ", "INTEGER*8 ",
    "unsigned char ", "unsigned short ", "unsigned int ", "",
    "enum ", "REAL*4 ", "REAL*8 ", "REAL*10 ",
    "COMPLEX*8 ", "COMPLEX*16 ", "COMPLEX*20 ",
};

void fortran_bounds(const element& e, TargetMemory& memory, TextBuffer& out) {
  if (!e.array || e.array->num_dims == 0) {
    out.append("Array size not known");
    return;
  }
  out.append("(");
  if (!e.is_constant() && !memory.is_readable(e.address)) {
    out.append("Subscripts not valid");
  } else {
    const array_info& a = *e.array;
    int dims = std::min<int>(a.num_dims, kMaxRank);
    for (int d = 0; d < dims; ++d) {
      std::int64_t lower = a.first_element[d], upper = a.last_element[d];
      if (d > 0) out.append(",");
      if (lower != 1) out.append_format("%lld:", static_cast<long long>(lower));
      bool assumed = (e.lang_code == kLangFortran && lower == 1 && (upper == 100000000 || upper == 0x7FFFFFFF)) ||
                     (e.lang_code == kLangFortran95 && lower == 1 && upper == 0x80000000ll);
      if (assumed)
        out.append("*");
      else if (upper >= lower)
        out.append_format("%lld", static_cast<long long>(upper));
      else if (upper == lower - 1)
        out.append("0");
      else
        out.append("*Invalid*");
    }
  }
  out.append(")");
}

void c_type_name(const element& e, TextBuffer& out) {
  if (e.type == kTypeStructure) {
    out.append(structure_name(e));
  } else if (e.type == kTypeArray) {
    if (!e.array) return;
    int dims = std::min<int>(e.array->num_dims, kMaxRank);
    for (int d = 0; d < dims; ++d) {
      std::int64_t upper = e.array->last_element[d];
      if (upper < 0)
        out.append("[]");
      else
        out.append_format("[%lld]", static_cast<long long>(upper + 1));
    }
  } else if (e.type >= 0 && e.type < kTypeCodeCount) {
    out.append(kCTypeNames[e.type]);
  }
}

void fortran_type_name(const element& e, TargetMemory& memory, TextBuffer& out) {
  if (e.type >= 0 && e.type <= kTypeComplex20) {
    out.append(kFortranTypeNames[e.type]);
    return;
  }
  switch (e.type) {
    case kTypePointer8: out.append("POINTER :: "); break;
    case kTypeStructure:
      if (e.lang_code == kLangFortranDecorated)
        out.append(undecorate_fortran_name(structure_name(e)));
      else
        out.append_format("TYPE(%s)", structure_name(e).c_str());
      break;
    case kTypeCharacter: out.append_format("CHARACTER*%lld ", static_cast<long long>(e.size)); break;
    case kTypeFunction: out.append("FUNCTION"); break;
    case kTypeArray: fortran_bounds(e, memory, out); break;
    default: break;
  }
}

void write_type_name(const element& e, TargetMemory& memory, TextBuffer& out, int depth) {
  // A `next` chain is finite by ownership; the depth guard only protects the output.
  if (e.next && depth < 64) write_type_name(*e.next, memory, out, depth + 1);
  if (e.lang_code == kLangC)
    c_type_name(e, out);
  else if (is_fortran_language(e.lang_code))
    fortran_type_name(e, memory, out);
}

// ---- value pieces ----

struct Scalar {
  std::uint8_t bytes[kInlineValueSize] = {};
};

Scalar scalar_bytes(const element& e, TargetMemory& memory) {
  Scalar s;
  std::int64_t size = std::min<std::int64_t>(std::max<std::int64_t>(e.size, 0), kInlineValueSize);
  if (e.is_constant()) {
    if (const std::uint8_t* held = constant_bytes(e)) std::memcpy(s.bytes, held, static_cast<std::size_t>(size));
  } else if (size > 0 && memory.read(e.address, s.bytes, static_cast<std::size_t>(size)) != static_cast<std::size_t>(size)) {
    std::memset(s.bytes, 0, sizeof s.bytes);
  }
  return s;
}

template <typename T>
T load(const std::uint8_t* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

bool all_fill(const std::uint8_t* bytes, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i)
    if (bytes[i] != 0x80) return false;
  return true;
}

void* as_pointer(Address address) { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(address)); }

std::string escaped(std::uint8_t byte) {
  std::string text;
  escape_character(byte, text);
  return text;
}

void hex_halves(std::uint64_t value, TextBuffer& out) {
  out.append_format(" 0x%x%08xLL", static_cast<unsigned>(value >> 32), static_cast<unsigned>(value & 0xFFFFFFFFu));
}

std::int32_t pointer_text(const element& e, TargetMemory& memory, TextBuffer& out) {
  if (!e.next) {
    out.append("pointer type is null");
    return 0;
  }
  Address target = load<std::uint64_t>(scalar_bytes(e, memory).bytes);
  if (target == 0) {
    out.append("NULL");
    return 0;
  }
  if (!memory.is_readable(target)) {
    out.append_format("0x%p (illegal address)", as_pointer(target));
    return 0;
  }
  out.append_format("0x%p", as_pointer(target));
  if (e.next->type == kTypeInteger1) {
    out.append(" -> \"");
    c_string_from_process(memory, target, out, 0);
    out.append("\"");
  }
  return 0;
}

std::int32_t reference_text(const element& e, TargetMemory& memory, TextBuffer& out) {
  if (!e.next) {
    out.append("reference type is null");
    return 0;
  }
  auto referee = clone_element(*e.next);
  referee->address = load<std::uint64_t>(scalar_bytes(e, memory).bytes);
  referee->flags &= static_cast<std::uint8_t>(~(kElementConstant | kElementHeapValue));
  referee->heap_value.reset();
  return value_text(*referee, memory, out);
}

bool is_char_vector(const element& e) { return e.array && e.array->num_dims == 1 && e.next->type == kTypeInteger1; }

std::int32_t array_text(const element& e, TargetMemory& memory, TextBuffer& out) {
  if (!e.next) {
    out.append("array type is null");
    return 0;
  }
  std::int64_t count = e.array ? e.array->last_element[0] + 1 : 0;
  if (e.lang_code == kLangC) {
    if (is_char_vector(e)) {
      out.append("\"");
      c_string_from_process(memory, e.address, out, count > 0 ? count : 0);
      out.append("\"");
    } else {
      type_name(e, memory, out);
    }
    return 0;
  }
  if (is_char_vector(e) && e.lang_code == kLangFortranDecorated) {
    if (!e.is_constant() && !memory.is_readable(e.address)) {
      out.append("*Undefined*");
    } else {
      out.append("\"");
      if (e.is_constant())
        fortran_string_from_constant(constant_bytes(e), out, std::min(count, e.size));
      else
        fortran_string_from_process(memory, e.address, out, count);
      out.append("\"");
    }
    return 0;
  }
  if (e.address == 0 && !e.is_constant()) {
    out.append("Unassigned [");
    type_name(e, memory, out);
    out.append("]");
    return 0;
  }
  type_name(e, memory, out);
  return 0;
}

std::int32_t character_text(const element& e, TargetMemory& memory, TextBuffer& out) {
  if (e.is_constant()) {
    out.append("'");
    fortran_string_from_constant(constant_bytes(e), out, e.size);
    out.append("'");
    return 0;
  }
  if (!memory.is_readable(e.address)) {
    out.append("*Undefined*");
    return 0;
  }
  out.append("'");
  fortran_string_from_process(memory, e.address, out, e.size);
  out.append("'");
  return 0;
}

void enum_text(const element& e, TargetMemory& memory, TextBuffer& out) {
  std::int32_t value = value_int32(e, memory);
  if (enumerator_lookup) out.append(enumerator_lookup(e, value));
  out.append_format(" (%d 0x%x)", value, static_cast<unsigned>(value));
}

// Whether the value bytes are read from the element's address (and so checked first).
bool reads_its_address(std::int32_t type) { return (type >= 0 && type <= kTypeComplex20) || type == kTypePointer8 || type == kTypeReference; }

std::int32_t c_value_text(element& e, TargetMemory& memory, TextBuffer& out) {
  Scalar s = scalar_bytes(e, memory);
  const std::uint8_t* b = s.bytes;
  switch (e.type) {
    case kTypeInteger1: {
      std::int32_t v = value_int32(e, memory);
      out.append_format("'%s' %d 0x%02x", escaped(static_cast<std::uint8_t>(v)).c_str(), v, static_cast<unsigned>(v & 0xFF));
      break;
    }
    case kTypeInteger2: {
      std::int32_t v = value_int32(e, memory);
      out.append_format("%d 0x%x", v, static_cast<unsigned>(v & 0xFFFF));
      break;
    }
    case kTypeInteger4: {
      std::int32_t v = value_int32(e, memory);
      out.append_format("%d 0x%x", v, static_cast<unsigned>(v));
      break;
    }
    case kTypeInteger8: {
      std::int64_t v = value_int64(e, memory);
      out.append_format("%lld", static_cast<long long>(v));
      hex_halves(static_cast<std::uint64_t>(v), out);
      break;
    }
    case kTypeUnsigned1: {
      std::uint32_t v = static_cast<std::uint32_t>(value_int32(e, memory));
      out.append_format("'%s' %u 0x%02x", escaped(static_cast<std::uint8_t>(v)).c_str(), v, v & 0xFF);
      break;
    }
    case kTypeUnsigned2: {
      std::uint32_t v = static_cast<std::uint32_t>(value_int32(e, memory));
      out.append_format("%u 0x%x", v, v & 0xFFFF);
      break;
    }
    case kTypeUnsigned4: {
      std::uint32_t v = static_cast<std::uint32_t>(value_int32(e, memory));
      out.append_format("%u 0x%x", v, v);
      break;
    }
    case kTypeUnsigned8: {
      std::uint64_t v = static_cast<std::uint64_t>(value_int64(e, memory));
      out.append_format("%llu", static_cast<unsigned long long>(v));
      hex_halves(v, out);
      break;
    }
    case kTypeEnum: enum_text(e, memory, out); break;
    case kTypeReal4: out.append_format("%#g", static_cast<double>(load<float>(b))); break;
    case kTypeReal8: out.append_format("%#.15g", load<double>(b)); break;
    case kTypeReal10: out.append_format("%#.19Lg", static_cast<long double>(load<double>(b))); break;
    case kTypePointer8: return pointer_text(e, memory, out);
    case kTypeReference: return reference_text(e, memory, out);
    case kTypeStructure: out.append(structure_name(e)); break;
    case kTypeArray: return array_text(e, memory, out);
    case kTypeFunction: out.append_format("@0x%p", as_pointer(e.address)); break;
    default: break;
  }
  return 0;
}

std::int32_t fortran_value_text(element& e, TargetMemory& memory, TextBuffer& out) {
  Scalar s = scalar_bytes(e, memory);
  const std::uint8_t* b = s.bytes;
  switch (e.type) {
    case kTypeLogical1:
    case kTypeLogical2:
    case kTypeLogical4: {
      std::int32_t v = value_int32(e, memory);
      if (v == 0)
        out.append(".FALSE.");
      else if (v == 1)
        out.append(".TRUE.");
      else if ((v & 0xFF) == 0x80)
        out.append("UNDEFINED");
      else
        out.append("*Invalid*");
      break;
    }
    case kTypeLogical8: {
      bool any = false;
      for (int i = 0; i < 8; ++i) any = any || b[i] != 0;
      out.append(all_fill(b, 8) ? "UNDEFINED" : any ? ".TRUE." : ".FALSE.");
      break;
    }
    case kTypeInteger1:
      if (b[0] == 0x80)
        out.append("UNDEFINED");
      else
        out.append_format("%d", value_int32(e, memory));
      break;
    case kTypeInteger2:
      if (load<std::uint16_t>(b) == 0x8080 && e.bit_count == 0)
        out.append("UNDEFINED");
      else
        out.append_format("%d", value_int32(e, memory));
      break;
    case kTypeInteger4:
      if (load<std::uint32_t>(b) == 0x80808080u && e.bit_count == 0)
        out.append("UNDEFINED");
      else
        out.append_format("%d", value_int32(e, memory));
      break;
    case kTypeInteger8:
    case kTypeUnsigned8:
      if (all_fill(b, 8))
        out.append("UNDEFINED");
      else
        out.append_format("%lld", static_cast<long long>(value_int64(e, memory)));
      break;
    case kTypeUnsigned1:
    case kTypeUnsigned2:
    case kTypeUnsigned4: out.append_format("%u", static_cast<std::uint32_t>(value_int32(e, memory))); break;
    case kTypeEnum: enum_text(e, memory, out); break;
    case kTypeReal4:
      if (load<std::uint32_t>(b) == 0x80808080u)
        out.append("UNDEFINED");
      else
        out.append_format("%g", static_cast<double>(load<float>(b)));
      break;
    case kTypeReal8:
      if (all_fill(b, 8))
        out.append("UNDEFINED");
      else
        out.append_format("%g", load<double>(b));
      break;
    case kTypeReal10:
      // Only the first 8 of the 10 bytes are shown, read as a double.
      if (all_fill(b, 10))
        out.append("UNDEFINED");
      else
        out.append_format("%#.19Lg", static_cast<long double>(load<double>(b)));
      break;
    case kTypeComplex8:
      if (all_fill(b, 8))
        out.append("UNDEFINED");
      else
        out.append_format("(%g,%g)", static_cast<double>(load<float>(b)), static_cast<double>(load<float>(b + 4)));
      break;
    case kTypeComplex16:
      if (all_fill(b, 16))
        out.append("UNDEFINED");
      else
        out.append_format("(%g,%g)", load<double>(b), load<double>(b + 8));
      break;
    case kTypeComplex20:
      if (all_fill(b, 20))
        out.append("UNDEFINED");
      else
        out.append_format("(%.19Lg,%.19Lg)", static_cast<long double>(load<double>(b)),
                          static_cast<long double>(load<double>(b + 10)));
      break;
    case kTypePointer8: return pointer_text(e, memory, out);
    case kTypeReference: return reference_text(e, memory, out);
    case kTypeStructure: type_name(e, memory, out); break;
    case kTypeArray: return array_text(e, memory, out);
    case kTypeCharacter: return character_text(e, memory, out);
    case kTypeFunction: out.append_format("@0x%p", as_pointer(e.address)); break;
    default: break;
  }
  return 0;
}

}  // namespace

std::string structure_name(const element& e) {
  return e.structure && e.structure->type ? e.structure->type->name : std::string();
}

void set_enumerator_name_lookup(EnumeratorNameLookup lookup) { enumerator_lookup = lookup; }

std::int32_t type_name(const element& e, TargetMemory& memory, TextBuffer& output) {
  if (e.error_code != 0) return e.error_code;
  write_type_name(e, memory, output, 0);
  return 0;
}

std::string type_name_text(const element& e, TargetMemory& memory) {
  TextOutput out;
  type_name(e, memory, out.buffer());
  return out.str();
}

std::int32_t value_text(element& e, TargetMemory& memory, TextBuffer& output) {
  if (e.error_code != 0) return e.error_code;
  // An absent optional argument is passed as this marker address; it is not an address.
  if (e.lang_code == kLangFortran95 && (e.address & 0xFFFFFFFFu) == 0xF0F0F0F0u) {
    output.append("MISSING ARGUMENT");
    return 0;
  }
  bool fortran = is_fortran_language(e.lang_code);
  if (!fortran && e.lang_code != kLangC) return 0;
  if (!e.is_constant() && reads_its_address(e.type)) {
    if (std::int32_t refusal = unreadable_error(e, memory)) {
      e.error_code = refusal;
      return refusal;
    }
  }
  // The floating-point validity check would go here; every bit pattern passes it.
  return fortran ? fortran_value_text(e, memory, output) : c_value_text(e, memory, output);
}

std::string value_text_or_error(element& e, TargetMemory& memory, std::size_t capacity) {
  TextOutput out(capacity);
  std::int32_t error = value_text(e, memory, out.buffer());
  return error ? error_text(error) : out.str();
}

}  // namespace vantor
