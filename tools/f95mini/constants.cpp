#include "f95mini/constants.h"

#include <cmath>
#include <cstring>

namespace f95mini {
namespace {

bool is_int(const ConstValue& v) { return v.type.base == BaseType::kInteger; }
bool is_real(const ConstValue& v) { return v.type.base == BaseType::kReal; }
bool is_complex(const ConstValue& v) { return v.type.base == BaseType::kComplex; }

double as_double(const ConstValue& v) { return is_int(v) ? static_cast<double>(v.i) : v.r; }

std::int64_t wrap(std::int64_t v, int kind) {
  switch (kind) {
    case 1: return static_cast<std::int8_t>(v);
    case 2: return static_cast<std::int16_t>(v);
    case 4: return static_cast<std::int32_t>(v);
    default: return v;
  }
}

ConstValue make_int(std::int64_t v, int kind) {
  ConstValue c;
  c.type = integer_type(kind);
  c.i = wrap(v, kind);
  return c;
}

ConstValue make_real(double v, int kind) {
  ConstValue c;
  c.type = real_type(kind);
  c.r = kind == 4 ? static_cast<double>(static_cast<float>(v)) : v;
  return c;
}

ConstValue make_logical(bool v) {
  ConstValue c;
  c.type = logical_type(4);
  c.i = v ? 1 : 0;
  return c;
}

std::int64_t ipow(std::int64_t b, std::int64_t e) {
  if (e < 0) return b == 1 ? 1 : b == -1 ? (e % 2 ? -1 : 1) : 0;
  std::int64_t r = 1;
  while (e--) r *= b;
  return r;
}

class Evaluator {
 public:
  explicit Evaluator(Scope& s) : scope_(s) {}

  ConstValue eval(const Expr& e) {
    switch (e.kind) {
      case ExprKind::kInteger: {
        int kind = literal_kind(e.kind_suffix, 4, e.pos, scope_);
        errno = 0;
        unsigned long long v = std::strtoull(e.text.c_str(), nullptr, 10);
        if (errno || v > static_cast<unsigned long long>(INT64_MAX)) fail(e.pos, "integer constant too large");
        if (e.kind_suffix.empty() && v > 2147483647ull) kind = 8;  // friendlier than an overflow
        ConstValue c = make_int(static_cast<std::int64_t>(v), kind);
        if (c.i != static_cast<std::int64_t>(v)) fail(e.pos, "integer constant does not fit its kind");
        return c;
      }
      case ExprKind::kReal: {
        int kind = literal_kind(e.kind_suffix, e.double_exponent ? 8 : 4, e.pos, scope_);
        if (e.double_exponent && !e.kind_suffix.empty()) fail(e.pos, "a D exponent cannot take a kind");
        return make_real(std::strtod(e.text.c_str(), nullptr), kind);
      }
      case ExprKind::kString: {
        ConstValue c;
        c.type = character_type(static_cast<std::int64_t>(e.text.size()));
        c.s = e.text;
        return c;
      }
      case ExprKind::kLogical: {
        ConstValue c = make_logical(e.text == ".true.");
        c.type.kind = literal_kind(e.kind_suffix, 4, e.pos, scope_);
        return c;
      }
      case ExprKind::kComplex: {
        ConstValue re = eval(*e.args[0]), im = eval(*e.args[1]);
        if (!(is_int(re) || is_real(re)) || !(is_int(im) || is_real(im)))
          fail(e.pos, "complex constant parts must be numbers");
        int kind = std::max(is_real(re) ? re.type.kind : 4, is_real(im) ? im.type.kind : 4);
        ConstValue c;
        c.type = complex_type(kind);
        c.r = make_real(as_double(re), kind).r;
        c.im = make_real(as_double(im), kind).r;
        return c;
      }
      case ExprKind::kName: {
        Symbol* s = scope_.lookup(e.text);
        if (!s || s->cls != Symbol::kParameter) fail(e.pos, "'" + e.text + "' is not a constant");
        if (!s->init) fail(e.pos, "constant '" + e.text + "' has no value");
        return convert_constant(eval(*s->init), s->type, e.pos);
      }
      case ExprKind::kUnary: {
        ConstValue v = eval(*e.args[0]);
        if (e.text == "()" || e.text == "+") return v;
        if (e.text == ".not.") {
          if (v.type.base != BaseType::kLogical) fail(e.pos, ".NOT. needs a LOGICAL operand");
          v.i = !v.i;
          return v;
        }
        if (is_int(v)) return make_int(-v.i, v.type.kind);
        if (is_real(v)) return make_real(-v.r, v.type.kind);
        if (is_complex(v)) {
          v.r = -v.r;
          v.im = -v.im;
          return v;
        }
        fail(e.pos, "cannot negate a " + v.type.name());
      }
      case ExprKind::kBinary: return binary(e);
      case ExprKind::kApply: return intrinsic(e);
      default: fail(e.pos, "not a constant expression");
    }
  }

 private:
  ConstValue binary(const Expr& e) {
    ConstValue a = eval(*e.args[0]), b = eval(*e.args[1]);
    const std::string& op = e.text;
    if (op == "//") {
      if (a.type.base != BaseType::kCharacter || b.type.base != BaseType::kCharacter)
        fail(e.pos, "// needs CHARACTER operands");
      ConstValue c;
      c.s = a.s + b.s;
      c.type = character_type(static_cast<std::int64_t>(c.s.size()));
      return c;
    }
    if (op == ".and." || op == ".or." || op == ".eqv." || op == ".neqv.") {
      if (a.type.base != BaseType::kLogical || b.type.base != BaseType::kLogical)
        fail(e.pos, op + " needs LOGICAL operands");
      bool x = a.i, y = b.i;
      return make_logical(op == ".and." ? (x && y) : op == ".or." ? (x || y) : op == ".eqv." ? x == y : x != y);
    }
    if (!a.type.is_numeric() || !b.type.is_numeric()) {
      if (a.type.base == BaseType::kCharacter && b.type.base == BaseType::kCharacter) {
        std::string x = a.s, y = b.s;
        size_t n = std::max(x.size(), y.size());
        x.resize(n, ' ');
        y.resize(n, ' ');
        int c = x.compare(y);
        return compare(op, c, e.pos);
      }
      fail(e.pos, "operator " + op + " cannot take " + a.type.name() + " and " + b.type.name());
    }
    if (is_complex(a) || is_complex(b)) {
      int kind = std::max(is_int(a) ? 4 : a.type.kind, is_int(b) ? 4 : b.type.kind);
      double ar = as_double(a), ai = is_complex(a) ? a.im : 0, br = as_double(b), bi = is_complex(b) ? b.im : 0;
      ConstValue c;
      c.type = complex_type(kind);
      if (op == "+") { c.r = ar + br; c.im = ai + bi; }
      else if (op == "-") { c.r = ar - br; c.im = ai - bi; }
      else if (op == "*") { c.r = ar * br - ai * bi; c.im = ar * bi + ai * br; }
      else if (op == "/") {
        double d = br * br + bi * bi;
        if (d == 0) fail(e.pos, "division by zero in a constant expression");
        c.r = (ar * br + ai * bi) / d;
        c.im = (ai * br - ar * bi) / d;
      } else if (op == "==" || op == "/=") {
        bool eq = ar == br && ai == bi;
        return make_logical(op == "==" ? eq : !eq);
      } else {
        fail(e.pos, "operator " + op + " is not supported on COMPLEX constants");
      }
      return c;
    }
    if (is_int(a) && is_int(b)) {
      int kind = std::max(a.type.kind, b.type.kind);
      if (op == "+") return make_int(a.i + b.i, kind);
      if (op == "-") return make_int(a.i - b.i, kind);
      if (op == "*") return make_int(a.i * b.i, kind);
      if (op == "/") {
        if (b.i == 0) fail(e.pos, "division by zero in a constant expression");
        return make_int(a.i / b.i, kind);
      }
      if (op == "**") return make_int(ipow(a.i, b.i), kind);
      return compare(op, a.i < b.i ? -1 : a.i > b.i ? 1 : 0, e.pos);
    }
    int kind = std::max(is_real(a) ? a.type.kind : 0, is_real(b) ? b.type.kind : 0);
    double x = as_double(a), y = as_double(b);
    if (op == "+") return make_real(x + y, kind);
    if (op == "-") return make_real(x - y, kind);
    if (op == "*") return make_real(x * y, kind);
    if (op == "/") return make_real(x / y, kind);
    if (op == "**") return make_real(std::pow(x, y), kind);
    return compare(op, x < y ? -1 : x > y ? 1 : 0, e.pos);
  }

  static ConstValue compare(const std::string& op, int c, const SourcePos& pos) {
    if (op == "==") return make_logical(c == 0);
    if (op == "/=") return make_logical(c != 0);
    if (op == "<") return make_logical(c < 0);
    if (op == "<=") return make_logical(c <= 0);
    if (op == ">") return make_logical(c > 0);
    if (op == ">=") return make_logical(c >= 0);
    fail(pos, "unknown operator " + op);
  }

  ConstValue intrinsic(const Expr& e) {
    if (e.base->kind != ExprKind::kName) fail(e.pos, "not a constant expression");
    const std::string& f = e.base->text;
    Symbol* s = scope_.lookup(f);
    if (s && s->cls != Symbol::kProcedure) fail(e.pos, "not a constant expression");
    std::vector<ConstValue> a;
    for (const auto& x : e.args) {
      if (!x || x->kind == ExprKind::kRange) fail(e.pos, "not a constant expression");
      a.push_back(eval(*x));
    }
    auto need = [&](size_t n) {
      if (a.size() != n) fail(e.pos, f + " takes " + std::to_string(n) + " argument(s) here");
    };
    if (f == "kind") {
      need(1);
      return make_int(a[0].type.kind, 4);
    }
    if (f == "int" || f == "nint") {
      if (a.size() < 1 || a.size() > 2) need(1);
      int kind = a.size() == 2 ? static_cast<int>(a[1].i) : 4;
      double d = as_double(a[0]);
      return make_int(f == "nint" ? std::llround(d) : static_cast<std::int64_t>(is_int(a[0]) ? a[0].i : std::trunc(d)), kind);
    }
    if (f == "real" || f == "dble") {
      if (a.empty() || a.size() > 2) need(1);
      int kind = f == "dble" ? 8 : a.size() == 2 ? static_cast<int>(a[1].i) : (is_complex(a[0]) ? a[0].type.kind : 4);
      return make_real(as_double(a[0]), kind);
    }
    if (f == "abs") {
      need(1);
      if (is_int(a[0])) return make_int(std::llabs(a[0].i), a[0].type.kind);
      if (is_real(a[0])) return make_real(std::fabs(a[0].r), a[0].type.kind);
    }
    if (f == "mod") {
      need(2);
      if (is_int(a[0]) && is_int(a[1])) {
        if (a[1].i == 0) fail(e.pos, "MOD by zero in a constant expression");
        return make_int(a[0].i % a[1].i, std::max(a[0].type.kind, a[1].type.kind));
      }
    }
    if (f == "ichar") {
      need(1);
      if (a[0].type.base == BaseType::kCharacter && !a[0].s.empty())
        return make_int(static_cast<unsigned char>(a[0].s[0]), 4);
    }
    if (f == "char") {
      need(1);
      if (is_int(a[0])) {
        if (a[0].i < 0 || a[0].i > 255) fail(e.pos, "CHAR argument outside 0 - 255");
        ConstValue c;
        c.type = character_type(1);
        c.s = std::string(1, static_cast<char>(a[0].i));
        return c;
      }
    }
    if (f == "len") {
      need(1);
      if (a[0].type.base == BaseType::kCharacter) return make_int(a[0].type.len, 4);
    }
    if (f == "selected_int_kind") {
      need(1);
      std::int64_t r = a[0].i;
      return make_int(r <= 2 ? 1 : r <= 4 ? 2 : r <= 9 ? 4 : r <= 18 ? 8 : -1, 4);
    }
    if (f == "selected_real_kind") {
      std::int64_t p = a.empty() ? 0 : a[0].i;
      return make_int(p <= 6 ? 4 : p <= 15 ? 8 : -1, 4);
    }
    fail(e.pos, "not a constant expression");
  }

  Scope& scope_;
};

}  // namespace

bool valid_kind(BaseType base, int kind) {
  switch (base) {
    case BaseType::kInteger:
    case BaseType::kLogical: return kind == 1 || kind == 2 || kind == 4 || kind == 8;
    case BaseType::kReal:
    case BaseType::kComplex: return kind == 4 || kind == 8;
    case BaseType::kCharacter: return kind == 1;
    default: return true;
  }
}

int literal_kind(const std::string& suffix, int default_kind, const SourcePos& pos, Scope& scope) {
  if (suffix.empty()) return default_kind;
  if (std::isdigit(static_cast<unsigned char>(suffix[0]))) return std::stoi(suffix);
  Symbol* s = scope.lookup(suffix);
  if (!s || s->cls != Symbol::kParameter || !s->init) fail(pos, "kind '" + suffix + "' is not a named constant");
  ConstValue v = eval_constant(*s->init, scope);
  if (v.type.base != BaseType::kInteger) fail(pos, "kind '" + suffix + "' is not an integer");
  return static_cast<int>(v.i);
}

ConstValue eval_constant(const Expr& e, Scope& scope) { return Evaluator(scope).eval(e); }

bool try_eval_constant(const Expr& e, Scope& scope, ConstValue* out) {
  try {
    *out = eval_constant(e, scope);
    return true;
  } catch (const CompileError&) {
    return false;
  }
}

std::int64_t eval_integer_constant(const Expr& e, Scope& scope, const char* what) {
  ConstValue v = eval_constant(e, scope);
  if (v.type.base != BaseType::kInteger) fail(e.pos, std::string(what) + " must be an INTEGER constant");
  return v.i;
}

ConstValue convert_constant(const ConstValue& v, const Type& to, const SourcePos& pos) {
  ConstValue c;
  c.type = to;
  switch (to.base) {
    case BaseType::kInteger:
      if (is_int(v)) return make_int(v.i, to.kind);
      if (is_real(v) || is_complex(v)) return make_int(static_cast<std::int64_t>(std::trunc(v.r)), to.kind);
      break;
    case BaseType::kReal:
      if (is_int(v) || is_real(v) || is_complex(v)) return make_real(as_double(v), to.kind);
      break;
    case BaseType::kComplex:
      if (is_int(v) || is_real(v) || is_complex(v)) {
        c.r = make_real(as_double(v), to.kind).r;
        c.im = is_complex(v) ? make_real(v.im, to.kind).r : 0;
        return c;
      }
      break;
    case BaseType::kLogical:
      if (v.type.base == BaseType::kLogical) {
        c.i = v.i;
        return c;
      }
      break;
    case BaseType::kCharacter:
      if (v.type.base == BaseType::kCharacter) {
        c.s = v.s;
        if (to.len >= 0) c.s.resize(static_cast<size_t>(to.len), ' ');
        else c.type.len = static_cast<std::int64_t>(c.s.size());
        return c;
      }
      break;
    case BaseType::kDerived: break;
  }
  fail(pos, "cannot convert " + v.type.name() + " to " + to.name());
}

std::vector<std::uint8_t> constant_bytes(const ConstValue& v0, const Type& to, const SourcePos& pos) {
  ConstValue v = convert_constant(v0, to, pos);
  std::vector<std::uint8_t> b;
  auto put = [&](const void* p, size_t n) {
    const auto* q = static_cast<const std::uint8_t*>(p);
    b.insert(b.end(), q, q + n);
  };
  switch (to.base) {
    case BaseType::kInteger:
    case BaseType::kLogical: put(&v.i, static_cast<size_t>(to.kind)); break;
    case BaseType::kReal:
    case BaseType::kComplex: {
      double parts[2] = {v.r, v.im};
      for (int i = 0; i < (to.base == BaseType::kComplex ? 2 : 1); ++i) {
        if (to.kind == 4) {
          float f = static_cast<float>(parts[i]);
          put(&f, 4);
        } else {
          put(&parts[i], 8);
        }
      }
      break;
    }
    case BaseType::kCharacter: put(v.s.data(), v.s.size()); break;
    case BaseType::kDerived: fail(pos, "derived-type constants are not supported");
  }
  return b;
}

}  // namespace f95mini
