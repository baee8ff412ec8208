// The two questions the rest of the debugger asks of the line tables: which line an
// address belongs to, and which address starts a line of a file. Also the gathering of
// routines under the source file their line tables name.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "debuginfo/map_entry.h"
#include "debuginfo/source_file.h"

namespace vantor {

class DebuggedProcess;
class Module;

// Adds a routine that has a line table to the source file the table names (case ignored),
// making that file's record at the module's first report of it: each image has its own
// record of a file, whose routines all belong to that image. Returns the record (null
// without a line table).
source_file* register_routine(std::vector<std::unique_ptr<source_file>>& files, Module& module, MapEntry& routine);

// Detaches an unloaded module from the source files it reported: their routine lists are
// emptied and they no longer point at it. The records stay for windows that show them.
void forget_module_sources(std::vector<std::unique_ptr<source_file>>& files, const Module& module);

// The source line of a code offset from the routine's start (0 without a line table).
// A thread stopped by a line trap has its program counter one byte after the trap, so an
// offset one past a record's offset belongs to that record's line.
std::int32_t line_of_offset(const LineTable* table, std::int64_t offset);
std::int32_t line_of_address(const MapEntry& routine, Address pc);

// The address of a line of a file over every module (newest first); 0 if none. With
// whole_path false only the recorded name after its last backslash is compared.
Address address_of_line(const DebuggedProcess& process, std::string_view file, std::int32_t line,
                        bool whole_path = true);

}  // namespace vantor
