// The parsed program: program units holding declarations and executable statements.
// Names are lower case. Nothing here is resolved: whether name(args) is an array element,
// a function call, an intrinsic or a substring is decided when the routine is compiled.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "f95mini/diagnostics.h"

namespace f95mini {

struct Expr;
using ExprPtr = std::unique_ptr<Expr>;

enum class ExprKind {
  kInteger,    // text = digits, kind_suffix
  kReal,       // text = mantissa/exponent in C syntax, kind_suffix, double_exponent
  kString,     // text = value
  kLogical,    // text = ".true." / ".false.", kind_suffix
  kComplex,    // args = {re, im}
  kName,       // text = name
  kApply,      // args = subscripts/arguments of args[0]... see below: base in `base`
  kComponent,  // base % text
  kRange,      // lo:hi inside an argument list; args[0]/args[1] may be null
  kUnary,      // text = "-", "+", ".not."; args = {operand}
  kBinary,     // text = operator; args = {left, right}
  kArrayConstructor,  // (/ a, b, c /)
};

struct Expr {
  ExprKind kind;
  SourcePos pos;
  std::string text;
  std::string kind_suffix;
  bool double_exponent = false;
  ExprPtr base;               // kApply: what is applied; kComponent: the structure
  std::vector<ExprPtr> args;  // see ExprKind
  std::vector<std::string> keywords;  // kApply: keyword of each argument ("" when positional)
};

struct TypeSpec {
  enum Base { kNone, kInteger, kReal, kComplex, kLogical, kCharacter, kDerived, kDoublePrecision };
  Base base = kNone;
  ExprPtr kind;              // KIND= or (n)
  int star_size = 0;         // INTEGER*4, CHARACTER*10 (0: none)
  ExprPtr len;               // CHARACTER(LEN=n); null with len_star false: length 1
  bool len_star = false;     // CHARACTER(*) / CHARACTER*(*)
  std::string derived_name;  // TYPE(name)
  SourcePos pos;
};

struct DimSpec {
  ExprPtr lower;  // null: 1
  ExprPtr upper;  // null with deferred or assumed
  bool deferred = false;  // (:)
  bool assumed = false;   // (*) in the last dimension
};

struct EntityDecl {
  std::string name;
  SourcePos pos;
  std::vector<DimSpec> dims;
  bool has_dims = false;
  ExprPtr char_len;       // name*n
  bool char_len_star = false;
  ExprPtr init;           // = value
  bool pointer_init = false;  // => null()
};

struct DeclStmt {
  SourcePos pos;
  TypeSpec type;
  bool parameter = false, save = false, pointer = false, target = false, allocatable = false;
  bool external = false, intrinsic = false;
  std::string intent;  // "in", "out", "inout" or ""
  std::vector<DimSpec> dims;  // DIMENSION(...)
  bool has_dims = false;
  std::vector<EntityDecl> entities;
};

// Declarations that are not type declarations, kept in source order with the others.
struct SpecStmt {
  enum Kind { kDecl, kImplicitNone, kCommon, kData, kDimension, kSave, kParameter, kExternal, kUse,
              kAttribute };
  Kind kind;
  SourcePos pos;
  DeclStmt decl;                                 // kDecl
  std::string name;                              // kCommon block name ("" = blank), kUse module
  std::vector<EntityDecl> entities;              // kCommon/kDimension/kSave/kExternal/kAttribute
  std::vector<std::pair<std::string, ExprPtr>> params;  // kParameter
  std::vector<std::string> only;                 // kUse ONLY list (empty: everything)
  bool has_only = false;
  std::string attribute;                         // kAttribute: "pointer", "target", "allocatable"
  // kData: groups of (objects, values with repeat counts)
  struct DataGroup {
    std::vector<ExprPtr> objects;
    std::vector<std::pair<ExprPtr, ExprPtr>> values;  // (repeat count or null, value)
  };
  std::vector<DataGroup> data;
};

struct TypeDef {
  std::string name;
  SourcePos pos;
  std::vector<DeclStmt> components;
};

struct Stmt;
using StmtPtr = std::unique_ptr<Stmt>;
using Block = std::vector<StmtPtr>;

enum class StmtKind {
  kAssign, kPointerAssign, kCall, kIf, kDo, kDoWhile, kExit, kCycle, kReturn, kStop, kPrint,
  kAllocate, kDeallocate, kNullify, kContinue,
};

struct Stmt {
  StmtKind kind;
  SourcePos pos;
  std::vector<ExprPtr> exprs;   // assign: {lhs, rhs}; call: args; print: items; stop: {code}?
                                // allocate/deallocate/nullify: objects; do: {start, end, step?}
  std::vector<std::string> keywords;  // call: argument keywords
  std::string name;             // call: routine; do: variable; exit/cycle: construct name
  std::string construct;        // construct name of an IF/DO ("" when unnamed)
  // IF: one condition per branch, blocks[i] for conds[i]; an ELSE block has a null cond.
  std::vector<ExprPtr> conds;
  std::vector<SourcePos> branch_pos;  // position of each IF / ELSE IF / ELSE statement
  std::vector<Block> blocks;
  bool logical_if = false;      // IF (c) stmt: blocks[0] holds the one statement
  SourcePos end_pos;            // END DO / END IF
};

struct Unit {
  enum Kind { kProgram, kSubroutine, kFunction, kModule };
  Kind kind;
  std::string name;
  SourcePos pos, end_pos;
  std::vector<std::string> args;
  std::string result;      // RESULT(name) or "" (the function's name)
  bool recursive = false;
  TypeSpec prefix_type;    // typed FUNCTION
  std::vector<SpecStmt> specs;
  std::vector<TypeDef> types;
  Block body;
  std::vector<std::unique_ptr<Unit>> contains;
};

struct SourceFile {
  std::string path;
  std::vector<std::unique_ptr<Unit>> units;
};

}  // namespace f95mini
