// A routine from start to end: frame layout, prologue and epilogue, line records, the
// debug block and the routine-map entry.
#include "f95mini/routine_compiler.h"

#include <algorithm>

#include "debuginfo/debug_type_codes.h"

namespace f95mini {

std::int64_t RoutineCompiler::alloc_local(std::int64_t size, int align) {
  if (align < 1) align = 1;
  std::int64_t at = (locals_end_ + align - 1) / align * align;
  locals_end_ = at + size;
  return at;
}

std::int64_t RoutineCompiler::alloc_temp(std::int64_t size) {
  std::int64_t at = temp_top_;
  temp_top_ += (size + 15) / 16 * 16;
  temp_max_ = std::max(temp_max_, temp_top_);
  return at;
}

std::string RoutineCompiler::local_mem(std::int64_t off, std::int64_t extra) const {
  return "[rsp+" + std::to_string(kFrameOffset + off + extra) + "]";
}

// Temporaries sit above the locals, whose final extent is known only at the end: their
// displacements are written as markers and resolved then.
std::string RoutineCompiler::temp_mem(std::int64_t off, std::int64_t extra) const {
  return "[rsp+@T" + std::to_string(off + extra) + "@]";
}

std::string RoutineCompiler::home_mem(int slot) const { return "[rsp+@F" + std::to_string(8 * slot) + "@]"; }

std::string RoutineCompiler::resolve_markers(const std::string& code) const {
  std::int64_t temps_base = kFrameOffset + (locals_end_ + 15) / 16 * 16;
  std::string out;
  out.reserve(code.size());
  for (size_t i = 0; i < code.size(); ++i) {
    if (code[i] != '@') {
      out += code[i];
      continue;
    }
    char kind = code[i + 1];
    size_t end = code.find('@', i + 2);
    std::int64_t n = std::stoll(code.substr(i + 2, end - i - 2));
    std::int64_t v = kind == 'T' ? temps_base + n : kind == 'F' ? frame_size_ + n : n;
    if (kind == 'U') v = temps_base + temp_max_ - (kFrameOffset + locals_base_);
    out += std::to_string(v);
    i = end;
  }
  return out;
}

void RoutineCompiler::line_start(const SourcePos& pos) {
  if (pos.line == last_line_) return;
  last_line_ = pos.line;
  std::string l = comp_.new_label(".Lline");
  label(l);
  emit("nop");
  lines_.push_back({pos.line, l});
}

void RoutineCompiler::raise_error(int number, const std::string& text_label) {
  emit("mov ecx, " + std::to_string(number));
  if (text_label.empty()) emit("xor edx, edx");
  else emit("lea rdx, [rip+" + text_label + "]");
  emit("int 9");
}

void RoutineCompiler::count_in_expr(const Expr* e) {
  if (!e) return;
  if (e->kind == ExprKind::kApply) max_call_args_ = std::max<int>(max_call_args_, 2 * static_cast<int>(e->args.size()) + 2);
  count_in_expr(e->base.get());
  for (const auto& a : e->args) count_in_expr(a.get());
}

void RoutineCompiler::count_call_arguments(const Block& b) {
  for (const auto& s : b) {
    if (s->kind == StmtKind::kCall) max_call_args_ = std::max<int>(max_call_args_, 2 * static_cast<int>(s->exprs.size()) + 2);
    for (const auto& e : s->exprs) count_in_expr(e.get());
    for (const auto& e : s->conds) count_in_expr(e.get());
    for (const auto& blk : s->blocks) count_call_arguments(blk);
  }
}

void RoutineCompiler::compile() {
  count_call_arguments(unit_.body);
  // Bounds of dummy arrays may call functions too, but never with more than a few arguments.
  max_call_args_ = std::max(max_call_args_, 6);
  locals_base_ = 8 * std::max(0, max_call_args_ - 4);
  locals_end_ = locals_base_;
  declare();
  start_label_ = link_symbol_;
  exit_label_ = comp_.new_label(".Lexit");
  last_label_ = comp_.new_label(".Llast");
  first_line_label_ = comp_.new_label(".Lline");
  lines_.push_back({unit_.pos.line, first_line_label_});
  last_line_ = unit_.pos.line;

  entry_code();
  block(unit_.body);
  label(exit_label_);
  last_line_ = -1;
  line_start(unit_.end_pos);
  exit_code();
  emit_routine();

  for (const auto& p : unit_.contains) {
    RoutineCompiler inner(comp_, *p, source_path_, nullptr, this);
    inner.compile();
  }
}

void RoutineCompiler::emit_routine() {
  std::int64_t temps_base = kFrameOffset + (locals_end_ + 15) / 16 * 16;
  std::int64_t need = temps_base + temp_max_;
  frame_size_ = (need + 15) / 16 * 16 + 8;
  std::string& out = comp_.text;
  out += "\t.globl " + start_label_ + "\n";
  out += "\t.p2align 4, 0x90\n";
  out += start_label_ + ":\n";
  out += first_line_label_ + ":\n\tnop\n";
  if (frame_size_ >= 4096) {
    // The probe touches each new page in turn and lowers RSP itself.
    out += "\tmovabs rax, " + std::to_string(frame_size_) + "\n";
    out += "\tcall qword ptr [rip+__f95_probe_ptr]\n";
  } else {
    out += "\tsub rsp, " + std::to_string(frame_size_) + "\n";
  }
  out += resolve_markers(code_);
  out += "\tadd rsp, " + std::to_string(frame_size_) + "\n";
  out += last_label_ + ":\n\tret\n";

  DebugBlock b;
  build_debug_block(b);
  std::string block_label = comp_.new_label(".Ldbg");
  write_debug_block(b, block_label, comp_.debug);
  comp_.map.push_back({map_name_, start_label_, last_label_, block_label});
}

// ---- debug block ----

int RoutineCompiler::type_index(const DerivedType* t, DebugBlock& b, std::vector<const DerivedType*>& types) {
  for (size_t i = 0; i < types.size(); ++i)
    if (types[i] == t) return static_cast<int>(i);
  int index = static_cast<int>(types.size());
  types.push_back(t);
  b.types.push_back(TypeRecord{t->name, {}});
  std::vector<VariableRecord> members;
  for (const Component& c : t->components) members.push_back(component_record(c, b, types));
  b.types[index].members = std::move(members);
  return index;
}

static ArrayRecord static_array(const Shape& sh, std::int64_t element_size) {
  ArrayRecord a;
  std::int64_t stride = element_size;
  for (const Dimension& d : sh.dims) {
    ArrayRecord::Dim dim;
    dim.start.value = d.lower;
    dim.size.value = d.extent();
    dim.stride.value = stride;
    stride *= d.extent();
    a.dims.push_back(dim);
  }
  return a;
}

VariableRecord RoutineCompiler::component_record(const Component& c, DebugBlock& b,
                                                 std::vector<const DerivedType*>& types) {
  VariableRecord v;
  v.name = c.name;
  v.address_type = kAddrRelative;
  v.type_code = debug_type_code(c.type);
  v.value = c.offset;
  v.size = static_cast<std::uint32_t>(c.type.size());
  if (c.pointer) v.attributes |= vantor::kAttributePointer;
  if (c.type.base == BaseType::kDerived) v.type_index = type_index(c.type.derived, b, types);
  if (c.shape.is_array()) v.array = static_array(c.shape, c.type.size());
  return v;
}

void RoutineCompiler::describe_variable(Symbol* s, DebugBlock& b, std::vector<const DerivedType*>& types) {
  bool host = in_host(s);
  VariableRecord v;
  v.name = s->name;
  v.type_code = s->cls == Symbol::kDummyProcedure ? vantor::kDebugProcedure : debug_type_code(s->type);
  v.size = static_cast<std::uint32_t>(s->cls == Symbol::kDummyProcedure ? 8 : s->type.size());
  if (s->pointer) v.attributes |= vantor::kAttributePointer;
  if (s->allocatable) v.attributes |= vantor::kAttributeAllocatable;
  if (s->target) v.attributes |= vantor::kAttributeTarget;
  if (s->storage == Storage::kDummy) v.attributes |= vantor::kAttributeDummy;
  std::uint8_t bound_type = kAddrFrame;
  std::int64_t bound_base = s->desc_offset;
  switch (s->storage) {
    case Storage::kFrame:
      v.address_type = (s->pointer || s->allocatable) ? (host ? kAddrHostPointer : kAddrFramePointer)
                                                      : (host ? kAddrHostFrame : kAddrFrame);
      v.value = s->offset;
      bound_type = host ? kAddrHostFrame : kAddrFrame;
      break;
    case Storage::kDummy:
      v.address_type = host ? kAddrHostDummy : kAddrDummy;
      v.value = 8 * s->dummy_slot;
      bound_type = host ? kAddrHostFrame : kAddrFrame;
      break;
    case Storage::kStatic:
      v.address_type = kAddrStatic;
      v.value = s->offset - static_start_;
      bound_type = kAddrStatic;
      bound_base = s->desc_offset - static_start_;
      uses_static_ = true;
      break;
    case Storage::kCommon: {
      v.address_type = kAddrCommon;
      v.value = s->offset;
      auto it = std::find(b.commons.begin(), b.commons.end(), s->common_block);
      v.common_index = static_cast<int>(it - b.commons.begin());
      if (it == b.commons.end()) b.commons.push_back(s->common_block);
      break;
    }
    case Storage::kConstant:
      v.address_type = kAddrConstant;
      v.constant = s->value;
      v.size = static_cast<std::uint32_t>(s->value.size());
      break;
    case Storage::kNone: return;
  }
  if (s->type.base == BaseType::kDerived && s->cls != Symbol::kDummyProcedure)
    v.type_index = type_index(s->type.derived, b, types);
  if (s->is_array()) {
    if (s->shape.constant()) {
      v.array = static_array(s->shape, s->type.size());
    } else {
      ArrayRecord a;
      a.dynamic = true;
      for (int d = 0; d < s->shape.rank(); ++d) {
        ArrayRecord::Dim dim;
        BoundRecord* bounds[3] = {&dim.start, &dim.size, &dim.stride};
        for (int k = 0; k < 3; ++k) {
          bounds[k]->variable = true;
          bounds[k]->address_type = bound_type;
          bounds[k]->value = bound_base + 24 * d + 8 * k;
        }
        a.dims.push_back(dim);
      }
      v.array = a;
    }
  }
  b.variables.push_back(std::move(v));
}

void RoutineCompiler::build_debug_block(DebugBlock& b) {
  b.start_label = start_label_;
  b.lines = lines_;
  b.broken = comp_.opts.broken;
  b.file_name = source_path_;
  std::vector<const DerivedType*> types;
  std::vector<std::string> seen;
  auto add_scope = [&](Scope& sc) {
    for (Symbol* s : sc.order) {
      if (s->cls == Symbol::kProcedure) continue;
      if (std::find(seen.begin(), seen.end(), s->name) != seen.end()) continue;
      seen.push_back(s->name);
      describe_variable(s, b, types);
    }
  };
  add_scope(scope_);
  for (const UseClause& u : scope_.uses) {
    for (Symbol* s : u.module->scope.order) {
      if (s->cls == Symbol::kProcedure) continue;
      if (u.has_only && std::find(u.only.begin(), u.only.end(), s->name) == u.only.end()) continue;
      if (std::find(seen.begin(), seen.end(), s->name) != seen.end()) continue;
      seen.push_back(s->name);
      describe_variable(s, b, types);
    }
  }
  // Host names (the host routine's, or the module's for a module procedure) last.
  for (Scope* h = scope_.host; h; h = h->host) {
    add_scope(*h);
    for (const UseClause& u : h->uses) add_scope(const_cast<Scope&>(u.module->scope));
  }
  if (uses_static_) b.lead_symbol = "__f95_static+" + std::to_string(static_start_);
  else b.lead_value = static_cast<std::uint32_t>(frame_size_);
}

}  // namespace f95mini
