// What every benchmark under Wine sets up before it launches its program: the counting
// Win32 layer, the headless window library and console messages; and its clock.
#pragma once

#include <chrono>
#include <cstdio>
#include <cwchar>
#include <string>

#include "common/messages.h"
#include "integration/counting_system.h"
#include "process/debugged_process.h"
#include "support/run_command.h"
#include "winlib/headless_library.h"

namespace vantor::testing {

class BenchSession {
 public:
  BenchSession() {
    os::set_system(&system);
    winlib::set_window_library(&windows_);
    ConsoleMode = true;
  }
  ~BenchSession() { winlib::set_window_library(nullptr); }
  BenchSession(const BenchSession&) = delete;
  BenchSession& operator=(const BenchSession&) = delete;

  // Launches the program and steps into its first line, or says why it could not.
  bool start(const wchar_t* program) {
    if (process.launch(L"\"" + std::wstring(program) + L"\"") && run_command(process, kModeStepInto) == psStopped)
      return true;
    std::printf("could not start the program: %s\n", process.status_text().c_str());
    return false;
  }

  CountingSystem system;

 private:
  winlib::HeadlessLibrary windows_;

 public:
  DebuggedProcess process;
};

using Clock = std::chrono::steady_clock;

inline double milliseconds_since(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// A source file's name from the command line (plain ASCII).
inline std::string ascii(const wchar_t* text) { return std::string(text, text + std::wcslen(text)); }

}  // namespace vantor::testing
