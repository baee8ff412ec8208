// State shared by every routine of one compiler run: options, modules, COMMON blocks,
// the static data, literal pools, and the assembler text being built. One run makes one
// assembler file and one image, so label differences across routines are resolved by the
// assembler and modules are visible to every later unit of the run.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/runtime_error_numbers.h"
#include "f95mini/ast.h"
#include "f95mini/debug_tables.h"
#include "f95mini/scope.h"

namespace f95mini {

struct Options {
  std::vector<std::string> sources;
  std::vector<std::string> c_files;
  std::vector<std::string> link_dlls;
  std::string output;
  bool dll = false;
  bool undef = false;          // fill locals, temporaries and ALLOCATEd blocks with 0x80
  bool check = false;          // subscript and substring checks
  bool record_full_path = true;
  bool keep_asm = false;
  std::uint32_t map_version = 2;
  bool no_map = false;
  std::optional<std::int64_t> map_offset;
  BrokenOutput broken;
  bool broken_once = true;     // break only the first debug block (negative tests)
};

struct CommonInfo {
  std::string name;     // upper case, "" for blank COMMON
  std::int64_t size = 0;
  std::string symbol;   // storage label
};

class Compilation {
 public:
  explicit Compilation(Options o) : opts(std::move(o)) {}

  Options opts;

  // Static data of the whole run: SAVE, DATA-initialised and module variables.
  std::vector<std::uint8_t> static_data;
  std::int64_t static_alloc(std::int64_t size, int align);
  void static_init(std::int64_t offset, const std::vector<std::uint8_t>& bytes);

  std::vector<std::unique_ptr<ModuleInfo>> modules;
  ModuleInfo* find_module(const std::string& name);

  std::map<std::string, CommonInfo> commons;
  CommonInfo& common(const std::string& name);

  // External routines: those defined by this run, those a linked DLL exports, and every
  // one called; a called routine defined nowhere gets a stub raising the missing-routine error.
  std::set<std::string> defined_externals;
  std::set<std::string> provided_externals;
  std::set<std::string> referenced_externals;
  std::vector<std::string> exports;

  std::string new_label(const char* prefix = ".L");
  std::string string_literal(const std::string& s, bool nul_terminated = false);
  std::string real_literal(double v, int kind);
  std::string mask_literal(std::uint64_t lo, std::uint64_t hi);

  std::string text;     // code of every routine
  std::string rdata;    // literal pools
  std::string debug;    // debug blocks
  std::vector<MapEntryText> map;
  bool broken_emitted = false;

 private:
  int label_counter_ = 0;
  std::map<std::string, std::string> strings_;
  std::map<std::pair<std::uint64_t, int>, std::string> reals_;
};

}  // namespace f95mini
