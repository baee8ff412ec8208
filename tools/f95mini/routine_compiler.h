// Compiles one PROGRAM, SUBROUTINE or FUNCTION (and then its CONTAINS procedures) into
// x86-64 code, its debug block and its routine-map entry.
//
// Frame, with S the stack pointer after the prologue (16-byte aligned at every call):
//   [S, S+32)                 shadow area for the routines this one calls
//   [S+32, S+32+8*X)          outgoing arguments beyond the fourth (X = most in any call)
//   [S+32+8*X, ...)           locals, then temporaries; a local's debug value is its offset from S+32
//   [S+F]                     return address (F = frame size, F % 16 == 8)
//   [S+F+8*k]                 argument k (1-based): the home area the callee spills RCX/RDX/R8/R9 to
// Only RAX, RCX, RDX, R8-R11 and XMM0-XMM5 are used, so the prologue is the single
// `sub rsp, F` (or the probe call for F >= 4096) that the debugger's stack walk recognises.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "f95mini/compilation.h"
#include "f95mini/constants.h"

namespace f95mini {

// Rejects names that the assembler would read as registers or keywords.
void check_link_name(const std::string& name, const SourcePos& pos);

class RoutineCompiler {
 public:
  RoutineCompiler(Compilation& comp, const Unit& unit, const std::string& source_path, ModuleInfo* module,
                  RoutineCompiler* host);

  void compile();

  // Declares a module's entities into its scope (variables get static storage).
  static void declare_module(Compilation& comp, const Unit& unit, ModuleInfo& module, const std::string& source_path);

 private:
  friend class ModuleDeclarer;

  // ---- declarations (declarations.cpp) ----
  void declare();
  void declare_procedures_of(const Unit& container, bool module_procedures, const std::string& prefix);
  void declare_statement(const SpecStmt& s);
  void declare_entity(const DeclStmt& d, const EntityDecl& e);
  void define_type(const TypeDef& t);
  Type resolve_type(const TypeSpec& t, const EntityDecl* e);
  Shape resolve_shape(const std::vector<DimSpec>& dims, const Symbol& s);
  Symbol* declared(const std::string& name, const SourcePos& pos);
  void finish_declarations();
  void place(Symbol* s);
  void apply_data(const SpecStmt& s);
  Type function_result_type(const Unit& u);

  // Finds a name, creating an implicitly typed local on first use.
  Symbol* symbol(const std::string& name, const SourcePos& pos, bool* from_host);
  bool in_host(const Symbol* s) const { return s->owner != &scope_ && owner_is_routine(s); }
  bool owner_is_routine(const Symbol* s) const;

  // ---- frame ----
  std::int64_t alloc_local(std::int64_t size, int align);
  std::int64_t alloc_temp(std::int64_t size);
  std::string local_mem(std::int64_t off, std::int64_t extra = 0) const;
  std::string temp_mem(std::int64_t off, std::int64_t extra = 0) const;
  std::string home_mem(int slot) const;
  void count_call_arguments(const Block& b);
  void count_in_expr(const Expr* e);

  // ---- emission ----
  void emit(const std::string& line) { code_ += '\t' + line + '\n'; }
  void label(const std::string& l) { code_ += l + ":\n"; }
  void line_start(const SourcePos& pos);
  void raise_error(int number, const std::string& text_label);
  std::string resolve_markers(const std::string& code) const;
  void emit_routine();
  void build_debug_block(DebugBlock& b);
  void describe_variable(Symbol* s, DebugBlock& b, std::vector<const DerivedType*>& types);
  VariableRecord component_record(const Component& c, DebugBlock& b, std::vector<const DerivedType*>& types);
  int type_index(const DerivedType* t, DebugBlock& b, std::vector<const DerivedType*>& types);

  // ---- statements (statements.cpp) ----
  void block(const Block& b);
  void statement(const Stmt& s);
  void assignment(const Stmt& s);
  void pointer_assignment(const Stmt& s);
  void if_construct(const Stmt& s);
  void do_loop(const Stmt& s);
  void do_while(const Stmt& s);
  void print(const Stmt& s);
  void print_item(const Expr& e);
  void allocate(const Stmt& s);
  void deallocate(const Stmt& s, bool nullify);
  void stop(const Stmt& s);
  void call_statement(const Stmt& s);
  void entry_code();
  void exit_code();

  // ---- expressions (expressions.cpp) ----
  struct Designator {
    Type type;
    Symbol* sym = nullptr;       // the named variable at the root
    bool from_host = false;
    bool whole_array = false;    // RAX = base address of a whole array
    const Shape* shape = nullptr;
    bool pointer_slot = false;   // RAX = address of the pointer slot itself
    bool is_pointer = false;     // the designated object is a POINTER (slot at RAX when pointer_slot)
    bool constant = false;       // a PARAMETER: address of a read-only copy
  };
  Type value(const Expr& e);                       // scalar into RAX / XMM0 / XMM0:XMM1 / RAX+RDX
  Type value_as(const Expr& e, const Type& t);     // converted
  bool is_designator(const Expr& e);
  Designator address(const Expr& e, bool want_slot = false);  // RAX (+ RDX for CHARACTER)
  Designator name_address(const Expr& e, Symbol* s, bool from_host, bool want_slot);
  Designator element_address(const Expr& e, Designator base);
  void substring(const Expr& e, const Designator& base);
  void load(const Type& t);                        // from [RAX]
  void store(const Type& t, const char* addr_reg); // primary registers to [reg]
  void spill(const Type& t, std::int64_t temp);
  void reload(const Type& t, std::int64_t temp);
  void to_secondary(const Type& t);
  void convert(const Type& from, const Type& to, const SourcePos& pos);
  void normalise_integer(int kind);
  Type binary(const Expr& e);
  Type arithmetic_type(const Type& a, const Type& b, const SourcePos& pos, const std::string& op);
  Type compare(const Expr& e, const Type& lt, std::int64_t left_temp);
  Type power(const Expr& e);
  Type concatenate(const Expr& e);
  std::int64_t max_length(const Expr& e);
  Type literal(const Expr& e);
  Type structure_constructor(const Expr& e, const DerivedType* t);
  void logical_test(const Expr& e, const std::string& false_label);

  // Calls. `proc` is a procedure symbol; the result (if any) is in the primary registers.
  Type call(Symbol* proc, bool from_host, const std::vector<ExprPtr>& args, const SourcePos& pos, bool as_function);
  void pass_argument(const Expr& a, std::int64_t slot_temp, std::int64_t* len_temp);
  bool is_intrinsic(const std::string& name) const;
  Type intrinsic(const Expr& e, const std::string& name);
  Symbol* procedure_symbol(const std::string& name, const SourcePos& pos, bool* from_host, bool as_function);

  // Descriptor words (lower bound, extent, byte stride) of non-constant shapes.
  std::string desc_operand(const Symbol* s, bool from_host, int dim, int word);
  std::string storage_operand(const Symbol* s, bool from_host, std::int64_t extra);
  void array_count(const Designator& d, const SourcePos& pos);   // RAX = element count
  void dim_extent(const Designator& d, int dim, const char* reg);
  void dim_lower(const Designator& d, int dim, const char* reg);

  Compilation& comp_;
  const Unit& unit_;
  std::string source_path_;
  ModuleInfo* module_;
  RoutineCompiler* host_;
  Scope scope_;
  std::string link_symbol_, map_name_;
  std::string start_label_, last_label_, exit_label_;
  std::string code_;
  std::vector<LineRecord> lines_;
  int last_line_ = -1;
  int max_call_args_ = 0;
  std::int64_t locals_base_ = 0;   // first local offset (after outgoing arguments)
  std::int64_t locals_end_ = 0;
  std::int64_t temp_top_ = 0, temp_max_ = 0;
  std::int64_t frame_size_ = 0;
  std::int64_t static_start_ = -1;  // this routine's static data (offset in the run's data)
  bool uses_static_ = false;
  int first_dummy_slot_ = 1;        // after the host link and the hidden result pointer
  std::int64_t host_link_ = -1;     // frame slot of the host's frame base (internal procedures)
  Symbol* result_ = nullptr;        // function result variable
  bool result_by_pointer_ = false;  // COMPLEX/CHARACTER/TYPE results: hidden pointer in slot 1 (or 2)
  std::vector<Symbol*> common_members_;
  std::vector<const SpecStmt*> data_statements_;
  struct HiddenLength {
    Symbol* sym;
    int slot;
  };
  std::vector<HiddenLength> hidden_lengths_;
  std::string first_line_label_;
  struct LoopLabels {
    std::string construct, cycle, exit;
  };
  std::vector<LoopLabels> loops_;
};

}  // namespace f95mini
