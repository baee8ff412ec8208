// Names of one routine or module: variables, constants, procedures and derived types,
// with the storage each variable got. Lookups fall back to USEd modules, then to the host.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "f95mini/ast.h"
#include "f95mini/types.h"

namespace f95mini {

enum class Storage {
  kNone,      // not yet decided (a name seen only in declarations so far)
  kFrame,     // offset from the locals base (stack pointer + 32)
  kDummy,     // pointer in the caller's home area: return slot + 8 * slot
  kStatic,    // offset in the compilation's static data
  kCommon,    // offset in a COMMON block
  kConstant,  // PARAMETER: value bytes
};

struct Scope;

struct Symbol {
  enum Class { kVariable, kParameter, kProcedure, kDummyProcedure };
  std::string name;
  SourcePos pos;
  Class cls = kVariable;
  Type type;
  bool typed = false;          // declared with a type (else implicitly typed)
  Shape shape;
  bool pointer = false, target = false, allocatable = false, save = false, external = false;
  bool data_initialised = false;
  std::string intent;
  int dummy_slot = 0;          // 1-based slot in the caller's home area (kDummy)
  Storage storage = Storage::kNone;
  std::int64_t offset = 0;     // by storage: frame, static or COMMON offset
  std::int64_t desc_offset = -1;  // where lower bound/extent/stride words of a non-constant shape live (same storage)
  std::int64_t char_len_offset = -1;  // frame slot of the hidden length of a CHARACTER(*) dummy
  std::string common_block;    // upper-case block name ("" = blank COMMON) when kCommon
  std::vector<std::uint8_t> value;  // PARAMETER value; initial value of static data
  const Expr* init = nullptr;
  bool pointer_init = false;
  // Procedures: the assembler symbol, whether it is a function, whether it takes the host link.
  std::string proc_symbol;
  bool is_function = false;
  bool is_internal = false;
  bool is_module_procedure = false;
  const struct Unit* unit = nullptr;  // the procedure's definition when compiled here
  Scope* owner = nullptr;

  bool is_array() const { return shape.is_array(); }
  bool deferred_storage() const { return pointer || allocatable; }
};

struct ModuleInfo;

struct UseClause {
  const ModuleInfo* module = nullptr;
  std::vector<std::string> only;
  bool has_only = false;
};

struct Scope {
  Scope* host = nullptr;             // internal procedures see their host's names
  std::vector<UseClause> uses;
  std::map<std::string, std::unique_ptr<Symbol>> symbols;
  std::vector<Symbol*> order;        // in order of creation, for the debug tables
  std::map<std::string, std::unique_ptr<DerivedType>> types;
  std::vector<const DerivedType*> type_order;
  bool implicit_none = false;
  bool save_all = false;
  bool is_module = false;

  Symbol* find_local(const std::string& name);
  Symbol* add(const std::string& name, const SourcePos& pos);
  // Own names, then USEd modules, then the host (with its uses). Sets *from_host when the
  // name was found in a host scope.
  Symbol* lookup(const std::string& name, bool* from_host = nullptr);
  const DerivedType* lookup_type(const std::string& name);
  // Implicit type of a name (I-N integer, otherwise real), or false under IMPLICIT NONE.
  bool implicit_type(const std::string& name, Type* t) const;
};

struct ModuleInfo {
  std::string name;
  Scope scope;
  std::int64_t static_offset = 0;  // where its variables start in the static data
};

}  // namespace f95mini
