// The commands behind the table's codes, one function each, called by execute_command
// once the word has been found and its argument checked for presence.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "commands/command_table.h"
#include "values/element.h"

namespace vantor {

class StackFrame;

struct command_call {
  std::uint32_t code = 0;
  std::string_view argument;  // trimmed; may be empty for commands that take none
  StackFrame* frame = nullptr;
  int x = 0;
  int y = 0;
};

// Expression commands (expression_commands.cpp).
std::uint32_t print_command(const command_call& call);
std::uint32_t print_memory_command(const command_call& call);
std::uint32_t evaluate_only_command(const command_call& call);  // plot, stream, dstream
std::uint32_t watch_command(const command_call& call);
std::uint32_t dprint_command(const command_call& call);
std::uint32_t let_command(const command_call& call);

// Breakpoint commands (breakpoint_commands.cpp).
std::uint32_t breakpoint_command(const command_call& call);  // breakpoint and getto
std::uint32_t data_break_command(const command_call& call);  // write_break and use_break
std::uint32_t breakpoints_window_command(const command_call& call);

// Window commands (window_commands.cpp).
std::uint32_t view_command(const command_call& call);
std::uint32_t find_routines_command(const command_call& call);
std::uint32_t registers_command(const command_call& call);
std::uint32_t streams_command(const command_call& call);
std::uint32_t dumpinfo_command(const command_call& call);

// Evaluates `text` in the frame's name space. On failure the evaluator's message is shown
// (in an error box, or on the console when `on_console`) and null is returned.
std::unique_ptr<element> evaluate_argument(std::string_view text, StackFrame* frame, bool on_console = false);
// The evaluator's message for an error code, cut as the message boxes take it.
std::string evaluation_message(std::int32_t error_code);

}  // namespace vantor
