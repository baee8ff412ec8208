// A whole run: every unit of every source file compiled, then one assembler file with
// the code, literals, static data, COMMON blocks and their run-time list, stubs for
// missing external routines, the routine map and the debug blocks.
#pragma once

#include <string>
#include <vector>

#include "f95mini/ast.h"
#include "f95mini/compilation.h"

namespace f95mini {

// The file name recorded in line tables: the bare name, or the full path as Windows sees
// it under Wine (Z: maps to /).
std::string recorded_file_name(const std::string& path, bool full);

// Compiles the parsed files; returns the assembler text.
std::string compile_program(Compilation& comp, const std::vector<SourceFile>& files);

}  // namespace f95mini
