// The rows of the two list windows over the process's address space: its COMMON blocks
// and its loaded modules. The windows cut each row to their width and draw it; the text
// is made here.
#pragma once

#include <string>

#include "debuginfo/common_block_cache.h"
#include "ui/text_window.h"

namespace vantor {

class DebuggedProcess;
class Module;

// "/NAME/ = z'start' - z'end' (size z'size')": the end shown is one past the last byte.
std::string common_block_row(const CommonBlock& block);
// "name = z'load base' - z'end'" with the image's file name after its last backslash.
std::string module_row(const Module& module);

// One row per COMMON block of the program (its run-time list walked for new blocks).
void fill_common_window(DebuggedProcess& process, ui::window_rows& rows, std::string& status);
// One row per loaded module, newest first.
void fill_modules_window(DebuggedProcess& process, ui::window_rows& rows, std::string& status);

}  // namespace vantor
