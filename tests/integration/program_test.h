// A program debugged under Wine the way a session debugs it: the counting Win32 layer, a
// window library that can press Pause, console messages, and run commands given as the
// main loop gives them.
#pragma once

#include <stdexcept>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "common/messages.h"
#include "counting_system.h"
#include "debuggee.h"
#include "process/debugged_process.h"
#include "process/user_space_buffer.h"
#include "stack/call_stack.h"
#include "support/run_command.h"
#include "values/element.h"
#include "winlib/headless_library.h"

namespace vantor::testing {

// Presses Pause on a chosen yield of the debugger's wait loop (one yield per quiet 500 ms),
// as a user would while the program runs.
class PausingLibrary : public winlib::HeadlessLibrary {
 public:
  void yield_program_control() override {
    if (++yields == pause_on_yield && process != nullptr) process->request_pause();
  }
  int yields = 0;
  int pause_on_yield = -1;  // never
  DebuggedProcess* process = nullptr;
};

class ProgramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    os::set_system(&system);
    winlib::set_window_library(&windows);
    windows.process = &process;
    ConsoleMode = true;
  }
  void TearDown() override {
    if (process.launched() && process.state() != psEnded) process.end();
    winlib::set_window_library(nullptr);
  }

  // Launches a program of tests/integration/programs and steps into its first line. A test
  // cannot go on without its program: a failure here ends the test (gtest reports the
  // exception), where an ASSERT would only leave this helper.
  void start(const std::wstring& name) {
    if (!process.launch(program_command(name)) || command(kModeStepInto) != psStopped) {
      ADD_FAILURE() << "could not start " << narrow_from_wide(name) << ": " << process.status_text();
      throw std::runtime_error("the program did not start");
    }
  }
  std::int32_t command(std::int32_t mode) { return run_command(process, mode); }
  // Runs to the line of `source` marked `marker` through a breakpoint there.
  void run_to(const std::string& source, const std::string& marker) {
    ASSERT_GE(process.breakpoints().set_breakpoint(source, line_of(source, marker), 1, 1, ""), 1) << marker;
    ASSERT_EQ(command(kModeGo), psStopped) << process.status_text();
  }

  CallStack& stack() { return *process.current_stack(); }
  // The line of the innermost frame that has one (0 when none has).
  std::int32_t stopped_line() {
    for (std::int32_t i = 0; process.current_stack() && i < stack().depth(); ++i)
      if (std::int32_t line = stack().information(i).line; line > 0) return line;
    return 0;
  }
  std::string stopped_routine() {
    return process.current_stack() && stack().depth() > 0 ? stack().information(0).routine_name : "";
  }
  std::unique_ptr<element> variable(const std::string& name) {
    StackFrame* frame = process.current_stack() ? stack().frame(0) : nullptr;
    return frame ? frame->find_variable(name) : nullptr;
  }

  CountingSystem system;
  PausingLibrary windows;
  DebuggedProcess process;
};

}  // namespace vantor::testing
