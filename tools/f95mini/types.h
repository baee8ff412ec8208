// Fortran types as the code generator and the debug tables see them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "f95mini/diagnostics.h"

namespace f95mini {

enum class BaseType { kInteger, kReal, kComplex, kLogical, kCharacter, kDerived };

struct DerivedType;

struct Type {
  BaseType base = BaseType::kInteger;
  int kind = 4;              // bytes of the value (of each part for COMPLEX)
  std::int64_t len = 1;      // CHARACTER length; kAssumedLength for CHARACTER(*)
  const DerivedType* derived = nullptr;

  static constexpr std::int64_t kAssumedLength = -1;

  std::int64_t size() const;
  int alignment() const;
  bool is_numeric() const { return base == BaseType::kInteger || base == BaseType::kReal || base == BaseType::kComplex; }
  bool operator==(const Type& o) const {
    return base == o.base && kind == o.kind && derived == o.derived && (base != BaseType::kCharacter || len == o.len);
  }
  std::string name() const;  // for messages: INTEGER(4), TYPE(point), ...
};

Type integer_type(int kind = 4);
Type real_type(int kind = 4);
Type complex_type(int kind = 4);
Type logical_type(int kind = 4);
Type character_type(std::int64_t len);

// Array shape of a declared entity. Bounds that are not constants keep their expressions.
struct Expr;
struct Dimension {
  std::int64_t lower = 1, upper = 0;   // when constant
  const Expr* lower_expr = nullptr;    // non-null when the bound is not a constant
  const Expr* upper_expr = nullptr;
  bool lower_constant() const { return lower_expr == nullptr; }
  bool upper_constant() const { return upper_expr == nullptr; }
  std::int64_t extent() const { return upper >= lower ? upper - lower + 1 : 0; }
};

struct Shape {
  enum Kind { kScalar, kExplicit, kAssumedSize, kDeferred };
  Kind kind = kScalar;
  std::vector<Dimension> dims;
  int rank() const { return static_cast<int>(dims.size()); }
  bool is_array() const { return kind != kScalar; }
  // Every bound a constant (the storage size is known when compiling).
  bool constant() const;
  std::int64_t element_count() const;  // only when constant()
};

struct Component {
  std::string name;
  Type type;
  Shape shape;  // constant shapes only
  bool pointer = false;
  std::int64_t offset = 0;
  std::int64_t size() const;  // bytes taken in the structure
};

struct DerivedType {
  std::string name;
  SourcePos pos;
  std::vector<Component> components;
  std::int64_t size = 0;
  int align = 1;
  const Component* find(const std::string& n) const {
    for (const auto& c : components)
      if (c.name == n) return &c;
    return nullptr;
  }
};

// The 5-bit type code of the debug tables for a type (shared with the debugger).
std::uint32_t debug_type_code(const Type& t);

}  // namespace f95mini
