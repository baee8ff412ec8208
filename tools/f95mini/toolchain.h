// The mingw-w64 tools: compiling C files, assembling, linking against the run-time
// library, and patching the finished image so that the debugger finds its routine map.
#pragma once

#include <string>
#include <vector>

#include "f95mini/compilation.h"

namespace f95mini {

// Runs a program with arguments (no shell); returns its exit status, -1 if it could not run.
int run_program(const std::vector<std::string>& argv);

// Directory of the run-time library (libf95rt.a).
std::string runtime_directory();

class Toolchain {
 public:
  explicit Toolchain(const Options& opts);
  ~Toolchain();
  Toolchain(const Toolchain&) = delete;
  Toolchain& operator=(const Toolchain&) = delete;

  // Compiles the --c files; adds the external names they define to `defined`.
  bool compile_c_files(std::vector<std::string>* defined, std::string* error);
  // Assembles `asm_text`, links it with the C objects and the run-time library, and
  // writes the routine map's address into the image's DOS header.
  bool link(const std::string& asm_text, std::string* error);

 private:
  const Options& opts_;
  std::string tmp_;
  std::vector<std::string> c_objects_;
};

// External symbols that a COFF object file defines.
std::vector<std::string> coff_defined_symbols(const std::string& path);

}  // namespace f95mini
