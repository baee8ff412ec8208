// Where the Wine-side tests find their debuggees: build/win64/debuggees, beside the test
// executable.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
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

// A file built from tests/integration/programs, and a command line for one of its programs.
inline std::wstring program_path(const std::wstring& file) {
  return test_executable_directory() + L"\\debuggees\\f95\\" + file;
}
inline std::wstring program_command(const std::wstring& name) { return L"\"" + program_path(name + L".exe") + L"\""; }

// Whether a path ends with `tail`, letters of either case alike.
inline bool ends_with(const std::wstring& text, const std::wstring& tail) {
  return text.size() >= tail.size() && _wcsicmp(text.c_str() + text.size() - tail.size(), tail.c_str()) == 0;
}

// The number of the line of tests/integration/programs/`source` that holds "! `marker`"
// (the sources sit two folders above build/win64, where the test executable runs).
inline std::int32_t line_of(const std::string& source, const std::string& marker) {
  const std::filesystem::path path = test_executable_directory() + L"\\..\\..\\tests\\integration\\programs\\" +
                                     std::wstring(source.begin(), source.end());
  std::ifstream file(path);
  std::string text;
  for (std::int32_t line = 1; std::getline(file, text); ++line)
    if (text.find("! " + marker) != std::string::npos) return line;
  ADD_FAILURE() << "no line marked \"" << marker << "\" in " << source;
  return -1;
}

// A scratch file name in the temporary folder, unique to this test process.
inline std::wstring scratch_path(const std::wstring& name) {
  wchar_t folder[MAX_PATH];
  GetTempPathW(MAX_PATH, folder);
  return std::wstring(folder) + L"vantor_itest_" + std::to_wstring(GetCurrentProcessId()) + L"_" + name;
}

}  // namespace vantor::testing
