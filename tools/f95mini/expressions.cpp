// Expressions: values in fixed registers (integers and logicals in RAX, reals in XMM0,
// complex in XMM0:XMM1, CHARACTER as address RAX and length RDX, derived types by address
// in RAX), designators as addresses, and calls with every argument passed by reference.
#include <algorithm>
#include <cctype>

#include "f95mini/routine_compiler.h"

namespace f95mini {
namespace {

std::string upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

const char* sd(const Type& t) { return t.kind == 4 ? "ss" : "sd"; }
const char* width(int bytes) {
  switch (bytes) {
    case 1: return "byte ptr ";
    case 2: return "word ptr ";
    case 4: return "dword ptr ";
    default: return "qword ptr ";
  }
}
const char* const kArgRegisters[4] = {"rcx", "rdx", "r8", "r9"};

bool is_constant_expr(const Expr& e, Scope& scope) {
  switch (e.kind) {
    case ExprKind::kInteger:
    case ExprKind::kReal:
    case ExprKind::kString:
    case ExprKind::kLogical: return true;
    case ExprKind::kComplex: return is_constant_expr(*e.args[0], scope) && is_constant_expr(*e.args[1], scope);
    case ExprKind::kName: {
      Symbol* s = scope.lookup(e.text);
      return s && s->cls == Symbol::kParameter;
    }
    case ExprKind::kUnary: return is_constant_expr(*e.args[0], scope);
    case ExprKind::kBinary: return is_constant_expr(*e.args[0], scope) && is_constant_expr(*e.args[1], scope);
    default: return false;
  }
}

}  // namespace

// ---- loads, stores and conversions ----

void RoutineCompiler::load(const Type& t) {
  switch (t.base) {
    case BaseType::kInteger:
      if (t.kind == 1) emit("movsx rax, byte ptr [rax]");
      else if (t.kind == 2) emit("movsx rax, word ptr [rax]");
      else if (t.kind == 4) emit("movsxd rax, dword ptr [rax]");
      else emit("mov rax, qword ptr [rax]");
      break;
    case BaseType::kLogical:
      if (t.kind == 1) emit("movzx eax, byte ptr [rax]");
      else if (t.kind == 2) emit("movzx eax, word ptr [rax]");
      else if (t.kind == 4) emit("mov eax, dword ptr [rax]");
      else emit("mov rax, qword ptr [rax]");
      break;
    case BaseType::kReal: emit(std::string("mov") + (t.kind == 4 ? "ss xmm0, dword ptr [rax]" : "sd xmm0, qword ptr [rax]")); break;
    case BaseType::kComplex:
      if (t.kind == 4) {
        emit("movss xmm0, dword ptr [rax]");
        emit("movss xmm1, dword ptr [rax+4]");
      } else {
        emit("movsd xmm0, qword ptr [rax]");
        emit("movsd xmm1, qword ptr [rax+8]");
      }
      break;
    case BaseType::kCharacter:
    case BaseType::kDerived: break;
  }
}

void RoutineCompiler::store(const Type& t, const char* reg) {
  std::string r = reg;
  switch (t.base) {
    case BaseType::kInteger:
    case BaseType::kLogical: {
      const char* src = t.kind == 1 ? "al" : t.kind == 2 ? "ax" : t.kind == 4 ? "eax" : "rax";
      emit(std::string("mov ") + width(t.kind) + "[" + r + "], " + src);
      break;
    }
    case BaseType::kReal:
      emit(std::string("mov") + sd(t) + " " + width(t.kind) + "[" + r + "], xmm0");
      break;
    case BaseType::kComplex:
      emit(std::string("mov") + sd(t) + " " + width(t.kind) + "[" + r + "], xmm0");
      emit(std::string("mov") + sd(t) + " " + width(t.kind) + "[" + r + "+" + std::to_string(t.kind) + "], xmm1");
      break;
    default: break;
  }
}

void RoutineCompiler::spill(const Type& t, std::int64_t temp) {
  switch (t.base) {
    case BaseType::kReal: emit(std::string("mov") + sd(t) + " " + width(t.kind) + temp_mem(temp) + ", xmm0"); break;
    case BaseType::kComplex:
      emit(std::string("mov") + sd(t) + " " + width(t.kind) + temp_mem(temp) + ", xmm0");
      emit(std::string("mov") + sd(t) + " " + width(t.kind) + temp_mem(temp, t.kind) + ", xmm1");
      break;
    case BaseType::kCharacter:
      emit("mov qword ptr " + temp_mem(temp) + ", rax");
      emit("mov qword ptr " + temp_mem(temp, 8) + ", rdx");
      break;
    default: emit("mov qword ptr " + temp_mem(temp) + ", rax"); break;
  }
}

void RoutineCompiler::reload(const Type& t, std::int64_t temp) {
  switch (t.base) {
    case BaseType::kReal: emit(std::string("mov") + sd(t) + " xmm0, " + width(t.kind) + temp_mem(temp)); break;
    case BaseType::kComplex:
      emit(std::string("mov") + sd(t) + " xmm0, " + width(t.kind) + temp_mem(temp));
      emit(std::string("mov") + sd(t) + " xmm1, " + width(t.kind) + temp_mem(temp, t.kind));
      break;
    case BaseType::kCharacter:
      emit("mov rax, qword ptr " + temp_mem(temp));
      emit("mov rdx, qword ptr " + temp_mem(temp, 8));
      break;
    default: emit("mov rax, qword ptr " + temp_mem(temp)); break;
  }
}

void RoutineCompiler::to_secondary(const Type& t) {
  switch (t.base) {
    case BaseType::kReal: emit("movaps xmm1, xmm0"); break;
    case BaseType::kComplex:
      emit("movaps xmm2, xmm0");
      emit("movaps xmm3, xmm1");
      break;
    default: emit("mov rcx, rax"); break;
  }
}

void RoutineCompiler::normalise_integer(int kind) {
  if (kind == 1) emit("movsx rax, al");
  else if (kind == 2) emit("movsx rax, ax");
  else if (kind == 4) emit("movsxd rax, eax");
}

void RoutineCompiler::convert(const Type& from, const Type& to, const SourcePos& pos) {
  auto bad = [&]() { fail(pos, "cannot convert " + from.name() + " to " + to.name()); };
  switch (to.base) {
    case BaseType::kInteger:
      if (from.base == BaseType::kInteger) {
        if (to.kind < from.kind) normalise_integer(to.kind);
      } else if (from.base == BaseType::kReal || from.base == BaseType::kComplex) {
        emit(std::string("cvtt") + sd(from) + "2si rax, xmm0");
        normalise_integer(to.kind);
      } else {
        bad();
      }
      return;
    case BaseType::kReal:
    case BaseType::kComplex: {
      if (from.base == BaseType::kInteger) {
        emit(std::string("cvtsi2") + sd(to) + " xmm0, rax");
        if (to.base == BaseType::kComplex) emit("xorps xmm1, xmm1");
        return;
      }
      if (from.base != BaseType::kReal && from.base != BaseType::kComplex) bad();
      if (from.kind != to.kind) {
        emit(from.kind == 4 ? "cvtss2sd xmm0, xmm0" : "cvtsd2ss xmm0, xmm0");
        if (from.base == BaseType::kComplex && to.base == BaseType::kComplex)
          emit(from.kind == 4 ? "cvtss2sd xmm1, xmm1" : "cvtsd2ss xmm1, xmm1");
      }
      if (to.base == BaseType::kComplex && from.base == BaseType::kReal) emit("xorps xmm1, xmm1");
      return;
    }
    case BaseType::kLogical:
      if (from.base != BaseType::kLogical) bad();
      return;
    case BaseType::kCharacter:
      if (from.base != BaseType::kCharacter) bad();
      return;
    case BaseType::kDerived:
      if (!(from == to)) bad();
      return;
  }
}

Type RoutineCompiler::value_as(const Expr& e, const Type& t) {
  Type from = value(e);
  convert(from, t, e.pos);
  return t;
}

// ---- values ----

Type RoutineCompiler::literal(const Expr& e) {
  ConstValue c = eval_constant(e, scope_);
  switch (c.type.base) {
    case BaseType::kInteger:
    case BaseType::kLogical:
      if (c.i == 0) emit("xor eax, eax");
      else emit("mov rax, " + std::to_string(c.i));
      break;
    case BaseType::kReal:
      emit(std::string("mov") + sd(c.type) + " xmm0, " + width(c.type.kind) + "[rip+" + comp_.real_literal(c.r, c.type.kind) + "]");
      break;
    case BaseType::kComplex:
      emit(std::string("mov") + sd(c.type) + " xmm0, " + width(c.type.kind) + "[rip+" + comp_.real_literal(c.r, c.type.kind) + "]");
      emit(std::string("mov") + sd(c.type) + " xmm1, " + width(c.type.kind) + "[rip+" + comp_.real_literal(c.im, c.type.kind) + "]");
      break;
    case BaseType::kCharacter:
      emit("lea rax, [rip+" + comp_.string_literal(c.s) + "]");
      emit("mov edx, " + std::to_string(c.s.size()));
      break;
    case BaseType::kDerived: fail(e.pos, "unexpected constant");
  }
  return c.type;
}

Type RoutineCompiler::value(const Expr& e) {
  if (is_constant_expr(e, scope_)) return literal(e);
  switch (e.kind) {
    case ExprKind::kName:
    case ExprKind::kComponent:
    case ExprKind::kApply: {
      if (e.kind == ExprKind::kName) {
        bool from_host = false;
        Symbol* s = scope_.lookup(e.text, &from_host);
        if (s && (s->cls == Symbol::kProcedure || s->cls == Symbol::kDummyProcedure))
          fail(e.pos, "the procedure '" + e.text + "' is used as a value");
      }
      if (is_designator(e)) {
        Designator d = address(e);
        if (d.whole_array) fail(e.pos, "an array is used where a scalar is needed");
        load(d.type);
        return d.type;
      }
      // A function reference or an intrinsic.
      if (e.kind != ExprKind::kApply || e.base->kind != ExprKind::kName)
        fail(e.pos, "not a function reference");
      const std::string& name = e.base->text;
      for (const auto& k : e.keywords)
        if (!k.empty() && k != "kind" && k != "dim") fail(e.pos, "keyword arguments are not supported");
      bool from_host = false;
      Symbol* s = scope_.lookup(name, &from_host);
      if (!s) {
        if (const DerivedType* t = scope_.lookup_type(name)) return structure_constructor(e, t);
      }
      bool user_procedure = s && (s->cls == Symbol::kProcedure || s->cls == Symbol::kDummyProcedure);
      if (!user_procedure && is_intrinsic(name) && !(s && s->cls == Symbol::kVariable && s->external))
        return intrinsic(e, name);
      Symbol* p = procedure_symbol(name, e.pos, &from_host, true);
      if (!p->is_function && p->unit) fail(e.pos, "'" + name + "' is a SUBROUTINE");
      for (const auto& a : e.args)
        if (a && a->kind == ExprKind::kRange) fail(a->pos, "array sections are not supported");
      return call(p, from_host, e.args, e.pos, true);
    }
    case ExprKind::kUnary: {
      if (e.text == ".not.") {
        Type t = value(*e.args[0]);
        if (t.base != BaseType::kLogical) fail(e.pos, ".NOT. needs a LOGICAL operand");
        emit("test rax, rax");
        emit("sete al");
        emit("movzx eax, al");
        return logical_type(4);
      }
      Type t = value(*e.args[0]);
      if (e.text == "()" || e.text == "+") {
        if (e.text == "+" && !t.is_numeric()) fail(e.pos, "unary + needs a number");
        if (t.base == BaseType::kDerived || t.base == BaseType::kCharacter) {
          // (x) is a value: copy it so that the callee cannot change x.
          std::int64_t size = t.base == BaseType::kCharacter ? std::max<std::int64_t>(t.len, 0) : t.size();
          if (t.base == BaseType::kCharacter && t.len < 0) return t;
          std::int64_t tmp = alloc_temp(size);
          std::int64_t save = alloc_temp(16);
          spill(t, save);
          emit("mov rdx, rax");
          emit("lea rcx, " + temp_mem(tmp));
          emit("mov r8, " + std::to_string(size));
          emit("call memmove");
          emit("lea rax, " + temp_mem(tmp));
          if (t.base == BaseType::kCharacter) emit("mov rdx, qword ptr " + temp_mem(save, 8));
        }
        return t;
      }
      switch (t.base) {
        case BaseType::kInteger:
          emit("neg rax");
          normalise_integer(t.kind);
          break;
        case BaseType::kReal:
          emit("xorps xmm1, xmm1");
          emit(std::string("sub") + sd(t) + " xmm1, xmm0");
          emit("movaps xmm0, xmm1");
          break;
        case BaseType::kComplex:
          emit("xorps xmm2, xmm2");
          emit(std::string("sub") + sd(t) + " xmm2, xmm0");
          emit("xorps xmm3, xmm3");
          emit(std::string("sub") + sd(t) + " xmm3, xmm1");
          emit("movaps xmm0, xmm2");
          emit("movaps xmm1, xmm3");
          break;
        default: fail(e.pos, "cannot negate a " + t.name());
      }
      return t;
    }
    case ExprKind::kBinary: return binary(e);
    case ExprKind::kArrayConstructor: fail(e.pos, "array constructors are only supported in initial values");
    case ExprKind::kRange: fail(e.pos, "array sections are not supported");
    default: return literal(e);
  }
}

Type RoutineCompiler::arithmetic_type(const Type& a, const Type& b, const SourcePos& pos, const std::string& op) {
  if (!a.is_numeric() || !b.is_numeric())
    fail(pos, "operator " + op + " cannot take " + a.name() + " and " + b.name());
  if (a.base == BaseType::kInteger && b.base == BaseType::kInteger) return integer_type(std::max(a.kind, b.kind));
  int ka = a.base == BaseType::kInteger ? 0 : a.kind, kb = b.base == BaseType::kInteger ? 0 : b.kind;
  int kind = std::max(ka, kb);
  if (a.base == BaseType::kComplex || b.base == BaseType::kComplex) return complex_type(kind);
  return real_type(kind);
}

Type RoutineCompiler::binary(const Expr& e) {
  const std::string& op = e.text;
  const Expr& l = *e.args[0];
  const Expr& r = *e.args[1];
  if (op == ".and." || op == ".or.") {
    std::string done = comp_.new_label();
    Type lt = value(l);
    if (lt.base != BaseType::kLogical) fail(l.pos, op + " needs LOGICAL operands");
    emit("test rax, rax");
    emit(op == ".and." ? "jz " + done : "jnz " + done);
    Type rt = value(r);
    if (rt.base != BaseType::kLogical) fail(r.pos, op + " needs LOGICAL operands");
    label(done);
    emit("test rax, rax");
    emit("setne al");
    emit("movzx eax, al");
    return logical_type(4);
  }
  if (op == "//") return concatenate(e);
  if (op == "**") return power(e);
  Type lt = value(l);
  std::int64_t tl = alloc_temp(16);
  spill(lt, tl);
  if (op == "==" || op == "/=" || op == "<" || op == "<=" || op == ">" || op == ">=" || op == ".eqv." ||
      op == ".neqv.")
    return compare(e, lt, tl);
  Type rt = value(r);
  Type t = arithmetic_type(lt, rt, e.pos, op);
  convert(rt, t, r.pos);
  to_secondary(t);
  reload(lt, tl);
  convert(lt, t, l.pos);
  if (t.base == BaseType::kInteger) {
    if (op == "+") emit("add rax, rcx");
    else if (op == "-") emit("sub rax, rcx");
    else if (op == "*") emit("imul rax, rcx");
    else {
      emit("cqo");
      emit("idiv rcx");
    }
    normalise_integer(t.kind);
    return t;
  }
  std::string s = sd(t);
  if (t.base == BaseType::kReal) {
    const char* mn = op == "+" ? "add" : op == "-" ? "sub" : op == "*" ? "mul" : "div";
    emit(std::string(mn) + s + " xmm0, xmm1");
    return t;
  }
  // COMPLEX: left in XMM0:XMM1 (a, b), right in XMM2:XMM3 (c, d).
  if (op == "+" || op == "-") {
    const char* mn = op == "+" ? "add" : "sub";
    emit(std::string(mn) + s + " xmm0, xmm2");
    emit(std::string(mn) + s + " xmm1, xmm3");
  } else if (op == "*") {
    emit("movaps xmm4, xmm0");
    emit("mul" + s + " xmm4, xmm2");  // ac
    emit("movaps xmm5, xmm1");
    emit("mul" + s + " xmm5, xmm3");  // bd
    emit("sub" + s + " xmm4, xmm5");  // ac - bd
    emit("mul" + s + " xmm0, xmm3");  // ad
    emit("mul" + s + " xmm1, xmm2");  // bc
    emit("add" + s + " xmm1, xmm0");  // ad + bc
    emit("movaps xmm0, xmm4");
  } else {
    std::int64_t den = alloc_temp(8);
    emit("movaps xmm4, xmm2");
    emit("mul" + s + " xmm4, xmm2");
    emit("movaps xmm5, xmm3");
    emit("mul" + s + " xmm5, xmm3");
    emit("add" + s + " xmm4, xmm5");  // c*c + d*d
    emit("mov" + s + " " + width(t.kind) + temp_mem(den) + ", xmm4");
    emit("movaps xmm4, xmm0");
    emit("mul" + s + " xmm4, xmm2");  // ac
    emit("movaps xmm5, xmm1");
    emit("mul" + s + " xmm5, xmm3");  // bd
    emit("add" + s + " xmm4, xmm5");  // ac + bd
    emit("movaps xmm5, xmm1");
    emit("mul" + s + " xmm5, xmm2");  // bc
    emit("mul" + s + " xmm0, xmm3");  // ad
    emit("sub" + s + " xmm5, xmm0");  // bc - ad
    emit("div" + s + " xmm4, " + width(t.kind) + temp_mem(den));
    emit("div" + s + " xmm5, " + width(t.kind) + temp_mem(den));
    emit("movaps xmm0, xmm4");
    emit("movaps xmm1, xmm5");
  }
  return t;
}

Type RoutineCompiler::compare(const Expr& e, const Type& lt, std::int64_t tl) {
  const std::string& op = e.text;
  const Expr& r = *e.args[1];
  Type rt = value(r);
  static const struct { const char* op; const char* signed_cc; const char* float_cc; } ccs[] = {
      {"==", "e", "e"}, {"/=", "ne", "ne"}, {"<", "l", "b"}, {"<=", "le", "be"}, {">", "g", "a"}, {">=", "ge", "ae"},
      {".eqv.", "e", "e"}, {".neqv.", "ne", "ne"}};
  const char* signed_cc = "e";
  const char* float_cc = "e";
  for (const auto& c : ccs)
    if (op == c.op) {
      signed_cc = c.signed_cc;
      float_cc = c.float_cc;
    }
  bool logical_op = op == ".eqv." || op == ".neqv.";
  if (logical_op || lt.base == BaseType::kLogical || rt.base == BaseType::kLogical) {
    if (!logical_op || lt.base != BaseType::kLogical || rt.base != BaseType::kLogical)
      fail(e.pos, "LOGICAL values are compared with .EQV. and .NEQV.");
    emit("test rax, rax");
    emit("setne cl");
    emit("cmp qword ptr " + temp_mem(tl) + ", 0");
    emit("setne al");
    emit("cmp al, cl");
    emit(std::string("set") + signed_cc + " al");
    emit("movzx eax, al");
    return logical_type(4);
  }
  if (lt.base == BaseType::kCharacter || rt.base == BaseType::kCharacter) {
    if (lt.base != rt.base) fail(e.pos, "cannot compare " + lt.name() + " with " + rt.name());
    emit("mov r8, rax");
    emit("mov r9, rdx");
    emit("mov rcx, qword ptr " + temp_mem(tl));
    emit("mov rdx, qword ptr " + temp_mem(tl, 8));
    emit("call __f95_compare_strings");
    emit("cmp eax, 0");
    emit(std::string("set") + signed_cc + " al");
    emit("movzx eax, al");
    return logical_type(4);
  }
  Type t = arithmetic_type(lt, rt, e.pos, op);
  convert(rt, t, r.pos);
  to_secondary(t);
  reload(lt, tl);
  convert(lt, t, e.args[0]->pos);
  if (t.base == BaseType::kInteger) {
    emit("cmp rax, rcx");
    emit(std::string("set") + signed_cc + " al");
  } else if (t.base == BaseType::kReal) {
    std::string s = t.kind == 4 ? "ss" : "sd";
    emit("ucomi" + s + " xmm0, xmm1");
    if (op == "==") {
      emit("sete al");
      emit("setnp cl");
      emit("and al, cl");
    } else if (op == "/=") {
      emit("setne al");
      emit("setp cl");
      emit("or al, cl");
    } else {
      emit(std::string("set") + float_cc + " al");
      emit("setnp cl");
      emit("and al, cl");
    }
  } else {
    if (op != "==" && op != "/=") fail(e.pos, "COMPLEX values can only be compared with == and /=");
    std::string s = t.kind == 4 ? "ss" : "sd";
    emit("ucomi" + s + " xmm0, xmm2");
    emit("sete al");
    emit("setnp cl");
    emit("and al, cl");
    emit("ucomi" + s + " xmm1, xmm3");
    emit("sete dl");
    emit("setnp cl");
    emit("and dl, cl");
    emit("and al, dl");
    if (op == "/=") emit("xor al, 1");
  }
  emit("movzx eax, al");
  return logical_type(4);
}

Type RoutineCompiler::power(const Expr& e) {
  const Expr& l = *e.args[0];
  const Expr& r = *e.args[1];
  Type lt = value(l);
  std::int64_t tl = alloc_temp(16);
  spill(lt, tl);
  Type rt = value(r);
  if (!lt.is_numeric() || !rt.is_numeric()) fail(e.pos, "** needs numbers");
  if (rt.base == BaseType::kInteger) {
    convert(rt, integer_type(8), r.pos);
    if (lt.base == BaseType::kInteger) {
      emit("mov rdx, rax");
      emit("mov rcx, qword ptr " + temp_mem(tl));
      emit("call __f95_power_integer");
      Type t = integer_type(std::max(lt.kind, rt.kind));
      normalise_integer(t.kind);
      return t;
    }
    if (lt.base == BaseType::kReal) {
      emit("mov rdx, rax");
      reload(lt, tl);
      convert(lt, real_type(8), l.pos);
      emit("call __f95_power_real");
      convert(real_type(8), lt, e.pos);
      return lt;
    }
    std::int64_t out = alloc_temp(16);
    emit("mov r8, rax");
    reload(lt, tl);
    convert(lt, complex_type(8), l.pos);
    emit("lea r9, " + temp_mem(out));
    emit("call __f95_power_complex");
    reload(complex_type(8), out);
    convert(complex_type(8), lt, e.pos);
    return lt;
  }
  if (lt.base == BaseType::kComplex || rt.base == BaseType::kComplex)
    fail(e.pos, "COMPLEX ** non-integer is not supported");
  Type t = arithmetic_type(lt, rt, e.pos, "**");
  convert(rt, real_type(8), r.pos);
  emit("movaps xmm1, xmm0");
  reload(lt, tl);
  convert(lt, real_type(8), l.pos);
  emit("call pow");
  convert(real_type(8), t, e.pos);
  return t;
}

std::int64_t RoutineCompiler::max_length(const Expr& e) {
  switch (e.kind) {
    case ExprKind::kString: return static_cast<std::int64_t>(e.text.size());
    case ExprKind::kBinary:
      if (e.text == "//") {
        std::int64_t a = max_length(*e.args[0]), b = max_length(*e.args[1]);
        return a < 0 || b < 0 ? -1 : a + b;
      }
      return -1;
    case ExprKind::kUnary: return e.text == "()" ? max_length(*e.args[0]) : -1;
    case ExprKind::kName: {
      Symbol* s = scope_.lookup(e.text);
      return s && s->type.base == BaseType::kCharacter ? s->type.len : -1;
    }
    case ExprKind::kComponent: {
      // The component's declared length.
      const Expr* b = e.base.get();
      std::vector<std::string> path{e.text};
      while (b->kind == ExprKind::kComponent || b->kind == ExprKind::kApply) {
        if (b->kind == ExprKind::kComponent) path.push_back(b->text);
        b = b->base.get();
      }
      if (b->kind != ExprKind::kName) return -1;
      Symbol* s = scope_.lookup(b->text);
      if (!s || s->type.base != BaseType::kDerived) return -1;
      const DerivedType* t = s->type.derived;
      const Component* c = nullptr;
      for (auto it = path.rbegin(); it != path.rend(); ++it) {
        if (!t) return -1;
        c = t->find(*it);
        if (!c) return -1;
        t = c->type.derived;
      }
      return c && c->type.base == BaseType::kCharacter ? c->type.len : -1;
    }
    case ExprKind::kApply: {
      if (e.args.size() == 1 && e.args[0] && e.args[0]->kind == ExprKind::kRange && e.args[0]->args[1]) {
        // A substring with constant bounds has a known length even in a CHARACTER(*).
        ConstValue lo, hi;
        bool lo_known = !e.args[0]->args[0] || (is_constant_expr(*e.args[0]->args[0], scope_) &&
                                                 try_eval_constant(*e.args[0]->args[0], scope_, &lo));
        if (!e.args[0]->args[0]) lo.i = 1;
        if (lo_known && is_constant_expr(*e.args[0]->args[1], scope_) &&
            try_eval_constant(*e.args[0]->args[1], scope_, &hi))
          return std::max<std::int64_t>(hi.i - lo.i + 1, 0);
      }
      if (e.base->kind == ExprKind::kName) {
        const std::string& n = e.base->text;
        Symbol* s = scope_.lookup(n);
        if (s && s->type.base == BaseType::kCharacter) return s->type.len;
        if (!s && n == "char") return 1;
        if (!s && n == "trim" && e.args.size() == 1) return max_length(*e.args[0]);
        return -1;
      }
      return max_length(*e.base);
    }
    default: return -1;
  }
}

Type RoutineCompiler::concatenate(const Expr& e) {
  std::int64_t total = max_length(e);
  Type lt = value(*e.args[0]);
  if (lt.base != BaseType::kCharacter) fail(e.pos, "// needs CHARACTER operands");
  std::int64_t tl = alloc_temp(16);
  spill(lt, tl);
  Type rt = value(*e.args[1]);
  if (rt.base != BaseType::kCharacter) fail(e.pos, "// needs CHARACTER operands");
  std::int64_t tr = alloc_temp(16);
  spill(rt, tr);
  std::int64_t buf = -1, out = alloc_temp(8);
  if (total >= 0) {
    buf = alloc_temp(total);
    emit("lea rax, " + temp_mem(buf));
  } else {
    // An operand of unknown length (a CHARACTER(*) dummy): the result goes to the run-time
    // library's scratch ring, which lives long enough for one statement.
    emit("mov rcx, qword ptr " + temp_mem(tl, 8));
    emit("add rcx, qword ptr " + temp_mem(tr, 8));
    emit("call __f95_scratch");
  }
  emit("mov qword ptr " + temp_mem(out) + ", rax");
  emit("mov rcx, rax");
  emit("mov r9, qword ptr " + temp_mem(tr));
  emit("mov rax, qword ptr " + temp_mem(tr, 8));
  emit("mov qword ptr [rsp+32], rax");
  emit("mov rdx, qword ptr " + temp_mem(tl));
  emit("mov r8, qword ptr " + temp_mem(tl, 8));
  emit("call __f95_concatenate");
  emit("mov rdx, rax");
  emit("mov rax, qword ptr " + temp_mem(out));
  return character_type(total >= 0 ? total : Type::kAssumedLength);
}

// A structure constructor TYPE(a, b, ...): every component in order, built in a temporary.
Type RoutineCompiler::structure_constructor(const Expr& e, const DerivedType* t) {
  if (e.args.size() != t->components.size())
    fail(e.pos, "the constructor of " + t->name + " needs " + std::to_string(t->components.size()) + " values");
  std::int64_t tmp = alloc_temp(t->size);
  for (size_t i = 0; i < e.args.size(); ++i) {
    const Component& c = t->components[i];
    const Expr& a = *e.args[i];
    if (c.shape.is_array()) fail(a.pos, "constructors of types with array components are not supported");
    if (c.pointer) {
      if (!(a.kind == ExprKind::kApply && a.base->kind == ExprKind::kName && a.base->text == "null" && a.args.empty()))
        fail(a.pos, "a POINTER component can only be constructed from NULL()");
      emit("mov qword ptr " + temp_mem(tmp, c.offset) + ", 0");
      continue;
    }
    if (c.type.base == BaseType::kCharacter) {
      Type v = value(a);
      if (v.base != BaseType::kCharacter) fail(a.pos, "component " + c.name + " needs a CHARACTER value");
      emit("mov r8, rax");
      emit("mov r9, rdx");
      emit("lea rcx, " + temp_mem(tmp, c.offset));
      emit("mov edx, " + std::to_string(c.type.len));
      emit("call __f95_assign_string");
    } else if (c.type.base == BaseType::kDerived) {
      Type v = value(a);
      if (!(v == c.type)) fail(a.pos, "component " + c.name + " needs a " + c.type.name());
      emit("mov rdx, rax");
      emit("lea rcx, " + temp_mem(tmp, c.offset));
      emit("mov r8, " + std::to_string(c.type.size()));
      emit("call memmove");
    } else {
      value_as(a, c.type);
      emit("lea r11, " + temp_mem(tmp, c.offset));
      store(c.type, "r11");
    }
  }
  emit("lea rax, " + temp_mem(tmp));
  return Type{BaseType::kDerived, 0, 1, t};
}

// ---- designators ----

bool RoutineCompiler::is_designator(const Expr& e) {
  switch (e.kind) {
    case ExprKind::kName: {
      bool from_host = false;
      Symbol* s = symbol(e.text, e.pos, &from_host);
      return s->cls == Symbol::kVariable || s->cls == Symbol::kParameter;
    }
    case ExprKind::kComponent: return is_designator(*e.base);
    case ExprKind::kApply: {
      if (e.base->kind == ExprKind::kName) {
        Symbol* s = scope_.lookup(e.base->text);
        if (!s || s->cls != Symbol::kVariable) return false;
        if (s == result_ && !s->is_array() && !(s->type.base == BaseType::kCharacter && e.args.size() == 1 &&
                                               e.args[0] && e.args[0]->kind == ExprKind::kRange))
          return false;  // a recursive reference to the function itself
        if (s->is_array()) return true;
        return s->type.base == BaseType::kCharacter && e.args.size() == 1 && e.args[0] &&
               e.args[0]->kind == ExprKind::kRange;
      }
      return (e.base->kind == ExprKind::kApply || e.base->kind == ExprKind::kComponent) && is_designator(*e.base);
    }
    default: return false;
  }
}

std::string RoutineCompiler::desc_operand(const Symbol* s, bool from_host, int dim, int word) {
  std::int64_t off = s->desc_offset + 24 * dim + 8 * word;
  if (s->storage == Storage::kStatic) return "[rip+__f95_static+" + std::to_string(off) + "]";
  if (from_host) {
    emit("mov r10, qword ptr " + local_mem(host_link_));
    return "[r10+" + std::to_string(kFrameOffset + off) + "]";
  }
  return local_mem(off);
}

std::string RoutineCompiler::storage_operand(const Symbol* s, bool from_host, std::int64_t extra) {
  switch (s->storage) {
    case Storage::kFrame:
      if (from_host) {
        emit("mov r10, qword ptr " + local_mem(host_link_));
        return "[r10+" + std::to_string(kFrameOffset + s->offset + extra) + "]";
      }
      return local_mem(s->offset, extra);
    case Storage::kDummy:
      if (from_host) {
        emit("mov r10, qword ptr " + local_mem(host_link_));
        return "[r10+" + std::to_string(host_->frame_size_ + 8 * s->dummy_slot + extra) + "]";
      }
      return "[rsp+@F" + std::to_string(8 * s->dummy_slot + extra) + "@]";
    case Storage::kStatic: return "[rip+__f95_static+" + std::to_string(s->offset + extra) + "]";
    case Storage::kCommon:
      return "[rip+" + comp_.common(s->common_block).symbol + "+" + std::to_string(s->offset + extra) + "]";
    default: return "[rax]";
  }
}

RoutineCompiler::Designator RoutineCompiler::name_address(const Expr& e, Symbol* s, bool from_host, bool want_slot) {
  Designator d;
  d.sym = s;
  d.from_host = from_host;
  d.type = s->type;
  if (s->cls == Symbol::kParameter) {
    if (want_slot) fail(e.pos, "'" + s->name + "' is a constant");
    emit("lea rax, [rip+" + comp_.string_literal(std::string(s->value.begin(), s->value.end())) + "]");
    if (s->type.base == BaseType::kCharacter) emit("mov edx, " + std::to_string(s->value.size()));
    d.constant = true;
    return d;
  }
  if (s->cls != Symbol::kVariable) fail(e.pos, "'" + s->name + "' is not a variable");
  if (s->storage == Storage::kNone) place(s);
  if (s->storage == Storage::kDummy) emit("mov rax, qword ptr " + storage_operand(s, from_host, 0));
  else emit("lea rax, " + storage_operand(s, from_host, 0));
  if (s->pointer || s->allocatable) {
    d.is_pointer = s->pointer;
    if (want_slot) {
      d.pointer_slot = true;
      d.shape = s->is_array() ? &s->shape : nullptr;
      return d;
    }
    emit("mov rax, qword ptr [rax]");
  }
  if (s->is_array()) {
    d.whole_array = true;
    d.shape = &s->shape;
  }
  if (s->type.base == BaseType::kCharacter) {
    if (s->type.len >= 0) emit("mov edx, " + std::to_string(s->type.len));
    else emit("mov rdx, qword ptr " + (from_host ? (emit("mov r10, qword ptr " + local_mem(host_link_)),
                                                    "[r10+" + std::to_string(kFrameOffset + s->char_len_offset) + "]")
                                                 : local_mem(s->char_len_offset)));
  }
  return d;
}

void RoutineCompiler::dim_lower(const Designator& d, int dim, const char* reg) {
  if (d.shape->constant() || (d.shape->kind == Shape::kExplicit && !d.sym))
    emit(std::string("mov ") + reg + ", " + std::to_string(d.shape->dims[dim].lower));
  else
    emit(std::string("mov ") + reg + ", qword ptr " + desc_operand(d.sym, d.from_host, dim, 0));
}

void RoutineCompiler::dim_extent(const Designator& d, int dim, const char* reg) {
  if (d.shape->constant())
    emit(std::string("mov ") + reg + ", " + std::to_string(d.shape->dims[dim].extent()));
  else
    emit(std::string("mov ") + reg + ", qword ptr " + desc_operand(d.sym, d.from_host, dim, 1));
}

void RoutineCompiler::array_count(const Designator& d, const SourcePos& pos) {
  if (d.shape->kind == Shape::kAssumedSize) fail(pos, "the size of the assumed-size array '" + d.sym->name + "' is unknown");
  if (d.shape->constant()) {
    emit("mov rax, " + std::to_string(d.shape->element_count()));
    return;
  }
  emit("mov eax, 1");
  for (int k = 0; k < d.shape->rank(); ++k) emit("imul rax, qword ptr " + desc_operand(d.sym, d.from_host, k, 1));
}

RoutineCompiler::Designator RoutineCompiler::element_address(const Expr& e, Designator d) {
  int rank = d.shape->rank();
  if (static_cast<int>(e.args.size()) != rank)
    fail(e.pos, "'" + (d.sym ? d.sym->name : std::string("array")) + "' needs " + std::to_string(rank) + " subscript(s)");
  for (const auto& a : e.args)
    if (!a || a->kind == ExprKind::kRange) fail(e.pos, "array sections are not supported");
  std::int64_t base = alloc_temp(8);
  emit("mov qword ptr " + temp_mem(base) + ", rax");
  std::vector<std::int64_t> subs;
  for (int k = 0; k < rank; ++k) {
    ConstValue c;
    if (is_constant_expr(*e.args[k], scope_) && try_eval_constant(*e.args[k], scope_, &c) &&
        c.type.base == BaseType::kInteger) {
      subs.push_back(-1);
      continue;
    }
    value_as(*e.args[k], integer_type(8));
    std::int64_t t = alloc_temp(8);
    emit("mov qword ptr " + temp_mem(t) + ", rax");
    subs.push_back(t);
  }
  bool constant = d.shape->constant();
  emit("xor ecx, ecx");
  std::int64_t stride = d.type.size();
  for (int k = 0; k < rank; ++k) {
    if (subs[k] < 0) value_as(*e.args[k], integer_type(8));
    else emit("mov rax, qword ptr " + temp_mem(subs[k]));
    bool last_assumed = d.shape->kind == Shape::kAssumedSize && k + 1 == rank;
    if (constant) {
      const Dimension& dim = d.shape->dims[k];
      if (dim.lower) emit("sub rax, " + std::to_string(dim.lower));
      if (comp_.opts.check) {
        std::string ok = comp_.new_label();
        emit("cmp rax, " + std::to_string(dim.extent()));
        emit("jb " + ok);
        raise_error(kRuntimeErrorSubscript, "");
        label(ok);
      }
      if (stride != 1) emit("imul rax, rax, " + std::to_string(stride));
      stride *= dim.extent();
    } else {
      emit("sub rax, qword ptr " + desc_operand(d.sym, d.from_host, k, 0));
      if (comp_.opts.check && !last_assumed) {
        std::string ok = comp_.new_label();
        emit("cmp rax, qword ptr " + desc_operand(d.sym, d.from_host, k, 1));
        emit("jb " + ok);
        raise_error(kRuntimeErrorSubscript, "");
        label(ok);
      }
      emit("imul rax, qword ptr " + desc_operand(d.sym, d.from_host, k, 2));
    }
    emit("add rcx, rax");
  }
  emit("mov rax, qword ptr " + temp_mem(base));
  emit("add rax, rcx");
  Designator r = d;
  r.whole_array = false;
  r.shape = nullptr;
  if (d.type.base == BaseType::kCharacter) {
    if (d.type.len >= 0) emit("mov edx, " + std::to_string(d.type.len));
    else emit("mov rdx, qword ptr " + local_mem(d.sym->char_len_offset));
  }
  return r;
}

void RoutineCompiler::substring(const Expr& e, const Designator& d) {
  const Expr& range = *e.args[0];
  std::int64_t base = alloc_temp(16), lo = alloc_temp(8);
  spill(character_type(0), base);
  if (range.args[0]) value_as(*range.args[0], integer_type(8));
  else emit("mov eax, 1");
  emit("mov qword ptr " + temp_mem(lo) + ", rax");
  if (range.args[1]) value_as(*range.args[1], integer_type(8));
  else emit("mov rax, qword ptr " + temp_mem(base, 8));
  // length = max(hi - lo + 1, 0)
  emit("mov rdx, rax");
  emit("sub rdx, qword ptr " + temp_mem(lo));
  emit("inc rdx");
  emit("xor ecx, ecx");
  emit("test rdx, rdx");
  emit("cmovs rdx, rcx");
  if (comp_.opts.check) {
    std::string ok = comp_.new_label(), bad = comp_.new_label();
    emit("test rdx, rdx");
    emit("jz " + ok);
    emit("cmp qword ptr " + temp_mem(lo) + ", 1");
    emit("jl " + bad);
    emit("cmp rax, qword ptr " + temp_mem(base, 8));
    emit("jle " + ok);
    label(bad);
    raise_error(kRuntimeErrorSubstring, "");
    label(ok);
  }
  emit("mov rax, qword ptr " + temp_mem(base));
  emit("add rax, qword ptr " + temp_mem(lo));
  emit("dec rax");
  (void)d;
}

RoutineCompiler::Designator RoutineCompiler::address(const Expr& e, bool want_slot) {
  switch (e.kind) {
    case ExprKind::kName: {
      bool from_host = false;
      Symbol* s = symbol(e.text, e.pos, &from_host);
      return name_address(e, s, from_host, want_slot);
    }
    case ExprKind::kComponent: {
      Designator b = address(*e.base);
      if (b.whole_array) fail(e.pos, "components of whole arrays are not supported");
      if (b.type.base != BaseType::kDerived) fail(e.pos, "'%" + e.text + "' needs a derived-type value");
      const Component* c = b.type.derived->find(e.text);
      if (!c) fail(e.pos, "type " + b.type.derived->name + " has no component '" + e.text + "'");
      if (c->offset) emit("add rax, " + std::to_string(c->offset));
      Designator d;
      d.sym = b.sym;
      d.from_host = b.from_host;
      d.type = c->type;
      d.constant = b.constant;
      if (c->pointer) {
        d.is_pointer = true;
        if (want_slot) {
          d.pointer_slot = true;
          return d;
        }
        emit("mov rax, qword ptr [rax]");
      }
      if (c->shape.is_array()) {
        d.whole_array = true;
        d.shape = &c->shape;
        d.sym = nullptr;  // constant bounds: no descriptor words
      }
      if (c->type.base == BaseType::kCharacter) emit("mov edx, " + std::to_string(c->type.len));
      return d;
    }
    case ExprKind::kApply: {
      Designator b;
      if (e.base->kind == ExprKind::kName) {
        bool from_host = false;
        Symbol* s = symbol(e.base->text, e.base->pos, &from_host);
        b = name_address(*e.base, s, from_host, false);
      } else {
        b = address(*e.base);
      }
      if (b.whole_array) return element_address(e, b);
      if (b.type.base == BaseType::kCharacter && e.args.size() == 1 && e.args[0] &&
          e.args[0]->kind == ExprKind::kRange) {
        substring(e, b);
        Designator d = b;
        return d;
      }
      fail(e.pos, "subscripts on a scalar");
    }
    default: fail(e.pos, "expected a variable");
  }
}

// ---- calls ----

Symbol* RoutineCompiler::procedure_symbol(const std::string& name, const SourcePos& pos, bool* from_host,
                                          bool as_function) {
  Symbol* s = scope_.lookup(name, from_host);
  if (s) {
    if (s->cls == Symbol::kProcedure || s->cls == Symbol::kDummyProcedure) return s;
    if (s->cls == Symbol::kVariable && !s->is_array() && !s->pointer && !s->allocatable && s->owner == &scope_ &&
        s != result_) {
      if (s->storage == Storage::kDummy) {
        s->cls = Symbol::kDummyProcedure;
      } else {
        check_link_name(name, pos);
        s->cls = Symbol::kProcedure;
        s->proc_symbol = upper(name);
        s->storage = Storage::kNone;
      }
      s->is_function = as_function;
      return s;
    }
    if (s == result_) {
      // A recursive call of the function whose result variable carries its name.
      static thread_local Symbol self;
      self = Symbol{};
      self.name = name;
      self.cls = Symbol::kProcedure;
      self.proc_symbol = link_symbol_;
      self.is_function = true;
      self.type = result_->type;
      self.is_internal = host_ != nullptr;
      self.is_module_procedure = module_ != nullptr;
      self.owner = &scope_;
      self.unit = &unit_;
      return &self;
    }
    fail(pos, "'" + name + "' is not a procedure");
  }
  check_link_name(name, pos);
  s = scope_.add(name, pos);
  s->cls = Symbol::kProcedure;
  s->proc_symbol = upper(name);
  s->is_function = as_function;
  if (as_function && !scope_.implicit_type(name, &s->type))
    fail(pos, "function '" + name + "' has no type (IMPLICIT NONE)");
  if (from_host) *from_host = false;
  return s;
}

void RoutineCompiler::pass_argument(const Expr& a, std::int64_t slot, std::int64_t* len_slot) {
  *len_slot = -1;
  if (a.kind == ExprKind::kName) {
    bool from_host = false;
    Symbol* s = scope_.lookup(a.text, &from_host);
    if (s && (s->cls == Symbol::kProcedure || s->cls == Symbol::kDummyProcedure)) {
      if (s->cls == Symbol::kProcedure) {
        if (s->is_internal) fail(a.pos, "internal procedure '" + a.text + "' cannot be an actual argument");
        if (!s->unit && !s->is_module_procedure) comp_.referenced_externals.insert(s->proc_symbol);
        emit("lea rax, [rip+" + s->proc_symbol + "]");
      } else {
        emit("mov rax, qword ptr " + storage_operand(s, from_host && owner_is_routine(s), 0));
      }
      emit("mov qword ptr " + temp_mem(slot) + ", rax");
      return;
    }
  }
  if (is_designator(a)) {
    Designator d = address(a);
    if (d.constant && d.type.base != BaseType::kCharacter) {
      // Constants are copied: the callee may not write through the reference, but a
      // writable copy keeps a mistaken write from faulting in read-only data.
      std::int64_t tmp = alloc_temp(d.type.size());
      load(d.type);
      spill(d.type, tmp);
      emit("lea rax, " + temp_mem(tmp));
    }
    emit("mov qword ptr " + temp_mem(slot) + ", rax");
    if (d.type.base == BaseType::kCharacter) {
      *len_slot = alloc_temp(8);
      emit("mov qword ptr " + temp_mem(*len_slot) + ", rdx");
    }
    return;
  }
  Type t = value(a);
  if (t.base == BaseType::kCharacter || t.base == BaseType::kDerived) {
    emit("mov qword ptr " + temp_mem(slot) + ", rax");
    if (t.base == BaseType::kCharacter) {
      *len_slot = alloc_temp(8);
      emit("mov qword ptr " + temp_mem(*len_slot) + ", rdx");
    }
    return;
  }
  std::int64_t tmp = alloc_temp(t.size());
  spill(t, tmp);
  emit("lea rax, " + temp_mem(tmp));
  emit("mov qword ptr " + temp_mem(slot) + ", rax");
}

Type RoutineCompiler::call(Symbol* p, bool from_host, const std::vector<ExprPtr>& args, const SourcePos& pos,
                           bool as_function) {
  std::vector<std::string> outgoing;  // operands, in argument order
  if (p->cls == Symbol::kProcedure && p->is_internal) {
    // The host link: our own frame base when calling our internal procedure, else the
    // link we were given (a sibling, or ourselves recursively).
    std::int64_t t = alloc_temp(8);
    if (p->owner == &scope_ && p->proc_symbol != link_symbol_) emit("mov qword ptr " + temp_mem(t) + ", rsp");
    else {
      emit("mov rax, qword ptr " + local_mem(host_link_));
      emit("mov qword ptr " + temp_mem(t) + ", rax");
    }
    outgoing.push_back(temp_mem(t));
  }
  Type rt = p->type;
  bool by_pointer = as_function && (rt.base == BaseType::kComplex || rt.base == BaseType::kCharacter ||
                                    rt.base == BaseType::kDerived);
  std::int64_t result_tmp = -1;
  if (by_pointer) {
    if (rt.base == BaseType::kCharacter && rt.len < 0) fail(pos, "CHARACTER(*) function results are not supported");
    result_tmp = alloc_temp(rt.size());
    std::int64_t t = alloc_temp(8);
    emit("lea rax, " + temp_mem(result_tmp));
    emit("mov qword ptr " + temp_mem(t) + ", rax");
    outgoing.push_back(temp_mem(t));
  }
  std::vector<std::string> lengths;
  for (const auto& a : args) {
    if (!a) fail(pos, "empty argument");
    if (a->kind == ExprKind::kRange) fail(a->pos, "array sections are not supported");
    std::int64_t slot = alloc_temp(8), len = -1;
    pass_argument(*a, slot, &len);
    outgoing.push_back(temp_mem(slot));
    if (len >= 0) lengths.push_back(temp_mem(len));
  }
  outgoing.insert(outgoing.end(), lengths.begin(), lengths.end());
  if (static_cast<int>(outgoing.size()) > max_call_args_) fail(pos, "too many arguments");
  for (size_t i = 4; i < outgoing.size(); ++i) {
    emit("mov rax, qword ptr " + outgoing[i]);
    emit("mov qword ptr [rsp+" + std::to_string(32 + 8 * (i - 4)) + "], rax");
  }
  if (p->cls == Symbol::kDummyProcedure) emit("mov r11, qword ptr " + storage_operand(p, from_host && owner_is_routine(p), 0));
  for (size_t i = 0; i < outgoing.size() && i < 4; ++i) emit(std::string("mov ") + kArgRegisters[i] + ", qword ptr " + outgoing[i]);
  if (p->cls == Symbol::kDummyProcedure) {
    emit("call r11");
  } else {
    if (!p->unit && !p->is_module_procedure && !p->is_internal) comp_.referenced_externals.insert(p->proc_symbol);
    emit("call " + p->proc_symbol);
  }
  if (!as_function) return rt;
  if (by_pointer) {
    emit("lea rax, " + temp_mem(result_tmp));
    if (rt.base == BaseType::kComplex) load(rt);
    if (rt.base == BaseType::kCharacter) emit("mov edx, " + std::to_string(rt.len));
    return rt;
  }
  if (rt.base == BaseType::kInteger) normalise_integer(rt.kind);
  if (rt.base == BaseType::kLogical && rt.kind < 8) {
    emit(rt.kind == 1 ? "movzx eax, al" : rt.kind == 2 ? "movzx eax, ax" : "mov eax, eax");
  }
  return rt;
}

}  // namespace f95mini
