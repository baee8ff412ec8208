// f95mini [options] FILE.f95... -o OUT.exe
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#include "f95mini/compilation.h"
#include "f95mini/parser.h"
#include "f95mini/pe_file.h"
#include "f95mini/program_writer.h"
#include "f95mini/toolchain.h"

namespace {

const char kUsage[] =
    "usage: f95mini [options] FILE.f95... -o OUT.exe\n"
    "  -o FILE              output image\n"
    "  --dll                build a DLL exporting its routines by name\n"
    "  --link FILE.dll      link against a DLL built with --dll\n"
    "  --c FILE.c           compile and link a C file\n"
    "  --undef              fill locals, temporaries and ALLOCATEd blocks with 0x80\n"
    "  --check              check subscripts and substrings at run time\n"
    "  --record-name bare|full  file name recorded in line tables (default full)\n"
    "  -S                   keep the assembler file next to the output\n"
    "  --map-version N      write routine map version N\n"
    "  --no-map             write no routine map\n"
    "  --map-offset N       write N into the DOS-header word\n"
    "  --old-format         mark variable records with the old format\n"
    "  --bad-magic          write debug blocks without their magic\n"
    "  --bad-tag            put an unknown tag into symbol streams\n";

int usage_error(const std::string& message) {
  std::fprintf(stderr, "f95mini: error: %s\n%s", message.c_str(), kUsage);
  return 2;
}

bool parse_number(const char* s, std::int64_t* v) {
  char* end = nullptr;
  *v = std::strtoll(s, &end, 0);
  return end && *end == 0 && end != s;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace f95mini;
  Options opts;
  for (int i = 1; i < argc; ++i) {
    std::string a = argv[i];
    auto next = [&]() -> const char* { return i + 1 < argc ? argv[++i] : nullptr; };
    std::int64_t n = 0;
    if (a == "-o") {
      const char* v = next();
      if (!v) return usage_error("-o needs a file name");
      opts.output = v;
    } else if (a == "--dll") {
      opts.dll = true;
    } else if (a == "--link" || a == "--c") {
      const char* v = next();
      if (!v) return usage_error(a + " needs a file name");
      (a == "--link" ? opts.link_dlls : opts.c_files).push_back(v);
    } else if (a == "--undef") {
      opts.undef = true;
    } else if (a == "--check") {
      opts.check = true;
    } else if (a == "--record-name") {
      const char* v = next();
      if (!v || (std::strcmp(v, "bare") && std::strcmp(v, "full"))) return usage_error("--record-name needs bare or full");
      opts.record_full_path = std::strcmp(v, "full") == 0;
    } else if (a == "-S") {
      opts.keep_asm = true;
    } else if (a == "--map-version") {
      const char* v = next();
      if (!v || !parse_number(v, &n)) return usage_error("--map-version needs a number");
      opts.map_version = static_cast<std::uint32_t>(n);
    } else if (a == "--no-map") {
      opts.no_map = true;
    } else if (a == "--map-offset") {
      const char* v = next();
      if (!v || !parse_number(v, &n)) return usage_error("--map-offset needs a number");
      opts.map_offset = n;
    } else if (a == "--old-format") {
      opts.broken.old_format = true;
    } else if (a == "--bad-magic") {
      opts.broken.bad_magic = true;
    } else if (a == "--bad-tag") {
      opts.broken.bad_tag = true;
    } else if (a == "-h" || a == "--help") {
      std::fputs(kUsage, stdout);
      return 0;
    } else if (!a.empty() && a[0] == '-') {
      return usage_error("unknown option " + a);
    } else {
      opts.sources.push_back(a);
    }
  }
  if (opts.sources.empty()) return usage_error("no source files");
  if (opts.output.empty()) return usage_error("no output file (-o)");

  try {
    std::vector<SourceFile> files;
    for (const auto& path : opts.sources) {
      std::ifstream in(path, std::ios::binary);
      if (!in) {
        std::fprintf(stderr, "f95mini: error: cannot open %s\n", path.c_str());
        return 1;
      }
      std::stringstream ss;
      ss << in.rdbuf();
      files.push_back(parse_source(path, ss.str()));
    }
    Compilation comp(opts);
    Toolchain tools(opts);
    std::string error;
    std::vector<std::string> c_names;
    if (!tools.compile_c_files(&c_names, &error)) {
      std::fprintf(stderr, "f95mini: error: %s\n", error.c_str());
      return 1;
    }
    comp.provided_externals.insert(c_names.begin(), c_names.end());
    for (const auto& dll : opts.link_dlls) {
      PeFile pe;
      if (!pe.load(dll, &error)) {
        std::fprintf(stderr, "f95mini: error: %s\n", error.c_str());
        return 1;
      }
      for (const auto& name : pe.export_names()) comp.provided_externals.insert(name);
    }
    std::string asm_text = compile_program(comp, files);
    if (!tools.link(asm_text, &error)) {
      std::fprintf(stderr, "f95mini: error: %s\n", error.c_str());
      return 1;
    }
  } catch (const CompileError& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 1;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "f95mini: error: %s\n", e.what());
    return 1;
  }
  return 0;
}
