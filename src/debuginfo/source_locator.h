// Finding a source file's text on disk and reading it into lines. The line tables record
// the name the compiler was given, which need not exist where the debugger runs, so the
// bare name is also tried in a list of directories.
#pragma once

#include <cstdint>
#include <string>

#include "debuginfo/source_file.h"

namespace vantor {

// Where to look besides the recorded name; each is a list of directories separated by ';'.
struct SourceSearch {
  std::wstring startup_directories;  // kept by the start-up
  std::wstring source_path;          // "/sourcepath"; when empty, the "SOURCEPATH" variable
};

// Looks for the file once and caches the outcome in its locate state, which it returns:
// the recorded name when it exists, else the first directory of the list (the recorded
// name's own, ".\", the start-up list, the source path) holding the bare name. A file
// found is read into its lines. kSourceNotFound when nothing was found.
std::int32_t locate_source_file(source_file& file, const SourceSearch& search);

// Reads the text at `path` into the file's lines (a path the user chose, or one found
// above) and records the path and the state; true when the text was read.
bool load_source_text(source_file& file, const std::wstring& path);

}  // namespace vantor
