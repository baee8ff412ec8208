#include "session/hand_over.h"

#include "os/os.h"
#include "session/command_line.h"

namespace vantor {

std::wstring hand_over_command(const std::vector<std::wstring>& arguments) {
  std::wstring command = L"vantor";
  for (const auto& argument : arguments) command += L" " + quoted_argument(argument);
  return command;
}

void hand_over_to_32bit_debugger(const std::vector<std::wstring>& arguments) {
  os::system().run_shell_command(hand_over_command(arguments));
}

}  // namespace vantor
