// The symbol stream of a routine's debug block: its variables, the derived types they use
// and the COMMON blocks they name. It is read once per routine, the first time a stack
// frame of that routine needs its symbols, into the routine's F95SymbolTable.
#pragma once

#include "debuginfo/map_entry.h"
#include "process/target_memory.h"

namespace vantor {

// Reads the routine's symbol stream into routine.symbols unless it was read before.
// True when the routine's symbols are loaded; false for a routine without a debug block,
// one compiled with the old record layout (the user is told, and asked again on the next
// request) and a corrupt stream. An unknown record tag ends the debugger with status 1.
bool load_routine_symbols(TargetMemory& memory, MapEntry& routine);

}  // namespace vantor
