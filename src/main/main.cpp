// The debugger's entry point: the product's OS layer and window library, then the session.
#include <string>
#include <vector>

#include "os/win32/win32_system.h"
#include "session/startup.h"

int wmain(int argc, wchar_t** argv) {
  vantor::os::Win32System system;
  vantor::os::set_system(&system);
  std::vector<std::wstring> arguments(argv + 1, argv + argc);
  return vantor::start_session(arguments);
}
