// The intrinsic procedures of the subset, expanded inline or as calls to the run-time
// library and the C library.
#include <set>

#include "f95mini/routine_compiler.h"

namespace f95mini {
namespace {

const std::set<std::string>& intrinsic_names() {
  static const std::set<std::string> names = {
      "abs", "sqrt", "mod", "real", "int", "dble", "char", "ichar", "len", "size", "cmplx", "aimag", "conjg",
      "min", "max", "nint", "exp", "log", "sin", "cos", "tan", "atan", "trim", "len_trim", "associated",
      "allocated", "sign", "float", "kind", "achar", "iachar", "dcmplx", "null"};
  return names;
}

const char* sd(const Type& t) { return t.kind == 4 ? "ss" : "sd"; }

}  // namespace

bool RoutineCompiler::is_intrinsic(const std::string& name) const { return intrinsic_names().count(name) != 0; }

Type RoutineCompiler::intrinsic(const Expr& e, const std::string& f) {
  const auto& args = e.args;
  std::vector<const Expr*> pos;
  const Expr* kind_arg = nullptr;
  const Expr* dim_arg = nullptr;
  for (size_t i = 0; i < args.size(); ++i) {
    if (!args[i] || args[i]->kind == ExprKind::kRange) fail(e.pos, "array sections are not supported");
    if (e.keywords[i] == "kind") kind_arg = args[i].get();
    else if (e.keywords[i] == "dim") dim_arg = args[i].get();
    else pos.push_back(args[i].get());
  }
  // The kind may also be the last positional argument: INT(x, 8), CMPLX(x, y, 8).
  if (!kind_arg && ((pos.size() == 2 && (f == "int" || f == "nint" || f == "real")) || (pos.size() == 3 && f == "cmplx"))) {
    kind_arg = pos.back();
    pos.pop_back();
  }
  auto need = [&](size_t lo, size_t hi) {
    if (pos.size() < lo || pos.size() > hi)
      fail(e.pos, "wrong number of arguments to " + f);
  };
  auto kind_or = [&](int def) {
    if (!kind_arg) return def;
    int k = static_cast<int>(eval_integer_constant(*kind_arg, scope_, "a kind"));
    return k;
  };

  if (f == "abs") {
    need(1, 1);
    Type t = value(*pos[0]);
    if (t.base == BaseType::kInteger) {
      emit("mov rcx, rax");
      emit("neg rcx");
      emit("cmovns rax, rcx");
      return t;
    }
    if (t.base == BaseType::kReal) {
      std::string mask = t.kind == 4 ? comp_.mask_literal(0x7FFFFFFFu, 0) : comp_.mask_literal(0x7FFFFFFFFFFFFFFFull, 0);
      emit(std::string(t.kind == 4 ? "andps" : "andpd") + " xmm0, xmmword ptr [rip+" + mask + "]");
      return t;
    }
    if (t.base == BaseType::kComplex) {
      std::string s = sd(t);
      emit("mul" + s + " xmm0, xmm0");
      emit("mul" + s + " xmm1, xmm1");
      emit("add" + s + " xmm0, xmm1");
      emit("sqrt" + s + " xmm0, xmm0");
      return real_type(t.kind);
    }
    fail(e.pos, "ABS needs a number");
  }
  if (f == "sqrt" || f == "exp" || f == "log" || f == "sin" || f == "cos" || f == "tan" || f == "atan") {
    need(1, 1);
    Type t = value(*pos[0]);
    if (t.base != BaseType::kReal) fail(e.pos, f + " needs a REAL argument, not " + t.name());
    if (f == "sqrt") {
      emit(std::string("sqrt") + sd(t) + " xmm0, xmm0");
      return t;
    }
    convert(t, real_type(8), e.pos);
    emit("call " + f);
    convert(real_type(8), t, e.pos);
    return t;
  }
  if (f == "mod") {
    need(2, 2);
    Type a = value(*pos[0]);
    std::int64_t ta = alloc_temp(16);
    spill(a, ta);
    Type b = value(*pos[1]);
    Type t = arithmetic_type(a, b, e.pos, "MOD");
    if (t.base == BaseType::kComplex) fail(e.pos, "MOD of COMPLEX values");
    convert(b, t, e.pos);
    to_secondary(t);
    reload(a, ta);
    convert(a, t, e.pos);
    if (t.base == BaseType::kInteger) {
      emit("cqo");
      emit("idiv rcx");
      emit("mov rax, rdx");
      normalise_integer(t.kind);
      return t;
    }
    convert(t, real_type(8), e.pos);
    if (t.kind == 4) emit("cvtss2sd xmm1, xmm1");
    emit("call fmod");
    convert(real_type(8), t, e.pos);
    return t;
  }
  if (f == "real" || f == "float" || f == "dble") {
    need(1, 1);
    Type t = value(*pos[0]);
    if (!t.is_numeric()) fail(e.pos, f + " needs a number");
    int kind = f == "dble" ? 8 : kind_or(t.base == BaseType::kComplex ? t.kind : 4);
    if (t.base == BaseType::kComplex) t = real_type(t.kind);
    convert(t, real_type(kind), e.pos);
    return real_type(kind);
  }
  if (f == "int" || f == "nint") {
    need(1, 1);
    Type t = value(*pos[0]);
    if (!t.is_numeric()) fail(e.pos, f + " needs a number");
    int kind = kind_or(4);
    if (t.base == BaseType::kComplex) t = real_type(t.kind);
    if (f == "nint" && t.base == BaseType::kReal) {
      convert(t, real_type(8), e.pos);
      emit("call __f95_nearest_integer");
      normalise_integer(kind);
      return integer_type(kind);
    }
    convert(t, integer_type(kind), e.pos);
    return integer_type(kind);
  }
  if (f == "cmplx" || f == "dcmplx") {
    need(1, 2);
    int kind = f == "dcmplx" ? 8 : kind_or(4);
    Type ct = complex_type(kind);
    if (pos.size() == 1) {
      Type t = value(*pos[0]);
      convert(t, ct, e.pos);
      return ct;
    }
    Type a = value(*pos[0]);
    convert(a, real_type(kind), e.pos);
    std::int64_t ta = alloc_temp(8);
    spill(real_type(kind), ta);
    Type b = value(*pos[1]);
    convert(b, real_type(kind), e.pos);
    emit("movaps xmm1, xmm0");
    reload(real_type(kind), ta);
    return ct;
  }
  if (f == "aimag" || f == "conjg") {
    need(1, 1);
    Type t = value(*pos[0]);
    if (t.base != BaseType::kComplex) fail(e.pos, f + " needs a COMPLEX argument");
    if (f == "aimag") {
      emit("movaps xmm0, xmm1");
      return real_type(t.kind);
    }
    emit("xorps xmm2, xmm2");
    emit(std::string("sub") + sd(t) + " xmm2, xmm1");
    emit("movaps xmm1, xmm2");
    return t;
  }
  if (f == "char" || f == "achar") {
    need(1, 1);
    Type t = value(*pos[0]);
    if (t.base != BaseType::kInteger) fail(e.pos, "CHAR needs an INTEGER argument");
    std::string ok = comp_.new_label();
    emit("cmp rax, 255");
    emit("jbe " + ok);
    raise_error(kRuntimeErrorCharRange, "");
    label(ok);
    std::int64_t tmp = alloc_temp(1);
    emit("mov byte ptr " + temp_mem(tmp) + ", al");
    emit("lea rax, " + temp_mem(tmp));
    emit("mov edx, 1");
    return character_type(1);
  }
  if (f == "ichar" || f == "iachar") {
    need(1, 1);
    Type t = value(*pos[0]);
    if (t.base != BaseType::kCharacter) fail(e.pos, "ICHAR needs a CHARACTER argument");
    emit("movzx eax, byte ptr [rax]");
    return integer_type(kind_or(4));
  }
  if (f == "len" || f == "len_trim" || f == "trim") {
    need(1, 1);
    Type t = value(*pos[0]);
    if (t.base != BaseType::kCharacter) fail(e.pos, f + " needs a CHARACTER argument");
    if (f == "len") {
      emit("mov rax, rdx");
      return integer_type(4);
    }
    std::int64_t tmp = alloc_temp(8);
    emit("mov qword ptr " + temp_mem(tmp) + ", rax");
    emit("mov rcx, rax");
    emit("call __f95_trimmed_length");
    if (f == "len_trim") return integer_type(4);
    emit("mov rdx, rax");
    emit("mov rax, qword ptr " + temp_mem(tmp));
    return t;
  }
  if (f == "size") {
    need(1, 2);
    if (pos.size() == 2) dim_arg = pos[1];
    if (!is_designator(*pos[0])) fail(e.pos, "SIZE needs an array");
    Designator d = address(*pos[0]);
    if (!d.whole_array) fail(e.pos, "SIZE needs an array");
    if (dim_arg) {
      std::int64_t k = eval_integer_constant(*dim_arg, scope_, "DIM");
      if (k < 1 || k > d.shape->rank()) fail(e.pos, "DIM out of range");
      if (d.shape->kind == Shape::kAssumedSize && k == d.shape->rank())
        fail(e.pos, "the last extent of an assumed-size array is unknown");
      dim_extent(d, static_cast<int>(k - 1), "rax");
    } else {
      array_count(d, e.pos);
    }
    return integer_type(4);
  }
  if (f == "min" || f == "max") {
    if (pos.size() < 2) fail(e.pos, f + " needs at least two arguments");
    // Common type of all arguments first, then fold left to right.
    Type t = value(*pos[0]);
    std::int64_t acc = alloc_temp(16);
    std::vector<Type> types{t};
    std::vector<std::int64_t> slots{acc};
    spill(t, acc);
    Type common = t;
    for (size_t i = 1; i < pos.size(); ++i) {
      Type u = value(*pos[i]);
      std::int64_t ti = alloc_temp(16);
      slots.push_back(ti);
      spill(u, ti);
      common = arithmetic_type(common, u, e.pos, f);
      types.push_back(u);
    }
    if (common.base == BaseType::kComplex) fail(e.pos, f + " of COMPLEX values");
    reload(types[0], acc);
    convert(types[0], common, e.pos);
    std::int64_t cur = alloc_temp(16);
    spill(common, cur);
    for (size_t i = 1; i < pos.size(); ++i) {
      reload(types[i], slots[i]);
      convert(types[i], common, e.pos);
      to_secondary(common);
      reload(common, cur);
      if (common.base == BaseType::kInteger) {
        emit("cmp rax, rcx");
        emit(f == "min" ? "cmovg rax, rcx" : "cmovl rax, rcx");
      } else {
        emit(std::string(f == "min" ? "min" : "max") + sd(common) + " xmm0, xmm1");
      }
      spill(common, cur);
    }
    return common;
  }
  if (f == "sign") {
    need(2, 2);
    Type a = value(*pos[0]);
    std::int64_t ta = alloc_temp(16);
    spill(a, ta);
    Type b = value(*pos[1]);
    if (!(a.base == b.base) || (a.base != BaseType::kInteger && a.base != BaseType::kReal))
      fail(e.pos, "SIGN needs two INTEGER or two REAL arguments");
    if (a.base == BaseType::kInteger) {
      emit("mov rcx, rax");
      reload(a, ta);
      emit("mov rdx, rax");
      emit("neg rdx");
      emit("cmovns rax, rdx");  // |a|
      emit("mov rdx, rax");
      emit("neg rdx");
      emit("test rcx, rcx");
      emit("cmovs rax, rdx");
      return a;
    }
    convert(b, a, e.pos);
    emit("movaps xmm1, xmm0");
    reload(a, ta);
    std::string s = sd(a);
    std::string mask = a.kind == 4 ? comp_.mask_literal(0x7FFFFFFFu, 0) : comp_.mask_literal(0x7FFFFFFFFFFFFFFFull, 0);
    std::string sign = a.kind == 4 ? comp_.mask_literal(0x80000000u, 0) : comp_.mask_literal(0x8000000000000000ull, 0);
    const char* p = a.kind == 4 ? "ps" : "pd";
    emit(std::string("and") + p + " xmm0, xmmword ptr [rip+" + mask + "]");
    emit(std::string("and") + p + " xmm1, xmmword ptr [rip+" + sign + "]");
    emit(std::string("or") + p + " xmm0, xmm1");
    return a;
  }
  if (f == "associated" || f == "allocated") {
    need(1, 1);
    if (!is_designator(*pos[0])) fail(e.pos, f + " needs a variable");
    Designator d = address(*pos[0], true);
    if (f == "associated" && !d.is_pointer) fail(e.pos, "ASSOCIATED needs a POINTER");
    if (f == "allocated" && !(d.sym && d.sym->allocatable && d.pointer_slot)) fail(e.pos, "ALLOCATED needs an ALLOCATABLE array");
    emit("cmp qword ptr [rax], 0");
    emit("setne al");
    emit("movzx eax, al");
    return logical_type(4);
  }
  if (f == "kind") {
    need(1, 1);
    Type t = value(*pos[0]);
    emit("mov eax, " + std::to_string(t.kind));
    return integer_type(4);
  }
  fail(e.pos, "the intrinsic " + f + " is not supported here");
}

}  // namespace f95mini
