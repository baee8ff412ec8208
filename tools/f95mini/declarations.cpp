// Declarations: type statements, attributes, COMMON, DATA, derived types, USE, and the
// storage each variable gets.
#include <algorithm>
#include <cctype>

#include "f95mini/routine_compiler.h"

namespace f95mini {
namespace {

std::string upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

const char* const kReservedNames[] = {
    "rax", "rbx", "rcx", "rdx", "rsi", "rdi", "rsp", "rbp", "rip", "eax", "ebx", "ecx", "edx", "esi", "edi",
    "esp", "ebp", "ax", "bx", "cx", "dx", "si", "di", "sp", "bp", "al", "bl", "cl", "dl", "ah", "bh", "ch", "dh",
    "sil", "dil", "spl", "bpl", "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15", "byte", "word", "dword",
    "qword", "tbyte", "oword", "xmmword", "ptr", "offset", "flat", "st", "cs", "ds", "es", "fs", "gs", "ss",
    "and", "or", "not", "xor", "shl", "shr", "mod", "rel", "short", "near", "far"};

}  // namespace

void check_link_name(const std::string& name, const SourcePos& pos) {
  std::string n = name;
  for (char& c : n) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (const char* r : kReservedNames)
    if (n == r) fail(pos, "the name '" + name + "' is reserved for external routines");
  // Numbered registers: r8-r15 (with b/w/d), xmm0-xmm15, ymm0-ymm15.
  static const char* const prefixes[] = {"r", "xmm", "ymm"};
  for (const char* p : prefixes) {
    std::string pre = p;
    if (n.rfind(pre, 0) != 0 || n.size() == pre.size()) continue;
    std::string rest = n.substr(pre.size());
    if (pre == "r" && !rest.empty() && (rest.back() == 'b' || rest.back() == 'w' || rest.back() == 'd')) rest.pop_back();
    if (rest.empty() || rest.size() > 2 || !std::all_of(rest.begin(), rest.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); }))
      continue;
    if (rest.size() == 2 && rest[0] == '0') continue;
    int number = std::stoi(rest);
    if ((pre == "r" && number >= 8 && number <= 15) || (pre != "r" && number <= 15))
      fail(pos, "the name '" + name + "' is reserved for external routines");
  }
}

RoutineCompiler::RoutineCompiler(Compilation& comp, const Unit& unit, const std::string& source_path,
                                 ModuleInfo* module, RoutineCompiler* host)
    : comp_(comp), unit_(unit), source_path_(source_path), module_(module), host_(host) {
  scope_.host = host ? &host->scope_ : module ? &module->scope : nullptr;
  std::string up = upper(unit.name);
  if (host) {
    link_symbol_ = host->link_symbol_ + "." + up;
  } else if (module) {
    link_symbol_ = upper(module->name) + "." + up;
  } else if (unit.kind == Unit::kProgram) {
    link_symbol_ = "__f95_program";
  } else {
    check_link_name(unit.name, unit.pos);
    link_symbol_ = up;
  }
  map_name_ = up;
}

bool RoutineCompiler::owner_is_routine(const Symbol* s) const { return s->owner && !s->owner->is_module; }

Symbol* RoutineCompiler::declared(const std::string& name, const SourcePos& pos) {
  if (Symbol* s = scope_.find_local(name)) return s;
  return scope_.add(name, pos);
}

Type RoutineCompiler::resolve_type(const TypeSpec& t, const EntityDecl* e) {
  Type r;
  auto kind_of = [&](int def) {
    if (t.kind) return static_cast<int>(eval_integer_constant(*t.kind, scope_, "a kind"));
    return def;
  };
  switch (t.base) {
    case TypeSpec::kInteger:
      r = integer_type(t.star_size ? t.star_size : kind_of(4));
      break;
    case TypeSpec::kReal:
      r = real_type(t.star_size ? t.star_size : kind_of(4));
      break;
    case TypeSpec::kDoublePrecision: r = real_type(8); break;
    case TypeSpec::kComplex:
      r = complex_type(t.star_size ? t.star_size / 2 : kind_of(4));
      if (t.star_size && t.star_size != 8 && t.star_size != 16) fail(t.pos, "COMPLEX*" + std::to_string(t.star_size) + " is not supported");
      break;
    case TypeSpec::kLogical: r = logical_type(t.star_size ? t.star_size : kind_of(4)); break;
    case TypeSpec::kCharacter: {
      r = character_type(1);
      if (t.kind && eval_integer_constant(*t.kind, scope_, "a kind") != 1) fail(t.pos, "only CHARACTER kind 1 is supported");
      const Expr* len = t.len.get();
      bool star = t.len_star;
      if (e && (e->char_len || e->char_len_star)) {
        len = e->char_len.get();
        star = e->char_len_star;
      }
      if (star) r.len = Type::kAssumedLength;
      else if (len) {
        r.len = eval_integer_constant(*len, scope_, "a CHARACTER length");
        if (r.len < 0) r.len = 0;
      }
      break;
    }
    case TypeSpec::kDerived: {
      const DerivedType* d = scope_.lookup_type(t.derived_name);
      if (!d) fail(t.pos, "unknown type '" + t.derived_name + "'");
      r = Type{BaseType::kDerived, 0, 1, d};
      break;
    }
    case TypeSpec::kNone: fail(t.pos, "missing type");
  }
  if (!valid_kind(r.base, r.kind)) fail(t.pos, "kind " + std::to_string(r.kind) + " is not supported for " + r.name());
  return r;
}

Shape RoutineCompiler::resolve_shape(const std::vector<DimSpec>& dims, const Symbol& s) {
  Shape sh;
  bool deferred = false, assumed = false, explicit_dims = false;
  for (size_t i = 0; i < dims.size(); ++i) {
    const DimSpec& d = dims[i];
    Dimension dim;
    if (d.deferred && !d.upper) {
      deferred = true;
      if (d.lower) fail(s.pos, "assumed-shape arrays (lo:) are not supported");
    } else {
      explicit_dims = true;
      if (d.lower) {
        ConstValue v;
        if (try_eval_constant(*d.lower, scope_, &v) && v.type.base == BaseType::kInteger) dim.lower = v.i;
        else dim.lower_expr = d.lower.get();
      }
      if (d.assumed) {
        if (i + 1 != dims.size()) fail(s.pos, "'*' may only be the last bound of '" + s.name + "'");
        assumed = true;
        dim.upper = dim.lower - 1;
      } else {
        ConstValue v;
        if (try_eval_constant(*d.upper, scope_, &v) && v.type.base == BaseType::kInteger) dim.upper = v.i;
        else dim.upper_expr = d.upper.get();
      }
    }
    sh.dims.push_back(dim);
  }
  if (deferred && explicit_dims) fail(s.pos, "'" + s.name + "' mixes deferred and explicit bounds");
  sh.kind = deferred ? Shape::kDeferred : assumed ? Shape::kAssumedSize : Shape::kExplicit;
  return sh;
}

void RoutineCompiler::define_type(const TypeDef& t) {
  if (scope_.types.count(t.name)) fail(t.pos, "type '" + t.name + "' is already defined");
  auto dt = std::make_unique<DerivedType>();
  DerivedType* d = dt.get();
  d->name = t.name;
  d->pos = t.pos;
  scope_.types[t.name] = std::move(dt);  // registered first: a component may point to its own type
  scope_.type_order.push_back(d);
  std::int64_t offset = 0;
  int align = 1;
  for (const DeclStmt& decl : t.components) {
    if (decl.parameter || decl.save || decl.allocatable || decl.external || !decl.intent.empty())
      fail(decl.pos, "attribute not allowed on a component");
    for (const EntityDecl& e : decl.entities) {
      if (e.init) fail(e.pos, "component initialisation is not supported");
      if (d->find(e.name)) fail(e.pos, "component '" + e.name + "' is declared twice");
      Component c;
      c.name = e.name;
      c.pointer = decl.pointer;
      if (decl.type.base == TypeSpec::kDerived && decl.type.derived_name == t.name && !c.pointer)
        fail(e.pos, "a component of type " + t.name + " inside " + t.name + " must be a POINTER");
      c.type = resolve_type(decl.type, &e);
      if (c.type.base == BaseType::kCharacter && c.type.len < 0) fail(e.pos, "CHARACTER(*) component");
      Symbol tmp;
      tmp.name = e.name;
      tmp.pos = e.pos;
      const auto& dims = e.has_dims ? e.dims : decl.dims;
      if (e.has_dims || decl.has_dims) {
        c.shape = resolve_shape(dims, tmp);
        if (c.pointer) fail(e.pos, "POINTER array components are not supported");
        if (!c.shape.constant()) fail(e.pos, "component arrays need constant bounds");
      }
      int a = c.pointer ? 8 : std::max(1, c.type.alignment());
      offset = (offset + a - 1) / a * a;
      c.offset = offset;
      offset += c.size();
      align = std::max(align, a);
      d->components.push_back(c);
    }
  }
  d->align = align;
  d->size = (offset + align - 1) / align * align;
}

Type RoutineCompiler::function_result_type(const Unit& u) {
  if (u.prefix_type.base != TypeSpec::kNone) return resolve_type(u.prefix_type, nullptr);
  std::string rname = u.result.empty() ? u.name : u.result;
  for (const SpecStmt& s : u.specs) {
    if (s.kind != SpecStmt::kDecl) continue;
    for (const EntityDecl& e : s.decl.entities)
      if (e.name == rname) {
        if (s.decl.type.base == TypeSpec::kDerived && !scope_.lookup_type(s.decl.type.derived_name)) {
          // A type defined inside the function itself cannot be seen by its callers.
          fail(s.pos, "the result type of " + u.name + " must be defined outside it");
        }
        return resolve_type(s.decl.type, &e);
      }
  }
  Type t;
  if (!scope_.implicit_type(rname, &t)) fail(u.pos, "function '" + u.name + "' has no type");
  return t;
}

void RoutineCompiler::declare_procedures_of(const Unit& container, bool module_procedures, const std::string& prefix) {
  for (const auto& p : container.contains) {
    if (scope_.find_local(p->name)) fail(p->pos, "'" + p->name + "' is already declared");
    Symbol* s = scope_.add(p->name, p->pos);
    s->cls = Symbol::kProcedure;
    s->proc_symbol = prefix + "." + upper(p->name);
    s->is_function = p->kind == Unit::kFunction;
    s->is_internal = !module_procedures;
    s->is_module_procedure = module_procedures;
    s->unit = p.get();
    if (s->is_function) {
      s->type = function_result_type(*p);
      s->typed = true;
    }
  }
}

void RoutineCompiler::declare_statement(const SpecStmt& s) {
  switch (s.kind) {
    case SpecStmt::kDecl:
      for (const EntityDecl& e : s.decl.entities) declare_entity(s.decl, e);
      break;
    case SpecStmt::kImplicitNone: scope_.implicit_none = true; break;
    case SpecStmt::kUse: {
      ModuleInfo* m = comp_.find_module(s.name);
      if (!m) fail(s.pos, "module '" + s.name + "' is not defined before this unit");
      if (m == module_) fail(s.pos, "a module cannot USE itself");
      UseClause u{m, s.only, s.has_only};
      for (const auto& n : s.only)
        if (!m->scope.find_local(n) && !m->scope.types.count(n))
          fail(s.pos, "'" + n + "' is not in module " + s.name);
      scope_.uses.push_back(u);
      break;
    }
    case SpecStmt::kCommon: {
      if (scope_.is_module) fail(s.pos, "COMMON in a module is not supported");
      for (const EntityDecl& e : s.entities) {
        Symbol* sym = declared(e.name, e.pos);
        if (sym->storage == Storage::kCommon || !sym->common_block.empty())
          fail(e.pos, "'" + e.name + "' is already in COMMON");
        sym->storage = Storage::kCommon;
        sym->common_block = upper(s.name);
        if (e.has_dims) {
          if (sym->is_array()) fail(e.pos, "'" + e.name + "' already has bounds");
          sym->shape = resolve_shape(e.dims, *sym);
        }
        common_members_.push_back(sym);
      }
      break;
    }
    case SpecStmt::kDimension:
      for (const EntityDecl& e : s.entities) {
        Symbol* sym = declared(e.name, e.pos);
        if (sym->is_array()) fail(e.pos, "'" + e.name + "' already has bounds");
        sym->shape = resolve_shape(e.dims, *sym);
      }
      break;
    case SpecStmt::kSave:
      if (s.entities.empty()) scope_.save_all = true;
      for (const EntityDecl& e : s.entities) declared(e.name, e.pos)->save = true;
      break;
    case SpecStmt::kParameter:
      for (const auto& [name, expr] : s.params) {
        Symbol* sym = declared(name, s.pos);
        sym->cls = Symbol::kParameter;
        sym->init = expr.get();
      }
      break;
    case SpecStmt::kExternal:
      for (const EntityDecl& e : s.entities) {
        Symbol* sym = declared(e.name, e.pos);
        sym->external = true;
      }
      break;
    case SpecStmt::kAttribute:
      for (const EntityDecl& e : s.entities) {
        Symbol* sym = declared(e.name, e.pos);
        if (s.attribute == "pointer") sym->pointer = true;
        else if (s.attribute == "target") sym->target = true;
        else sym->allocatable = true;
        if (e.has_dims) sym->shape = resolve_shape(e.dims, *sym);
      }
      break;
    case SpecStmt::kData: data_statements_.push_back(&s); break;
  }
}

void RoutineCompiler::declare_entity(const DeclStmt& d, const EntityDecl& e) {
  Symbol* s = declared(e.name, e.pos);
  if (s->typed) fail(e.pos, "'" + e.name + "' is declared twice");
  if (s->cls == Symbol::kProcedure && s->unit) fail(e.pos, "'" + e.name + "' is a contained procedure");
  s->type = resolve_type(d.type, &e);
  s->typed = true;
  if (d.parameter) {
    s->cls = Symbol::kParameter;
    if (!e.init) fail(e.pos, "PARAMETER '" + e.name + "' needs a value");
  }
  s->save |= d.save;
  s->pointer |= d.pointer;
  s->target |= d.target;
  s->allocatable |= d.allocatable;
  s->external |= d.external;
  if (!d.intent.empty()) s->intent = d.intent;
  if (e.has_dims || d.has_dims) {
    if (s->is_array()) fail(e.pos, "'" + e.name + "' already has bounds");
    s->shape = resolve_shape(e.has_dims ? e.dims : d.dims, *s);
  }
  if (e.init) s->init = e.init.get();
  if (e.pointer_init) s->pointer_init = true;
  if (s->type.base == BaseType::kCharacter && s->type.len < 0 && std::find(unit_.args.begin(), unit_.args.end(), e.name) == unit_.args.end() &&
      s->cls != Symbol::kParameter && !(unit_.kind == Unit::kFunction && false))
    fail(e.pos, "CHARACTER(*) is only allowed for dummy arguments and constants");
}

void RoutineCompiler::declare() {
  scope_.is_module = false;
  // Dummy arguments first, so that declarations find them.
  for (const auto& a : unit_.args) {
    if (scope_.find_local(a)) fail(unit_.pos, "dummy argument '" + a + "' appears twice");
    Symbol* s = scope_.add(a, unit_.pos);
    s->storage = Storage::kDummy;
  }
  if (unit_.kind == Unit::kFunction) {
    std::string rname = unit_.result.empty() ? unit_.name : unit_.result;
    if (!unit_.result.empty()) {
      if (unit_.result == unit_.name) fail(unit_.pos, "RESULT name must differ from the function name");
      Symbol* self = scope_.add(unit_.name, unit_.pos);
      self->cls = Symbol::kProcedure;
      self->proc_symbol = link_symbol_;
      self->is_function = true;
      self->unit = &unit_;
      self->is_internal = host_ != nullptr;
      self->is_module_procedure = module_ != nullptr;
    }
    result_ = scope_.add(rname, unit_.pos);
  } else if (unit_.kind == Unit::kSubroutine) {
    Symbol* self = scope_.add(unit_.name, unit_.pos);
    self->cls = Symbol::kProcedure;
    self->proc_symbol = link_symbol_;
    self->unit = &unit_;
    self->is_internal = host_ != nullptr;
    self->is_module_procedure = module_ != nullptr;
  }
  for (const TypeDef& t : unit_.types) define_type(t);
  // USE and IMPLICIT NONE come first in Fortran; handle them before types that need them.
  for (const SpecStmt& s : unit_.specs)
    if (s.kind == SpecStmt::kUse || s.kind == SpecStmt::kImplicitNone) declare_statement(s);
  for (const SpecStmt& s : unit_.specs)
    if (s.kind != SpecStmt::kUse && s.kind != SpecStmt::kImplicitNone) declare_statement(s);
  if (result_) {
    if (!result_->typed) {
      Type t = function_result_type(unit_);
      result_->type = t;
      result_->typed = true;
    }
    if (result_->is_array() || result_->pointer || result_->allocatable)
      fail(unit_.pos, "array and pointer function results are not supported");
    if (result_->type.base == BaseType::kCharacter && result_->type.len < 0)
      fail(unit_.pos, "CHARACTER(*) function results are not supported");
  }
  declare_procedures_of(unit_, false, link_symbol_);
  finish_declarations();
}

void RoutineCompiler::finish_declarations() {
  // Slots of the caller's home area: [host link] [result pointer] dummies... hidden lengths.
  int slot = 1;
  if (host_) {
    host_link_ = alloc_local(8, 8);
    ++slot;
  }
  result_by_pointer_ = result_ && (result_->type.base == BaseType::kComplex ||
                                   result_->type.base == BaseType::kCharacter ||
                                   result_->type.base == BaseType::kDerived);
  if (result_by_pointer_) {
    result_->storage = Storage::kDummy;
    result_->dummy_slot = slot++;
  }
  first_dummy_slot_ = slot;
  static_start_ = comp_.static_alloc(0, 16);

  for (size_t i = 0; i < unit_.args.size(); ++i) {
    Symbol* s = scope_.find_local(unit_.args[i]);
    s->dummy_slot = slot++;
  }
  for (size_t i = 0; i < unit_.args.size(); ++i) {
    Symbol* s = scope_.find_local(unit_.args[i]);
    if (s->cls == Symbol::kParameter) fail(s->pos, "dummy argument '" + s->name + "' cannot be a PARAMETER");
    if (s->type.base == BaseType::kCharacter && s->type.len < 0) {
      s->char_len_offset = alloc_local(8, 8);
      hidden_lengths_.push_back({s, slot++});
    }
  }
  // Everything else that was declared gets its storage now; names first met in the code
  // get theirs when they are met.
  std::vector<Symbol*> all(scope_.order.begin(), scope_.order.end());
  for (Symbol* s : all) {
    if (!s->typed && s->cls != Symbol::kProcedure) {
      Type t;
      if (s->cls == Symbol::kParameter || s->storage != Storage::kNone || s->is_array() || s->save ||
          s->pointer || s->allocatable || s->target || !s->common_block.empty() || s->storage == Storage::kCommon) {
        if (!scope_.implicit_type(s->name, &t)) fail(s->pos, "'" + s->name + "' has no type (IMPLICIT NONE)");
        s->type = t;
      } else if (s->external) {
        if (scope_.implicit_type(s->name, &t)) s->type = t;
      }
    }
    if (s->external) {
      if (s->storage == Storage::kDummy) {
        s->cls = Symbol::kDummyProcedure;
      } else {
        s->cls = Symbol::kProcedure;
        check_link_name(s->name, s->pos);
        s->proc_symbol = upper(s->name);
      }
      s->is_function = s->typed;
      continue;
    }
    place(s);
  }
  // COMMON blocks: members in order, each block as large as its biggest declaration.
  std::map<std::string, std::int64_t> sizes;
  for (Symbol* s : common_members_) {
    if (s->pointer || s->allocatable || s->cls != Symbol::kVariable) fail(s->pos, "'" + s->name + "' cannot be in COMMON");
    if (s->is_array() && !s->shape.constant()) fail(s->pos, "COMMON arrays need constant bounds");
    if (s->init) fail(s->pos, "COMMON variables cannot be initialised here");
    std::int64_t& at = sizes[s->common_block];
    int a = std::min(8, std::max(1, s->type.alignment()));
    at = (at + a - 1) / a * a;
    s->offset = at;
    at += s->type.size() * (s->is_array() ? s->shape.element_count() : 1);
  }
  for (const auto& [name, size] : sizes) {
    CommonInfo& c = comp_.common(name);
    c.size = std::max(c.size, size);
  }
  for (const SpecStmt* d : data_statements_) apply_data(*d);
}

void RoutineCompiler::place(Symbol* s) {
  if (s->cls == Symbol::kParameter) {
    s->storage = Storage::kConstant;
    if (s->is_array()) fail(s->pos, "array PARAMETERs are not supported");
    ConstValue v = eval_constant(*s->init, scope_);
    if (s->type.base == BaseType::kCharacter && s->type.len < 0) s->type.len = static_cast<std::int64_t>(v.s.size());
    s->value = constant_bytes(v, s->type, s->pos);
    return;
  }
  if (s->cls != Symbol::kVariable) return;
  if (s->storage == Storage::kCommon) return;
  if (s->is_array()) {
    if (s->shape.kind == Shape::kDeferred && !s->pointer && !s->allocatable)
      fail(s->pos, "'" + s->name + "' has deferred bounds but is neither POINTER nor ALLOCATABLE");
    if (s->shape.kind != Shape::kDeferred && (s->pointer || s->allocatable))
      fail(s->pos, "POINTER and ALLOCATABLE arrays need deferred bounds (:)");
    if (s->shape.kind == Shape::kAssumedSize && s->storage != Storage::kDummy)
      fail(s->pos, "'" + s->name + "' has an assumed size but is not a dummy argument");
    if (s->shape.kind == Shape::kExplicit && !s->shape.constant() && s->storage != Storage::kDummy)
      fail(s->pos, "automatic arrays are not supported ('" + s->name + "' needs constant bounds)");
  }
  if (s->type.base == BaseType::kDerived && !s->type.derived) fail(s->pos, "unknown type");
  if (s->storage == Storage::kDummy) {
    if (s->pointer || s->allocatable) fail(s->pos, "POINTER and ALLOCATABLE dummy arguments are not supported");
    if (s->init) fail(s->pos, "a dummy argument cannot be initialised");
    if (s->is_array() && !s->shape.constant()) s->desc_offset = alloc_local(24 * s->shape.rank(), 8);
    return;
  }
  std::int64_t size, align;
  if (s->pointer || s->allocatable) {
    size = 8 + (s->is_array() ? 24 * s->shape.rank() : 0);
    align = 8;
  } else {
    size = s->type.size() * (s->is_array() ? s->shape.element_count() : 1);
    align = std::min<std::int64_t>(16, std::max(1, s->type.alignment()));
    if (size >= 16) align = 16;
  }
  bool is_static = scope_.is_module || s->save || scope_.save_all || s->init || s->data_initialised;
  if (is_static) {
    s->storage = Storage::kStatic;
    s->offset = comp_.static_alloc(size, static_cast<int>(align));
    uses_static_ = true;
    if (s->init) {
      if (s->pointer || s->allocatable) fail(s->pos, "only => NULL() can initialise a pointer");
      std::vector<std::uint8_t> bytes;
      if (s->init->kind == ExprKind::kArrayConstructor) {
        if (!s->is_array()) fail(s->pos, "an array constructor needs an array");
        if (static_cast<std::int64_t>(s->init->args.size()) != s->shape.element_count())
          fail(s->pos, "the constructor has " + std::to_string(s->init->args.size()) + " values for " +
                           std::to_string(s->shape.element_count()) + " elements");
        for (const auto& v : s->init->args) {
          auto b = constant_bytes(eval_constant(*v, scope_), s->type, v->pos);
          bytes.insert(bytes.end(), b.begin(), b.end());
        }
      } else {
        auto b = constant_bytes(eval_constant(*s->init, scope_), s->type, s->init->pos);
        std::int64_t n = s->is_array() ? s->shape.element_count() : 1;
        for (std::int64_t i = 0; i < n; ++i) bytes.insert(bytes.end(), b.begin(), b.end());
      }
      comp_.static_init(s->offset, bytes);
    }
  } else {
    s->storage = Storage::kFrame;
    s->offset = alloc_local(size, static_cast<int>(align));
  }
  if ((s->pointer || s->allocatable) && s->is_array()) s->desc_offset = s->offset + 8;
}

void RoutineCompiler::apply_data(const SpecStmt& st) {
  for (const auto& g : st.data) {
    // Flatten the values with their repeat counts.
    std::vector<ConstValue> values;
    for (const auto& [count, v] : g.values) {
      std::int64_t n = count ? eval_integer_constant(*count, scope_, "a DATA repeat count") : 1;
      ConstValue c = eval_constant(*v, scope_);
      for (std::int64_t i = 0; i < n; ++i) values.push_back(c);
    }
    size_t next = 0;
    for (const auto& obj : g.objects) {
      const Expr* name = obj.get();
      std::vector<const Expr*> subs;
      if (name->kind == ExprKind::kApply) {
        for (const auto& a : name->args) subs.push_back(a.get());
        name = name->base.get();
      }
      if (name->kind != ExprKind::kName) fail(obj->pos, "DATA objects must be variables or array elements");
      Symbol* s = scope_.find_local(name->text);
      if (!s) {
        s = scope_.add(name->text, name->pos);
        Type t;
        if (!scope_.implicit_type(s->name, &t)) fail(name->pos, "'" + s->name + "' has no type (IMPLICIT NONE)");
        s->type = t;
      }
      if (s->cls != Symbol::kVariable || s->storage == Storage::kDummy || s->storage == Storage::kCommon ||
          s->pointer || s->allocatable)
        fail(obj->pos, "'" + s->name + "' cannot be initialised by DATA");
      if (s->storage != Storage::kStatic) {
        // Moved to static data: DATA values live for the whole run.
        s->data_initialised = true;
        s->storage = Storage::kNone;
        place(s);
      }
      std::int64_t first = 0, count = s->is_array() ? s->shape.element_count() : 1;
      if (!subs.empty()) {
        if (!s->is_array() || static_cast<int>(subs.size()) != s->shape.rank())
          fail(obj->pos, "wrong number of subscripts for '" + s->name + "'");
        std::int64_t stride = 1;
        for (int d = 0; d < s->shape.rank(); ++d) {
          std::int64_t i = eval_integer_constant(*subs[d], scope_, "a DATA subscript");
          const Dimension& dim = s->shape.dims[d];
          if (i < dim.lower || i > dim.upper) fail(obj->pos, "DATA subscript out of bounds");
          first += (i - dim.lower) * stride;
          stride *= dim.extent();
        }
        count = 1;
      }
      std::int64_t esize = s->type.size();
      for (std::int64_t k = 0; k < count; ++k) {
        if (next >= values.size()) fail(obj->pos, "not enough DATA values");
        comp_.static_init(s->offset + (first + k) * esize, constant_bytes(values[next++], s->type, obj->pos));
      }
    }
    if (next != values.size()) fail(st.pos, "too many DATA values");
  }
}

Symbol* RoutineCompiler::symbol(const std::string& name, const SourcePos& pos, bool* from_host) {
  Symbol* s = scope_.lookup(name, from_host);
  if (s) {
    if (from_host && *from_host && !owner_is_routine(s)) *from_host = false;
    return s;
  }
  Type t;
  if (!scope_.implicit_type(name, &t)) fail(pos, "'" + name + "' has no type (IMPLICIT NONE)");
  s = scope_.add(name, pos);
  s->type = t;
  place(s);
  if (from_host) *from_host = false;
  return s;
}

// ---- modules ----

void RoutineCompiler::declare_module(Compilation& comp, const Unit& unit, ModuleInfo& module,
                                     const std::string& source_path) {
  // A module is declared through a compiler of its own; its variables become static data.
  RoutineCompiler rc(comp, unit, source_path, nullptr, nullptr);
  rc.scope_.is_module = true;
  module.static_offset = comp.static_alloc(0, 16);
  for (const TypeDef& t : unit.types) rc.define_type(t);
  for (const SpecStmt& s : unit.specs)
    if (s.kind == SpecStmt::kUse || s.kind == SpecStmt::kImplicitNone) rc.declare_statement(s);
  for (const SpecStmt& s : unit.specs)
    if (s.kind != SpecStmt::kUse && s.kind != SpecStmt::kImplicitNone) rc.declare_statement(s);
  rc.declare_procedures_of(unit, true, upper(unit.name));
  for (Symbol* s : rc.scope_.order) {
    if (!s->typed && s->cls != Symbol::kProcedure) {
      Type t;
      if (!rc.scope_.implicit_type(s->name, &t)) fail(s->pos, "'" + s->name + "' has no type (IMPLICIT NONE)");
      s->type = t;
    }
    if (s->external) fail(s->pos, "EXTERNAL in a module is not supported");
    rc.place(s);
  }
  for (const SpecStmt* d : rc.data_statements_) rc.apply_data(*d);
  module.scope.is_module = true;
  module.scope.implicit_none = rc.scope_.implicit_none;
  module.scope.uses = rc.scope_.uses;
  // Move the names over; their owner becomes the module's scope.
  for (auto& [name, sym] : rc.scope_.symbols) sym->owner = &module.scope;
  module.scope.symbols = std::move(rc.scope_.symbols);
  module.scope.order = std::move(rc.scope_.order);
  module.scope.types = std::move(rc.scope_.types);
  module.scope.type_order = std::move(rc.scope_.type_order);
}

}  // namespace f95mini
