// What the assembler window asks about the program's code: routines by address and by
// name, and the source lines whose code starts at an address. The debug-information part
// answers from the modules' routine maps and line tables.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "process/target_memory.h"

namespace vantor::ui {

struct code_routine {
  std::string name;
  Address start = 0;
};

struct code_line {
  std::string file;
  int line = 0;
  std::optional<std::string> text;  // the line's text when the file is loaded
};

class code_map {
 public:
  virtual ~code_map() = default;
  // The routine whose code holds the address.
  virtual std::optional<code_routine> routine_containing(Address address) = 0;
  // The routine of that name (letter case ignored).
  virtual std::optional<code_routine> routine_named(const std::string& name) = 0;
  // The source line whose code starts exactly at the address.
  virtual std::optional<code_line> line_starting_at(Address address) = 0;
};

}  // namespace vantor::ui
