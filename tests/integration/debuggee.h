// Where the Wine-side tests find their debuggees: build/win64/debuggees, beside the test
// executable.
#pragma once

#include <windows.h>

#include <string>

namespace vantor::testing {

inline std::wstring test_executable_directory() {
  wchar_t path[MAX_PATH];
  DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring text(path, length);
  return text.substr(0, text.rfind(L'\\'));
}

inline std::wstring debuggee_path(const std::wstring& name) {
  return test_executable_directory() + L"\\debuggees\\" + name + L".exe";
}

// A command line for a debuggee with its arguments.
inline std::wstring debuggee_command(const std::wstring& name, const std::wstring& arguments = L"") {
  std::wstring line = L"\"" + debuggee_path(name) + L"\"";
  if (!arguments.empty()) line += L" " + arguments;
  return line;
}

// A scratch file name in the temporary folder, unique to this test process.
inline std::wstring scratch_path(const std::wstring& name) {
  wchar_t folder[MAX_PATH];
  GetTempPathW(MAX_PATH, folder);
  return std::wstring(folder) + L"vantor_itest_" + std::to_wstring(GetCurrentProcessId()) + L"_" + name;
}

}  // namespace vantor::testing
