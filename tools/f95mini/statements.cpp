// Executable statements. Every statement line that makes code starts with one 0x90 (the
// line record points at it); jumps back to a loop's test skip that byte, so a line trap
// fires once per arrival at the line, not once per iteration of its own code.
#include "f95mini/routine_compiler.h"

namespace f95mini {

static const char* const kArgRegisters[4] = {"rcx", "rdx", "r8", "r9"};

void RoutineCompiler::entry_code() {
  int slots = first_dummy_slot_ - 1 + static_cast<int>(unit_.args.size()) + static_cast<int>(hidden_lengths_.size());
  for (int i = 0; i < slots && i < 4; ++i) emit("mov qword ptr " + home_mem(i + 1) + ", " + kArgRegisters[i]);
  if (comp_.opts.undef) {
    emit("lea rcx, " + local_mem(locals_base_));
    emit("mov edx, @U0@");
    emit("call __f95_fill_undefined");
  }
  if (host_) {
    emit("mov rax, qword ptr " + home_mem(1));
    emit("mov qword ptr " + local_mem(host_link_) + ", rax");
  }
  for (const auto& h : hidden_lengths_) {
    emit("mov rax, qword ptr " + home_mem(h.slot));
    emit("mov qword ptr " + local_mem(h.sym->char_len_offset) + ", rax");
  }
  // Pointers start disassociated and allocatables unallocated.
  for (Symbol* s : scope_.order) {
    if (s->storage == Storage::kFrame && (s->pointer || s->allocatable))
      emit("mov qword ptr " + local_mem(s->offset) + ", 0");
  }
  // Bounds of dummy arrays that depend on other arguments: lower bound, extent and byte
  // stride per dimension, computed once at entry as the language requires.
  for (const auto& a : unit_.args) {
    Symbol* s = scope_.find_local(a);
    if (!s->is_array() || s->shape.constant() || s->cls != Symbol::kVariable) continue;
    std::int64_t stride_known = s->type.size();
    for (int d = 0; d < s->shape.rank(); ++d) {
      const Dimension& dim = s->shape.dims[d];
      std::int64_t lower_t = alloc_temp(8);
      if (dim.lower_constant()) emit("mov rax, " + std::to_string(dim.lower));
      else value_as(*dim.lower_expr, integer_type(8));
      emit("mov qword ptr " + local_mem(s->desc_offset, 24 * d) + ", rax");
      emit("mov qword ptr " + temp_mem(lower_t) + ", rax");
      if (s->shape.kind == Shape::kAssumedSize && d + 1 == s->shape.rank()) {
        // An extent that puts the upper bound at 2^31, the compiler's mark of an unknown
        // last extent.
        emit("mov rcx, 2147483649");
        emit("sub rcx, rax");
      } else {
        if (dim.upper_constant()) emit("mov rax, " + std::to_string(dim.upper));
        else value_as(*dim.upper_expr, integer_type(8));
        emit("sub rax, qword ptr " + temp_mem(lower_t));
        emit("lea rcx, [rax+1]");
        emit("xor eax, eax");
        emit("test rcx, rcx");
        emit("cmovs rcx, rax");
      }
      emit("mov qword ptr " + local_mem(s->desc_offset, 24 * d + 8) + ", rcx");
      if (d == 0) {
        emit("mov rax, " + std::to_string(stride_known));
      } else {
        emit("mov rax, qword ptr " + local_mem(s->desc_offset, 24 * (d - 1) + 16));
        emit("imul rax, qword ptr " + local_mem(s->desc_offset, 24 * (d - 1) + 8));
      }
      emit("mov qword ptr " + local_mem(s->desc_offset, 24 * d + 16) + ", rax");
      temp_top_ = lower_t;
    }
  }
}

void RoutineCompiler::exit_code() {
  for (Symbol* s : scope_.order) {
    if (s->storage == Storage::kFrame && s->allocatable) {
      emit("mov rcx, qword ptr " + local_mem(s->offset));
      emit("call __f95_release");
    }
  }
  if (result_ && !result_by_pointer_) {
    emit("lea rax, " + local_mem(result_->offset));
    load(result_->type);
  }
}

void RoutineCompiler::block(const Block& b) {
  for (const auto& s : b) statement(*s);
}

void RoutineCompiler::statement(const Stmt& s) {
  if (s.kind != StmtKind::kIf || s.logical_if) line_start(s.pos);
  switch (s.kind) {
    case StmtKind::kAssign: assignment(s); break;
    case StmtKind::kPointerAssign: pointer_assignment(s); break;
    case StmtKind::kCall: call_statement(s); break;
    case StmtKind::kIf: if_construct(s); break;
    case StmtKind::kDo: do_loop(s); break;
    case StmtKind::kDoWhile: do_while(s); break;
    case StmtKind::kExit:
    case StmtKind::kCycle: {
      const LoopLabels* target = nullptr;
      for (auto it = loops_.rbegin(); it != loops_.rend(); ++it)
        if (s.name.empty() || it->construct == s.name) {
          target = &*it;
          break;
        }
      if (!target) fail(s.pos, s.name.empty() ? "EXIT or CYCLE outside a DO loop" : "no DO loop named '" + s.name + "'");
      emit("jmp " + (s.kind == StmtKind::kExit ? target->exit : target->cycle));
      break;
    }
    case StmtKind::kReturn: emit("jmp " + exit_label_); break;
    case StmtKind::kStop: stop(s); break;
    case StmtKind::kPrint: print(s); break;
    case StmtKind::kAllocate: allocate(s); break;
    case StmtKind::kDeallocate: deallocate(s, false); break;
    case StmtKind::kNullify: deallocate(s, true); break;
    case StmtKind::kContinue: break;
  }
  temp_top_ = 0;
}

void RoutineCompiler::assignment(const Stmt& s) {
  const Expr& lhs = *s.exprs[0];
  const Expr& rhs = *s.exprs[1];
  if (lhs.kind == ExprKind::kName) {
    bool from_host = false;
    Symbol* sym = symbol(lhs.text, lhs.pos, &from_host);
    if (sym->cls == Symbol::kParameter) fail(lhs.pos, "cannot assign to the constant '" + lhs.text + "'");
    if (sym->cls != Symbol::kVariable) fail(lhs.pos, "cannot assign to the procedure '" + lhs.text + "'");
  }
  if (!is_designator(lhs)) fail(lhs.pos, "the left side of an assignment must be a variable");
  Designator d = address(lhs);
  if (d.constant) fail(lhs.pos, "cannot assign to a constant");
  if (d.whole_array) {
    // Whole-array assignment: a conforming array of the same type, or a scalar broadcast.
    std::int64_t dst = alloc_temp(8), count = alloc_temp(8);
    emit("mov qword ptr " + temp_mem(dst) + ", rax");
    array_count(d, lhs.pos);
    emit("mov qword ptr " + temp_mem(count) + ", rax");
    if (is_designator(rhs)) {
      Designator r = address(rhs);
      if (r.whole_array) {
        if (!(r.type == d.type)) fail(rhs.pos, "array assignment needs arrays of the same type");
        std::int64_t src = alloc_temp(8);
        emit("mov qword ptr " + temp_mem(src) + ", rax");
        array_count(r, rhs.pos);
        emit("cmp rax, qword ptr " + temp_mem(count));
        std::string ok = comp_.new_label();
        emit("je " + ok);
        raise_error(kRuntimeErrorSubscript, comp_.string_literal("array shapes differ in assignment", true));
        label(ok);
        emit("mov rcx, qword ptr " + temp_mem(dst));
        emit("mov rdx, qword ptr " + temp_mem(src));
        emit("mov r8, qword ptr " + temp_mem(count));
        emit("imul r8, r8, " + std::to_string(d.type.size()));
        emit("call memmove");
        return;
      }
    }
    if (d.type.base == BaseType::kCharacter || d.type.base == BaseType::kDerived)
      fail(rhs.pos, "array assignment of CHARACTER or derived-type scalars is not supported");
    std::int64_t v = alloc_temp(16);
    value_as(rhs, d.type);
    spill(d.type, v);
    emit("mov rcx, qword ptr " + temp_mem(dst));
    emit("mov rdx, qword ptr " + temp_mem(count));
    emit("mov r8, " + std::to_string(d.type.size()));
    emit("lea r9, " + temp_mem(v));
    emit("call __f95_broadcast");
    return;
  }
  std::int64_t dst = alloc_temp(16);
  emit("mov qword ptr " + temp_mem(dst) + ", rax");
  if (d.type.base == BaseType::kCharacter) {
    emit("mov qword ptr " + temp_mem(dst, 8) + ", rdx");
    Type t = value(rhs);
    if (t.base != BaseType::kCharacter) fail(rhs.pos, "cannot assign " + t.name() + " to CHARACTER");
    emit("mov r8, rax");
    emit("mov r9, rdx");
    emit("mov rcx, qword ptr " + temp_mem(dst));
    emit("mov rdx, qword ptr " + temp_mem(dst, 8));
    emit("call __f95_assign_string");
    return;
  }
  if (d.type.base == BaseType::kDerived) {
    Type t = value(rhs);
    if (!(t == d.type)) fail(rhs.pos, "cannot assign " + t.name() + " to " + d.type.name());
    emit("mov rdx, rax");
    emit("mov rcx, qword ptr " + temp_mem(dst));
    emit("mov r8, " + std::to_string(d.type.size()));
    emit("call memmove");
    return;
  }
  value_as(rhs, d.type);
  emit("mov r11, qword ptr " + temp_mem(dst));
  store(d.type, "r11");
}

void RoutineCompiler::pointer_assignment(const Stmt& s) {
  const Expr& lhs = *s.exprs[0];
  const Expr& rhs = *s.exprs[1];
  if (!is_designator(lhs)) fail(lhs.pos, "the left side of => must be a pointer");
  Designator p = address(lhs, true);
  if (!p.is_pointer) fail(lhs.pos, "the left side of => is not a POINTER");
  std::int64_t slot = alloc_temp(8);
  emit("mov qword ptr " + temp_mem(slot) + ", rax");
  int rank = p.shape ? p.shape->rank() : 0;
  if (rhs.kind == ExprKind::kApply && rhs.base->kind == ExprKind::kName && rhs.base->text == "null" &&
      rhs.args.empty()) {
    emit("mov rax, qword ptr " + temp_mem(slot));
    emit("mov qword ptr [rax], 0");
    return;
  }
  if (!is_designator(rhs)) fail(rhs.pos, "the target of => must be a variable");
  Designator t = address(rhs);
  if (!(t.type == p.type)) fail(rhs.pos, "pointer of " + p.type.name() + " cannot point to " + t.type.name());
  bool target_ok = t.sym && (t.sym->target || t.sym->pointer || t.is_pointer);
  if (!target_ok) fail(rhs.pos, "'" + (t.sym ? t.sym->name : rhs.text) + "' is neither TARGET nor POINTER");
  int trank = t.whole_array && t.shape ? t.shape->rank() : 0;
  if (rank != trank) fail(rhs.pos, "the pointer and its target differ in rank");
  emit("mov rcx, qword ptr " + temp_mem(slot));
  emit("mov qword ptr [rcx], rax");
  // An array pointer copies the target's bounds.
  for (int d = 0; d < rank; ++d) {
    dim_lower(t, d, "rax");
    emit("mov rcx, qword ptr " + temp_mem(slot));
    emit("mov qword ptr [rcx+" + std::to_string(8 + 24 * d) + "], rax");
    dim_extent(t, d, "rax");
    emit("mov rcx, qword ptr " + temp_mem(slot));
    emit("mov qword ptr [rcx+" + std::to_string(16 + 24 * d) + "], rax");
    if (t.shape->constant()) {
      std::int64_t stride = t.type.size();
      for (int e = 0; e < d; ++e) stride *= t.shape->dims[e].extent();
      emit("mov rax, " + std::to_string(stride));
    } else {
      emit("mov rax, qword ptr " + desc_operand(t.sym, t.from_host, d, 2));
    }
    emit("mov rcx, qword ptr " + temp_mem(slot));
    emit("mov qword ptr [rcx+" + std::to_string(24 + 24 * d) + "], rax");
  }
}

void RoutineCompiler::logical_test(const Expr& e, const std::string& false_label) {
  Type t = value(e);
  if (t.base != BaseType::kLogical) fail(e.pos, "the condition must be LOGICAL, not " + t.name());
  emit("test rax, rax");
  emit("jz " + false_label);
}

void RoutineCompiler::if_construct(const Stmt& s) {
  std::string end = comp_.new_label();
  for (size_t i = 0; i < s.blocks.size(); ++i) {
    if (!s.logical_if) line_start(s.branch_pos[i]);
    std::string next = comp_.new_label();
    if (s.conds[i]) logical_test(*s.conds[i], next);
    temp_top_ = 0;
    if (s.logical_if) {
      // The action shares the IF's line: no line start of its own.
      const Stmt& a = *s.blocks[0][0];
      statement(a);
    } else {
      block(s.blocks[i]);
    }
    if (i + 1 < s.blocks.size()) emit("jmp " + end);
    label(next);
  }
  label(end);
}

void RoutineCompiler::do_loop(const Stmt& s) {
  bool from_host = false;
  Symbol* v = symbol(s.name, s.pos, &from_host);
  if (v->cls != Symbol::kVariable || v->type.base != BaseType::kInteger || v->is_array())
    fail(s.pos, "the DO variable '" + s.name + "' must be an INTEGER scalar variable");
  Expr var_expr;
  var_expr.kind = ExprKind::kName;
  var_expr.pos = s.pos;
  var_expr.text = s.name;
  // The trip count is fixed on entry; step and count live in frame slots of this loop.
  std::int64_t step_slot = alloc_local(8, 8), count_slot = alloc_local(8, 8);
  std::int64_t start_t = alloc_temp(8);
  value_as(*s.exprs[0], integer_type(8));
  emit("mov qword ptr " + temp_mem(start_t) + ", rax");
  value_as(*s.exprs[1], integer_type(8));
  emit("mov qword ptr " + local_mem(count_slot) + ", rax");
  ConstValue step_value;
  bool constant_step = s.exprs.size() < 3 || try_eval_constant(*s.exprs[2], scope_, &step_value);
  if (s.exprs.size() < 3) {
    emit("mov rax, 1");
  } else {
    if (constant_step && step_value.type.base == BaseType::kInteger && step_value.i == 0)
      fail(s.exprs[2]->pos, "DO-loop has zero increment");
    value_as(*s.exprs[2], integer_type(8));
    if (!constant_step) {
      std::string ok = comp_.new_label();
      emit("test rax, rax");
      emit("jnz " + ok);
      raise_error(kRuntimeErrorZeroIncrement, "");
      label(ok);
    }
  }
  emit("mov qword ptr " + local_mem(step_slot) + ", rax");
  // count = (end - start + step) / step
  emit("mov rax, qword ptr " + local_mem(count_slot));
  emit("sub rax, qword ptr " + temp_mem(start_t));
  emit("add rax, qword ptr " + local_mem(step_slot));
  emit("cqo");
  emit("idiv qword ptr " + local_mem(step_slot));
  emit("mov qword ptr " + local_mem(count_slot) + ", rax");
  Designator d = address(var_expr);
  emit("mov rcx, rax");
  emit("mov rax, qword ptr " + temp_mem(start_t));
  store(d.type, "rcx");
  temp_top_ = 0;
  std::string top = comp_.new_label(), cycle = comp_.new_label(), exit = comp_.new_label();
  label(top);
  emit("cmp qword ptr " + local_mem(count_slot) + ", 0");
  emit("jle " + exit);
  loops_.push_back({s.construct, cycle, exit});
  block(s.blocks[0]);
  loops_.pop_back();
  label(cycle);
  last_line_ = -1;
  line_start(s.end_pos);
  address(var_expr);
  emit("mov rcx, rax");
  load(d.type);
  emit("add rax, qword ptr " + local_mem(step_slot));
  store(d.type, "rcx");
  emit("dec qword ptr " + local_mem(count_slot));
  emit("jmp " + top);
  label(exit);
  last_line_ = -1;
}

void RoutineCompiler::do_while(const Stmt& s) {
  std::string top = comp_.new_label(), cycle = comp_.new_label(), exit = comp_.new_label();
  label(top);
  if (!s.conds.empty()) logical_test(*s.conds[0], exit);
  temp_top_ = 0;
  loops_.push_back({s.construct, cycle, exit});
  block(s.blocks[0]);
  loops_.pop_back();
  label(cycle);
  last_line_ = -1;
  line_start(s.end_pos);
  emit("jmp " + top);
  label(exit);
  last_line_ = -1;
}

void RoutineCompiler::stop(const Stmt& s) {
  if (s.exprs.empty()) {
    emit("xor ecx, ecx");
    emit("call __f95_stop");
    return;
  }
  ConstValue v;
  if (!try_eval_constant(*s.exprs[0], scope_, &v)) fail(s.pos, "STOP needs a constant");
  if (v.type.base == BaseType::kInteger) {
    emit("mov rcx, " + std::to_string(v.i));
    emit("call __f95_stop");
  } else if (v.type.base == BaseType::kCharacter) {
    raise_error(kRuntimeErrorMessage, comp_.string_literal(v.s, true));
  } else {
    fail(s.pos, "STOP needs an INTEGER or CHARACTER constant");
  }
}

void RoutineCompiler::print(const Stmt& s) {
  for (const auto& e : s.exprs) {
    print_item(*e);
    temp_top_ = 0;
  }
  emit("call __f95_print_end");
}

static int print_code(const Type& t) {
  // Element codes of __f95_print_array: base * 16 + kind.
  return static_cast<int>(t.base) * 16 + t.kind;
}

void RoutineCompiler::print_item(const Expr& e) {
  if (is_designator(e)) {
    Designator d = address(e);
    if (d.whole_array) {
      if (d.type.base == BaseType::kDerived) fail(e.pos, "PRINT of derived-type values is not supported");
      std::int64_t base = alloc_temp(8);
      emit("mov qword ptr " + temp_mem(base) + ", rax");
      array_count(d, e.pos);
      emit("mov rdx, rax");
      emit("mov rcx, qword ptr " + temp_mem(base));
      emit("mov r8d, " + std::to_string(print_code(d.type)));
      emit("mov r9, " + std::to_string(d.type.size()));
      emit("call __f95_print_array");
      return;
    }
  }
  Type t = value(e);
  switch (t.base) {
    case BaseType::kInteger: emit("mov rcx, rax"); emit("call __f95_print_integer"); break;
    case BaseType::kLogical: emit("mov rcx, rax"); emit("call __f95_print_logical"); break;
    case BaseType::kReal: emit(t.kind == 4 ? "call __f95_print_real4" : "call __f95_print_real8"); break;
    case BaseType::kComplex: emit(t.kind == 4 ? "call __f95_print_complex4" : "call __f95_print_complex8"); break;
    case BaseType::kCharacter: emit("mov rcx, rax"); emit("call __f95_print_string"); break;
    case BaseType::kDerived: fail(e.pos, "PRINT of derived-type values is not supported");
  }
}

void RoutineCompiler::allocate(const Stmt& s) {
  for (const auto& obj : s.exprs) {
    const Expr* target = obj.get();
    std::vector<const Expr*> bounds;
    if (target->kind == ExprKind::kApply) {
      for (const auto& a : target->args) bounds.push_back(a.get());
      target = target->base.get();
    }
    if (!is_designator(*target)) fail(obj->pos, "ALLOCATE needs a variable");
    Designator d = address(*target, true);
    if (!d.is_pointer && !(d.sym && d.sym->allocatable && d.pointer_slot))
      fail(obj->pos, "'" + (d.sym ? d.sym->name : std::string("?")) + "' is neither POINTER nor ALLOCATABLE");
    bool allocatable = !d.is_pointer;
    int rank = d.shape ? d.shape->rank() : 0;
    if (static_cast<int>(bounds.size()) != rank)
      fail(obj->pos, "ALLOCATE needs " + std::to_string(rank) + " bound(s) for '" + d.sym->name + "'");
    std::int64_t slot = alloc_temp(8), bytes = alloc_temp(8);
    emit("mov qword ptr " + temp_mem(slot) + ", rax");
    if (allocatable) {
      std::string ok = comp_.new_label();
      emit("cmp qword ptr [rax], 0");
      emit("je " + ok);
      raise_error(kRuntimeErrorAlreadyAllocated, comp_.string_literal(d.sym->name, true));
      label(ok);
    }
    emit("mov qword ptr " + temp_mem(bytes) + ", " + std::to_string(d.type.size()));
    for (int k = 0; k < rank; ++k) {
      const Expr* b = bounds[k];
      std::int64_t lo = alloc_temp(8);
      if (b->kind == ExprKind::kRange) {
        if (!b->args[0] || !b->args[1]) fail(b->pos, "ALLOCATE needs both bounds");
        value_as(*b->args[0], integer_type(8));
        emit("mov qword ptr " + temp_mem(lo) + ", rax");
        value_as(*b->args[1], integer_type(8));
      } else {
        emit("mov qword ptr " + temp_mem(lo) + ", 1");
        value_as(*b, integer_type(8));
      }
      // extent = max(upper - lower + 1, 0); stride = bytes so far
      emit("sub rax, qword ptr " + temp_mem(lo));
      emit("lea rdx, [rax+1]");
      emit("xor eax, eax");
      emit("test rdx, rdx");
      emit("cmovs rdx, rax");
      emit("mov rcx, qword ptr " + temp_mem(slot));
      emit("mov rax, qword ptr " + temp_mem(lo));
      emit("mov qword ptr [rcx+" + std::to_string(8 + 24 * k) + "], rax");
      emit("mov qword ptr [rcx+" + std::to_string(16 + 24 * k) + "], rdx");
      emit("mov rax, qword ptr " + temp_mem(bytes));
      emit("mov qword ptr [rcx+" + std::to_string(24 + 24 * k) + "], rax");
      emit("imul rax, rdx");
      emit("mov qword ptr " + temp_mem(bytes) + ", rax");
    }
    emit("mov rcx, qword ptr " + temp_mem(bytes));
    emit(std::string("mov edx, ") + (comp_.opts.undef ? "1" : "0"));
    emit("call __f95_allocate");
    std::string ok = comp_.new_label();
    emit("test rax, rax");
    emit("jnz " + ok);
    raise_error(kRuntimeErrorNoMemory, comp_.string_literal(d.sym->name, true));
    label(ok);
    emit("mov rcx, qword ptr " + temp_mem(slot));
    emit("mov qword ptr [rcx], rax");
    temp_top_ = 0;
  }
}

void RoutineCompiler::deallocate(const Stmt& s, bool nullify) {
  for (const auto& obj : s.exprs) {
    if (!is_designator(*obj)) fail(obj->pos, "expected a variable");
    Designator d = address(*obj, true);
    if (nullify) {
      if (!d.is_pointer) fail(obj->pos, "NULLIFY needs a POINTER");
      emit("mov qword ptr [rax], 0");
      continue;
    }
    if (!d.is_pointer && !(d.sym && d.sym->allocatable && d.pointer_slot))
      fail(obj->pos, "DEALLOCATE needs a POINTER or ALLOCATABLE variable");
    std::int64_t slot = alloc_temp(8);
    emit("mov qword ptr " + temp_mem(slot) + ", rax");
    std::string ok = comp_.new_label();
    emit("cmp qword ptr [rax], 0");
    emit("jne " + ok);
    raise_error(kRuntimeErrorNotAllocated, comp_.string_literal(d.sym ? d.sym->name : "", true));
    label(ok);
    emit("mov rcx, qword ptr [rax]");
    emit("call __f95_release");
    emit("mov rax, qword ptr " + temp_mem(slot));
    emit("mov qword ptr [rax], 0");
    temp_top_ = 0;
  }
}

void RoutineCompiler::call_statement(const Stmt& s) {
  bool from_host = false;
  Symbol* p = procedure_symbol(s.name, s.pos, &from_host, false);
  if (p->is_function && p->cls == Symbol::kProcedure && p->unit) fail(s.pos, "'" + s.name + "' is a FUNCTION");
  call(p, from_host, s.exprs, s.pos, false);
}

}  // namespace f95mini
