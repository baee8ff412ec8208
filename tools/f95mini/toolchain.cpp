#include "f95mini/toolchain.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "f95mini/pe_file.h"

extern char** environ;

namespace f95mini {

#ifndef F95MINI_RUNTIME_DIR
#define F95MINI_RUNTIME_DIR ""
#endif

std::string runtime_directory() {
  if (const char* dir = std::getenv("F95MINI_RUNTIME")) return dir;
  return F95MINI_RUNTIME_DIR;
}

int run_program(const std::vector<std::string>& argv) {
  std::vector<char*> args;
  for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  pid_t pid;
  if (posix_spawnp(&pid, args[0], nullptr, nullptr, args.data(), environ) != 0) return -1;
  int status = 0;
  if (waitpid(pid, &status, 0) < 0) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool build_image(const Options& opts, const std::string& asm_text, std::string* error) {
  namespace fs = std::filesystem;
  fs::path out = opts.output;
  std::string stem = out.string();
  if (out.has_extension()) stem = (out.parent_path() / out.stem()).string();
  std::string asm_path = stem + ".s";
  char tmpl[] = "/tmp/f95mini.XXXXXX";
  if (!mkdtemp(tmpl)) {
    *error = "cannot make a temporary directory";
    return false;
  }
  fs::path tmp = tmpl;
  std::string asm_file = opts.keep_asm ? asm_path : (tmp / "program.s").string();
  {
    std::ofstream a(asm_file, std::ios::binary);
    a << asm_text;
    if (!a) {
      *error = "cannot write " + asm_file;
      fs::remove_all(tmp);
      return false;
    }
  }
  auto cleanup = [&]() { fs::remove_all(tmp); };
  std::string obj = (tmp / "program.o").string();
  if (run_program({"x86_64-w64-mingw32-as", "-o", obj, asm_file}) != 0) {
    *error = "the assembler failed on " + asm_file;
    cleanup();
    return false;
  }
  std::vector<std::string> link = {"x86_64-w64-mingw32-gcc-posix", "-o", opts.output, obj};
  int n = 0;
  for (const auto& c : opts.c_files) {
    std::string cobj = (tmp / ("c" + std::to_string(n++) + ".o")).string();
    if (run_program({"x86_64-w64-mingw32-gcc-posix", "-c", "-O1", "-Wall", "-o", cobj, c}) != 0) {
      *error = "the C compiler failed on " + c;
      cleanup();
      return false;
    }
    link.push_back(cobj);
  }
  for (const auto& d : opts.link_dlls) link.push_back(d);
  std::string rt = runtime_directory();
  if (rt.empty() || !fs::exists(fs::path(rt) / "libf95rt.a")) {
    *error = "the run-time library libf95rt.a is not in '" + rt + "' (run make win64, or set F95MINI_RUNTIME)";
    cleanup();
    return false;
  }
  link.push_back("-L" + rt);
  link.push_back("-lf95rt");
  if (opts.dll) link.push_back("-shared");
  link.push_back("-Wl,--stack,16777216");
  link.push_back("-static-libgcc");
  if (run_program(link) != 0) {
    *error = "linking " + opts.output + " failed";
    cleanup();
    return false;
  }
  cleanup();

  std::uint32_t word = 0;
  if (opts.map_offset) {
    word = static_cast<std::uint32_t>(*opts.map_offset);
  } else if (!opts.no_map) {
    PeFile pe;
    if (!pe.load(opts.output, error)) return false;
    const PeSection* s = pe.section(".f95dbg");
    if (!s) {
      *error = "the linked image has no routine map";
      return false;
    }
    word = s->virtual_address;
  }
  if (word && !write_map_word(opts.output, word, error)) return false;
  return true;
}

}  // namespace f95mini
