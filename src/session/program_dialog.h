// Asking the user for the program to debug when the command line named none, or when
// launching it failed.
#pragma once

#include <string>

namespace vantor {

struct program_text {
  std::wstring name;
  std::wstring arguments;
};

// Splits a typed command line: a name in double quotes runs to the closing quote, any other
// to the first white space; the rest, without leading blanks, is the arguments.
program_text split_program_text(const std::wstring& text);

constexpr const char* kConsoleUsage =
    "No program to debug. Usage: vantor64 [/console] [/silent] [/runto file line] [/script file] "
    "[/sourcepath path] program [/params arguments...]";

// Shows the program dialog until the user names a program (true: ProgramName and
// ProgramArguments are set) or cancels (false).
bool ask_for_program();

}  // namespace vantor
