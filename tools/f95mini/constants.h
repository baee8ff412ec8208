// Compile-time values: literals, PARAMETER names and the operations of constant
// expressions (kinds, bounds, DATA and initial values).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "f95mini/ast.h"
#include "f95mini/scope.h"

namespace f95mini {

struct ConstValue {
  Type type;
  std::int64_t i = 0;  // INTEGER, LOGICAL
  double r = 0, im = 0;  // REAL, COMPLEX
  std::string s;       // CHARACTER
};

// Throws CompileError when `e` is not a constant expression.
ConstValue eval_constant(const Expr& e, Scope& scope);
// Same, but false instead of an error.
bool try_eval_constant(const Expr& e, Scope& scope, ConstValue* out);

std::int64_t eval_integer_constant(const Expr& e, Scope& scope, const char* what);

// The kind of a literal from its suffix ("" = default), resolving named kinds.
int literal_kind(const std::string& suffix, int default_kind, const SourcePos& pos, Scope& scope);

// Converts to `to` (numeric conversions, blank-padding or cutting of strings).
ConstValue convert_constant(const ConstValue& v, const Type& to, const SourcePos& pos);
// The value's bytes as stored in memory for type `to` (converted first).
std::vector<std::uint8_t> constant_bytes(const ConstValue& v, const Type& to, const SourcePos& pos);

bool valid_kind(BaseType base, int kind);

}  // namespace f95mini
