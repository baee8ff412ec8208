#include "f95mini/program_writer.h"

#include <cctype>
#include <climits>
#include <cstdlib>

#include "f95mini/routine_compiler.h"

namespace f95mini {
namespace {

std::string upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

void write_static_data(const std::vector<std::uint8_t>& data, std::string& out) {
  size_t i = 0;
  while (i < data.size()) {
    size_t j = i;
    while (j < data.size() && data[j] == 0) ++j;
    if (j - i >= 16 || j == data.size()) {
      if (j > i) out += "\t.zero " + std::to_string(j - i) + "\n";
      i = j;
      continue;
    }
    size_t end = std::min(data.size(), i + 32);
    std::vector<std::uint8_t> chunk(data.begin() + static_cast<long>(i), data.begin() + static_cast<long>(end));
    write_bytes(chunk, out);
    i = end;
  }
}

}  // namespace

std::string recorded_file_name(const std::string& path, bool full) {
  if (!full) {
    size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
  }
  char buf[PATH_MAX];
  std::string abs = realpath(path.c_str(), buf) ? std::string(buf) : path;
  std::string win = "Z:";
  for (char c : abs) win += c == '/' ? '\\' : c;
  return win;
}

std::string compile_program(Compilation& comp, const std::vector<SourceFile>& files) {
  int programs = 0;
  for (const SourceFile& f : files)
    for (const auto& u : f.units) {
      if (u->kind == Unit::kProgram) ++programs;
      if (u->kind == Unit::kSubroutine || u->kind == Unit::kFunction) {
        std::string sym = upper(u->name);
        if (!comp.defined_externals.insert(sym).second) fail(u->pos, "'" + u->name + "' is defined twice");
        comp.exports.push_back(sym);
      }
    }
  if (!comp.opts.dll && programs == 0) fail({files.empty() ? "" : files[0].path, 1}, "no main program");
  if (comp.opts.dll && programs) fail({files[0].path, 1}, "a DLL cannot have a main program");
  if (programs > 1) fail({files[0].path, 1}, "more than one main program");

  for (const SourceFile& f : files) {
    std::string recorded = recorded_file_name(f.path, comp.opts.record_full_path);
    for (const auto& u : f.units) {
      if (u->kind == Unit::kModule) {
        if (comp.find_module(u->name)) fail(u->pos, "module '" + u->name + "' is defined twice");
        auto m = std::make_unique<ModuleInfo>();
        m->name = u->name;
        ModuleInfo* mp = m.get();
        comp.modules.push_back(std::move(m));
        RoutineCompiler::declare_module(comp, *u, *mp, recorded);
        for (const auto& p : u->contains) {
          RoutineCompiler rc(comp, *p, recorded, mp, nullptr);
          rc.compile();
        }
      } else {
        RoutineCompiler rc(comp, *u, recorded, nullptr, nullptr);
        rc.compile();
      }
    }
  }

  std::string out;
  out += "\t.intel_syntax noprefix\n\t.text\n";
  // Routines called but defined nowhere (not by this run, a C file or a linked DLL) get
  // a stub that raises the missing-routine error.
  std::vector<MapEntryText> stubs;
  for (const std::string& name : comp.referenced_externals) {
    if (comp.defined_externals.count(name) || comp.provided_externals.count(name)) continue;
    std::string start = comp.new_label(".Lstub"), last = comp.new_label(".Llast");
    std::string text = comp.string_literal(name, true);
    out += name + ":\n" + start + ":\n";
    out += "\tsub rsp, 40\n\tmov ecx, " + std::to_string(kRuntimeErrorMissingRoutine) + "\n";
    out += "\tlea rdx, [rip+" + text + "]\n\tint 9\n\tadd rsp, 40\n" + last + ":\n\tret\n";
    stubs.push_back({"__missing_" + name, start, last, ""});
  }
  out += comp.text;
  out += "\t.section .rdata,\"dr\"\n" + comp.rdata;

  out += "\t.data\n\t.p2align 4\n__f95_static:\n";
  write_static_data(comp.static_data, out);
  // The run-time COMMON list: next, name, storage, size.
  out += "\t.p2align 3\n\t.globl __f95_common_head\n__f95_common_head:\n";
  std::vector<std::string> nodes;
  for (size_t i = 0; i < comp.commons.size(); ++i) nodes.push_back(comp.new_label(".Lcommon"));
  out += "\t.quad " + (nodes.empty() ? std::string("0") : nodes[0]) + "\n";
  size_t i = 0;
  for (const auto& [name, c] : comp.commons) {
    std::string name_label = comp.new_label(".Lcname");
    out += nodes[i] + ":\n\t.quad " + (i + 1 < nodes.size() ? nodes[i + 1] : std::string("0")) + ", " + name_label +
           ", " + c.symbol + ", " + std::to_string(c.size) + "\n";
    out += name_label + ":\n\t.asciz \"/" + name + "/\"\n";
    ++i;
  }
  if (!comp.commons.empty()) {
    out += "\t.bss\n";
    for (const auto& [name, c] : comp.commons)
      out += "\t.p2align 4\n" + c.symbol + ":\n\t.zero " + std::to_string(std::max<std::int64_t>(c.size, 1)) + "\n";
  }

  out += "\t.section .f95dbg,\"dr\"\n__f95_map:\n";
  std::vector<MapEntryText> map = comp.map;
  map.insert(map.end(), stubs.begin(), stubs.end());
  map.push_back({"__get_common_info", "__get_common_info", "__get_common_info_last", ""});
  map.push_back({"exit", "__f95_exit", "__f95_exit_last", ""});
  if (!comp.opts.no_map) write_routine_map(map, comp.opts.map_version, out);
  out += comp.debug;

  if (comp.opts.dll) {
    out += "\t.section .drectve\n";
    for (const auto& e : comp.exports) out += "\t.ascii \" -export:" + e + "\"\n";
    // The library's COMMON blocks join the program's list while it is loaded.
    if (!comp.commons.empty())
      out += "\t.section .ctors,\"w\"\n\t.quad __f95_join_common_list\n"
             "\t.section .dtors,\"w\"\n\t.quad __f95_leave_common_list\n";
  } else {
    // Libraries find the program's COMMON list by this name.
    out += "\t.section .drectve\n\t.ascii \" -export:__f95_common_head,data\"\n";
  }
  return out;
}

}  // namespace f95mini
