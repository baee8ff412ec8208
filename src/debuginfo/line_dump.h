// The line dump: every routine's line table as text, for checking what the compiler
// recorded against the source ("/dump_lines" writes it to "linedump.txt").
#pragma once

#include <string>
#include <vector>

namespace vantor {

class DebuggedProcess;
class Module;

// Appends the module's lines: its display name, then per routine with line records
// " NAME, N lines" and one "  I. LINE" per record (with " (+OFFSET)" in hex when asked),
// closed by an empty line. Nothing for a module without such routines.
void dump_module_lines(const Module& module, std::vector<std::string>& out, bool with_offsets);

// Every module of the process, newest first, with offsets.
std::vector<std::string> dump_process_lines(const DebuggedProcess& process);

// Writes the process's dump, one line each, to `path`; false when the file cannot be written.
bool write_line_dump(const DebuggedProcess& process, const std::wstring& path = L"linedump.txt");

}  // namespace vantor
