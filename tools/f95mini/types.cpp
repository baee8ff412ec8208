#include "f95mini/types.h"

#include "debuginfo/debug_type_codes.h"

namespace f95mini {

std::int64_t Type::size() const {
  switch (base) {
    case BaseType::kComplex: return 2 * kind;
    case BaseType::kCharacter: return len < 0 ? 0 : len;
    case BaseType::kDerived: return derived ? derived->size : 0;
    default: return kind;
  }
}

int Type::alignment() const {
  switch (base) {
    case BaseType::kCharacter: return 1;
    case BaseType::kDerived: return derived ? derived->align : 8;
    default: return kind;
  }
}

std::string Type::name() const {
  switch (base) {
    case BaseType::kInteger: return "INTEGER(" + std::to_string(kind) + ")";
    case BaseType::kReal: return "REAL(" + std::to_string(kind) + ")";
    case BaseType::kComplex: return "COMPLEX(" + std::to_string(kind) + ")";
    case BaseType::kLogical: return "LOGICAL(" + std::to_string(kind) + ")";
    case BaseType::kCharacter: return len < 0 ? "CHARACTER(*)" : "CHARACTER(" + std::to_string(len) + ")";
    case BaseType::kDerived: return "TYPE(" + (derived ? derived->name : std::string("?")) + ")";
  }
  return "?";
}

Type integer_type(int kind) { return Type{BaseType::kInteger, kind, 1, nullptr}; }
Type real_type(int kind) { return Type{BaseType::kReal, kind, 1, nullptr}; }
Type complex_type(int kind) { return Type{BaseType::kComplex, kind, 1, nullptr}; }
Type logical_type(int kind) { return Type{BaseType::kLogical, kind, 1, nullptr}; }
Type character_type(std::int64_t len) { return Type{BaseType::kCharacter, 1, len, nullptr}; }

bool Shape::constant() const {
  if (kind != kExplicit) return false;
  for (const auto& d : dims)
    if (!d.lower_constant() || !d.upper_constant()) return false;
  return true;
}

std::int64_t Shape::element_count() const {
  std::int64_t n = 1;
  for (const auto& d : dims) n *= d.extent();
  return n;
}

std::int64_t Component::size() const {
  if (pointer) return shape.is_array() ? 8 + 24 * shape.rank() : 8;
  return type.size() * (shape.is_array() ? shape.element_count() : 1);
}

std::uint32_t debug_type_code(const Type& t) {
  using namespace vantor;
  switch (t.base) {
    case BaseType::kLogical:
      return t.kind == 1 ? kDebugLogical1 : t.kind == 2 ? kDebugLogical2 : t.kind == 8 ? kDebugLogical8 : kDebugLogical4;
    case BaseType::kInteger:
      return t.kind == 1 ? kDebugInteger1 : t.kind == 2 ? kDebugInteger2 : t.kind == 8 ? kDebugInteger8 : kDebugInteger4;
    case BaseType::kReal: return t.kind == 8 ? kDebugReal8 : kDebugReal4;
    case BaseType::kComplex: return t.kind == 8 ? kDebugComplex16 : kDebugComplex8;
    case BaseType::kCharacter: return kDebugCharacter;
    case BaseType::kDerived: return kDebugDerivedType;
  }
  return kDebugInteger4;
}

}  // namespace f95mini
