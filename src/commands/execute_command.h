// The interpreter of one command line, shared by the Command dialog and scripts.
#pragma once

#include <cstdint>
#include <string_view>

#include "commands/command_table.h"

namespace vantor {

class StackFrame;

// Runs one line: its first word chooses the command, the rest is its argument, and any
// expression in it is evaluated in the name space of `frame` (which may be null). A window
// that "print" opens is placed at (x, y). Returns a CommandResult; the messages of a
// failure have been shown.
std::uint32_t execute_command(std::string_view line, StackFrame* frame, int x, int y);

// The parts of a command line: its first word (letters, digits and '_') and the argument
// after it, without the white space around either. A blank line has an empty word.
struct command_words {
  std::string_view word;
  std::string_view argument;
};
command_words split_command_line(std::string_view line);

}  // namespace vantor
