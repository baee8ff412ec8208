#include "f95mini/toolchain.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "f95mini/pe_file.h"

extern char** environ;

namespace f95mini {

#ifndef F95MINI_RUNTIME_DIR
#define F95MINI_RUNTIME_DIR ""
#endif

namespace fs = std::filesystem;

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

std::vector<std::string> coff_defined_symbols(const std::string& path) {
  std::vector<std::string> names;
  std::ifstream in(path, std::ios::binary);
  std::vector<std::uint8_t> b{std::istreambuf_iterator<char>(in), {}};
  auto u32 = [&](std::size_t at) -> std::uint32_t {
    return at + 4 <= b.size() ? static_cast<std::uint32_t>(b[at] | b[at + 1] << 8 | b[at + 2] << 16) | static_cast<std::uint32_t>(b[at + 3]) << 24 : 0;
  };
  if (b.size() < 20) return names;
  std::uint32_t table = u32(8), count = u32(12);
  std::size_t strings = table + 18ull * count;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::size_t at = table + 18ull * i;
    if (at + 18 > b.size()) break;
    std::int16_t section = static_cast<std::int16_t>(b[at + 12] | b[at + 13] << 8);
    std::uint8_t storage = b[at + 16], aux = b[at + 17];
    if (section > 0 && storage == 2) {
      std::string name;
      if (u32(at) == 0) {
        for (std::size_t k = strings + u32(at + 4); k < b.size() && b[k]; ++k) name += static_cast<char>(b[k]);
      } else {
        for (int k = 0; k < 8 && b[at + k]; ++k) name += static_cast<char>(b[at + k]);
      }
      names.push_back(name);
    }
    i += aux;
  }
  return names;
}

Toolchain::Toolchain(const Options& opts) : opts_(opts) {
  char tmpl[] = "/tmp/f95mini.XXXXXX";
  if (mkdtemp(tmpl)) tmp_ = tmpl;
}

Toolchain::~Toolchain() {
  if (!tmp_.empty()) {
    std::error_code ec;
    fs::remove_all(tmp_, ec);
  }
}

bool Toolchain::compile_c_files(std::vector<std::string>* defined, std::string* error) {
  if (tmp_.empty()) {
    *error = "cannot make a temporary directory";
    return false;
  }
  int n = 0;
  for (const auto& c : opts_.c_files) {
    std::string file = "c";  // built piecewise: GCC 12 misreads "c" + to_string(n) at -O3
    file += std::to_string(n++);
    file += ".o";
    std::string obj = (fs::path(tmp_) / file).string();
    if (run_program({"x86_64-w64-mingw32-gcc-posix", "-c", "-O1", "-Wall", "-o", obj, c}) != 0) {
      *error = "the C compiler failed on " + c;
      return false;
    }
    c_objects_.push_back(obj);
    for (const auto& s : coff_defined_symbols(obj)) defined->push_back(s);
  }
  return true;
}

bool Toolchain::link(const std::string& asm_text, std::string* error) {
  if (tmp_.empty()) {
    *error = "cannot make a temporary directory";
    return false;
  }
  fs::path out = opts_.output;
  std::string asm_file = (fs::path(tmp_) / "program.s").string();
  if (opts_.keep_asm) asm_file = (out.parent_path() / out.stem()).string() + ".s";
  {
    std::ofstream a(asm_file, std::ios::binary);
    a << asm_text;
    if (!a) {
      *error = "cannot write " + asm_file;
      return false;
    }
  }
  std::string obj = (fs::path(tmp_) / "program.o").string();
  if (run_program({"x86_64-w64-mingw32-as", "-o", obj, asm_file}) != 0) {
    *error = "the assembler failed on " + asm_file;
    return false;
  }
  std::string rt = runtime_directory();
  if (rt.empty() || !fs::exists(fs::path(rt) / "libf95rt.a")) {
    *error = "the run-time library libf95rt.a is not in '" + rt + "' (run make win64, or set F95MINI_RUNTIME)";
    return false;
  }
  std::vector<std::string> cmd = {"x86_64-w64-mingw32-gcc-posix", "-o", opts_.output, obj};
  cmd.insert(cmd.end(), c_objects_.begin(), c_objects_.end());
  cmd.insert(cmd.end(), opts_.link_dlls.begin(), opts_.link_dlls.end());
  cmd.push_back("-L" + rt);
  cmd.push_back("-lf95rt");
  if (opts_.dll) cmd.push_back("-shared");
  cmd.push_back("-Wl,--stack,16777216");
  cmd.push_back("-static-libgcc");
  if (run_program(cmd) != 0) {
    *error = "linking " + opts_.output + " failed";
    return false;
  }

  std::uint32_t word = 0;
  if (opts_.map_offset) {
    word = static_cast<std::uint32_t>(*opts_.map_offset);
  } else if (!opts_.no_map) {
    PeFile pe;
    if (!pe.load(opts_.output, error)) return false;
    const PeSection* s = pe.section(".f95dbg");
    if (!s) {
      *error = "the linked image has no routine map";
      return false;
    }
    word = s->virtual_address;
  }
  if (word && !write_map_word(opts_.output, word, error)) return false;
  return true;
}

}  // namespace f95mini
