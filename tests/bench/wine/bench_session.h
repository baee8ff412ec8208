// What every benchmark under Wine sets up before it launches its program: the counting
// Win32 layer, the headless window library and console messages; and its clock.
#pragma once

#include <chrono>

#include "common/messages.h"
#include "integration/counting_system.h"
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

  CountingSystem system;

 private:
  winlib::HeadlessLibrary windows_;
};

using Clock = std::chrono::steady_clock;

inline double milliseconds_since(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

}  // namespace vantor::testing
