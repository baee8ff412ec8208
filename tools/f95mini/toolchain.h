// The mingw-w64 tools: assembling, compiling C files, linking against the run-time
// library, and patching the finished image so that the debugger finds its routine map.
#pragma once

#include <string>
#include <vector>

#include "f95mini/compilation.h"

namespace f95mini {

// Runs a program with arguments (no shell); returns its exit status, -1 if it could not run.
int run_program(const std::vector<std::string>& argv);

// Assembles `asm_text` and links the output of the run; false with a message on failure.
bool build_image(const Options& opts, const std::string& asm_text, std::string* error);

// Directory of the run-time library (libf95rt.a).
std::string runtime_directory();

}  // namespace f95mini
