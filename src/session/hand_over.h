// 32-bit programs are debugged by the separate 32-bit debugger, "vantor": it is started
// through the command interpreter with the same arguments this debugger was given.
#pragma once

#include <string>
#include <vector>

namespace vantor {

// "vantor" followed by every argument, each after a blank and quoted when it holds one.
std::wstring hand_over_command(const std::vector<std::wstring>& arguments);

// Runs that command and waits for it to finish.
void hand_over_to_32bit_debugger(const std::vector<std::wstring>& arguments);

}  // namespace vantor
