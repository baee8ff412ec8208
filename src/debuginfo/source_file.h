// One distinct source file named by the line tables of a module, its text once located,
// and the routines whose line tables name it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "debuginfo/map_entry.h"

namespace vantor {

class Module;

struct source_line {
  std::string text;
};

// Locate states: 0 and 2 are fixed; the others are what loading the text gave.
constexpr std::int32_t kSourceNotLookedFor = 0;
constexpr std::int32_t kSourceLoaded = 1;
constexpr std::int32_t kSourceNotFound = 2;
constexpr std::int32_t kSourceUnreadable = 3;  // found, but its text could not be read

struct source_file {
  Module* module = nullptr;  // the module that first reported it
  std::wstring recorded_name;
  std::wstring full_path;  // empty until located
  std::vector<source_line> lines;
  std::vector<MapEntry*> routines;
  std::int32_t locate_state = kSourceNotLookedFor;
};

}  // namespace vantor
