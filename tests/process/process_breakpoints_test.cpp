// Line traps of a library loaded while the program runs, through the debugged process's
// event loop over scripted events and images built in fake memory.
#include <gtest/gtest.h>

#include "common/messages.h"
#include "process/debugged_process.h"
#include "support/fake_target.h"
#include "support/run_command.h"
#include "support/scripted_events.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

constexpr Address kImageBase = 0x140000000;
constexpr Address kLibraryFirstLine = 0x7FF100001000, kLibrarySecondLine = kLibraryFirstLine + 6;

class ProcessBreakpointsTest : public ::testing::Test {
 protected:
  // Launches the program and steps into its first line as a session begins; queues the
  // library's load and the trap that ends the next run.
  void SetUp() override {
    ConsoleMode = true;
    winlib::set_window_library(&windows);
    image.routine("MAIN", 0x1000, 0x40).source("C:\\src\\prog.f95").line(3, 0).line(4, 9).line(5, 0x14);
    library.routine("LIB_WORK", 0x1000, 0x20).source("C:\\src\\lib.f95").line(7, 0).line(8, 6);
    ASSERT_TRUE(process.launch(L"prog.exe"));
    testing::queue_program_start(target.system, image, L"C:\\src\\prog.exe");
    target.system.queue_event(testing::exception_event(kBreakpointException, kImageBase + 0x1000));
    ASSERT_EQ(testing::run_command(process, kModeStepInto), psStopped);
    target.system.queue_event(
        testing::image_event(os::kLoadDllEvent, target.system, library, L"C:\\src\\lib.dll"));
  }
  void TearDown() override {
    ConsoleMode = false;
    winlib::set_window_library(nullptr);
  }
  std::uint8_t byte_at(Address address) { return target.system.peek(address, 1)[0]; }

  testing::FakeTarget target;
  testing::DebugImageBuilder image{kImageBase};
  testing::DebugImageBuilder library{0x7FF100000000};
  winlib::HeadlessLibrary windows;
  DebuggedProcess process;
};

// A step takes in the new library's routines: a breakpoint set there afterwards saves the
// code's own byte, not the line trap it finds.
TEST_F(ProcessBreakpointsTest, ALibraryLoadedDuringAStepGetsItsLineTraps) {
  target.system.queue_event(testing::exception_event(kBreakpointException, kLibraryFirstLine));
  ASSERT_EQ(testing::run_command(process, kModeStepInto), psStopped);
  EXPECT_EQ(byte_at(kLibrarySecondLine), 0xCC);
  ASSERT_EQ(process.breakpoints().set_breakpoint("lib.f95", 8, 1, 1, ""), 1);
  EXPECT_EQ(process.breakpoints().breakpoint(0)->saved_byte, 0x90);
  target.system.queue_event(testing::exit_process_event());
  EXPECT_EQ(testing::run_command(process, kModeGo), psEnded);
}

TEST_F(ProcessBreakpointsTest, ALibraryLoadedUnderGoKeepsItsCode) {
  ASSERT_EQ(process.breakpoints().set_breakpoint("prog.f95", 5, 1, 1, ""), 1);
  target.system.queue_event(testing::exception_event(kBreakpointException, kImageBase + 0x1014));
  ASSERT_EQ(testing::run_command(process, kModeGo), psStopped);
  EXPECT_EQ(byte_at(kLibraryFirstLine), 0x90);
  EXPECT_EQ(byte_at(kLibrarySecondLine), 0x90);
}

}  // namespace
}  // namespace vantor
