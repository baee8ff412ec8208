// The debugger's own command line: switches, the program to debug and its arguments.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vantor {

constexpr const char* kVersionBanner = "Quorvel Debugger for 64-bit Windows version 8.50";
constexpr const char* kVersionSecondLine = "Source-level debugging of Fortran 95 and C programs built by QBE42";

// Reads the arguments that follow the debugger's own name into the start-up globals.
// Returns the exit status when the session must end here (the message has been shown),
// nullopt when start-up goes on.
std::optional<int> parse_command_line(const std::vector<std::wstring>& arguments);

// An argument as it is written into a command line: in double quotes when it holds a blank.
std::wstring quoted_argument(const std::wstring& argument);

}  // namespace vantor
