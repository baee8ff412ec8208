// Restarting a real program under Wine: the user's breakpoints stop the new run where they
// stopped the old one, and the debugger's own temporary ones are gone.
#include <gtest/gtest.h>

#include "common/messages.h"
#include "debuggee.h"
#include "os/win32/win32_system.h"
#include "process/debugged_process.h"
#include "session/pending_command.h"
#include "session/restart.h"
#include "session/session_process.h"
#include "session/startup_globals.h"
#include "session/test_suite.h"
#include "support/run_command.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

constexpr const char* kSource = "stepping.f95";

class RestartUnderWineTest : public ::testing::Test {
 protected:
  void SetUp() override {
    os::set_system(&system);
    winlib::set_window_library(&windows);
    ConsoleMode = true;
    SilentMode = false;
    full_command_line = testing::program_command(L"stepping");
    DebuggedProcess& process = new_current_process();
    ASSERT_TRUE(process.launch(full_command_line)) << process.status_text();
  }
  void TearDown() override {
    end_current_process();
    KeepBreakpointsOnRestart = false;
    PendingCommand = 0;
    full_command_line.clear();
    winlib::set_window_library(nullptr);
  }

  // Runs the current program as the main loop does; the line it stopped at, or 0 when it
  // did not stop at one.
  static std::int32_t run(std::uint32_t command) {
    if (testing::run_command(*CurrentProcess, static_cast<std::int32_t>(command)) != psStopped) return 0;
    return test_suite_position().line;
  }

  // A breakpoint the debugger makes for itself at a marked line.
  static void add_temporary_breakpoint(const std::string& marker) {
    BreakpointList& list = CurrentProcess->breakpoints();
    std::int64_t id = list.set_breakpoint(kSource, testing::line_of(kSource, marker), 1, 1, "");
    ASSERT_GT(id, 0) << marker;
    const breakpoint_info placed = *list.find(static_cast<std::uint32_t>(id));
    list.remove_breakpoint(placed.id);
    list.add_breakpoint(placed.address, 1, 1, "", placed.file, placed.line, /*temporary=*/true);
  }

  os::Win32System system;
  winlib::HeadlessLibrary windows;
};

TEST_F(RestartUnderWineTest, KeptBreakpointsStopTheNewRunAndTemporaryOnesAreDropped) {
  const std::int32_t after_work = testing::line_of(kSource, "after work");
  ASSERT_GT(run(kStepIntoCommand), 0);
  ASSERT_GE(CurrentProcess->breakpoints().set_breakpoint(kSource, after_work, 1, 1, ""), 1);
  add_temporary_breakpoint("leaf body");
  // The old run stops at both.
  EXPECT_EQ(run(kGoCommand), testing::line_of(kSource, "leaf body"));

  KeepBreakpointsOnRestart = true;
  RestartProgram();
  EXPECT_EQ(PendingCommand, kStepIntoCommand | kStartFlag);
  ASSERT_NE(CurrentProcess, nullptr);
  ASSERT_EQ(CurrentProcess->breakpoints().count(), 1);
  EXPECT_EQ(CurrentProcess->breakpoints().breakpoint(0)->line, after_work);

  // The new run passes the leaf routine and stops at the kept line, then runs to its end.
  const std::int32_t first = run(kStepIntoCommand);
  EXPECT_GT(first, 0);
  EXPECT_LT(first, after_work);
  EXPECT_EQ(run(kGoCommand), after_work);
  EXPECT_EQ(run(kGoCommand), 0);
  EXPECT_EQ(CurrentProcess->state(), psEnded);
}

}  // namespace
}  // namespace vantor
