// Commands the user types: the Command dialog with its history, the forms addressed to
// the source window in front, and the name space a typed command works in.
#pragma once

#include <string>
#include <vector>

namespace vantor {

class StackFrame;

constexpr std::size_t kCommandHistorySize = 20;

// The lines entered before, newest first; at most kCommandHistorySize.
const std::vector<std::string>& command_history();
void clear_command_history();

// The modal Command dialog, pre-filled with `text`. True, with the text entered in `text`,
// when the user pressed OK on something not empty.
bool open_command_dialog(std::string& text);

// The Command Prompt entry (menu, keyboard, source window): asks for a command, pre-filled
// with the key typed (when `first_char` is not 0) or the last command typed, remembers it,
// and runs it in current_name_space().
void typed_command(char first_char = 0);

// What a typed line does once entered: the source-window forms, else the interpreter.
void run_typed_line(const std::string& text);

// The frame that typed expressions see: that of the front window which has one: a source
// window's own frame, the call-stack window's selected frame, or the assembler window's
// when it shows the innermost frame. Null when no window qualifies.
StackFrame* current_name_space();

}  // namespace vantor
