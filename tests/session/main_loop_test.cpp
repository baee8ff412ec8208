// The main loop over the in-memory target: which queued request runs, what cannot run,
// numbers that are no command, the idle step, quit and the window rebuild. The line-dump
// run is compared end to end (tests/e2e/cases/batch_modes.case).
#include "session/main_loop.h"

#include "process/debugged_process.h"
#include "session/session_fixture.h"
#include "session/session_process.h"
#include "ui/window_list.h"
#include "ui/streams_window.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

// Counts what the loop asks of the window library.
class LoopLibrary : public winlib::HeadlessLibrary {
 public:
  LoopLibrary() { winlib::set_window_library(this); }
  ~LoopLibrary() override { winlib::set_window_library(nullptr); }
  void yield_program_control() override { ++yields; }
  void refresh_window_list() override { ++list_refreshes; }
  void rebuild_main_window() override { ++rebuilds; }
  void append_to_main_caption(const std::string& text) override { caption += text; }
  int yields = 0;
  int list_refreshes = 0;
  int rebuilds = 0;
  std::string caption;
};

class MainLoopTest : public testing::SessionTest {
 protected:
  void SetUp() override {
    SessionTest::SetUp();
    ProgramName = L"C:\\progs\\p.exe";
    full_command_line = ProgramName;
    target.system.add_file(ProgramName, image(0x8664));
  }

  DebuggedProcess& launch(bool silent) {
    SilentMode = silent;
    DebuggedProcess& process = new_current_process();
    EXPECT_TRUE(process.launch(full_command_line));
    queue_run(ProgramName, 5);
    return process;
  }
  // A silent program run to its end by a first loop.
  DebuggedProcess& ended_program() {
    DebuggedProcess& process = launch(true);
    SetPendingCommand(kGoCommand, kStartFlag);
    loop();
    EXPECT_EQ(process.state(), psEnded);
    return process;
  }
  std::string loop() {
    ::testing::internal::CaptureStdout();
    RunMainLoop();
    return ::testing::internal::GetCapturedStdout();
  }

  LoopLibrary windows;
};

TEST_F(MainLoopTest, OfTwoRequestsQueuedBeforeTheLoopTakesThemOnlyTheLastRuns) {
  DebuggedProcess& process = launch(true);
  SetPendingCommand(kStepIntoCommand, kStartFlag);
  SetPendingCommand(kGoCommand, kStartFlag);
  EXPECT_EQ(loop(), "");
  EXPECT_EQ(process.run_mode(), kGoCommand);
  EXPECT_EQ(process.state(), psEnded);
  // The silent session ended by itself with nothing pending.
  EXPECT_EQ(PendingCommand, 0u);
  EXPECT_EQ(CurrentProcess, &process);
}

// Neither resumes the ended program: each request is cleared and the loop goes idle, where
// the deferred items are handled.
TEST_F(MainLoopTest, RunCommandsAfterTheProgramEndedAndNumbersThatAreNoCommandAreCleared) {
  DebuggedProcess& process = ended_program();
  process.defer_item("first");
  process.defer_item("second");
  for (std::uint32_t request : {kStepOverCommand | kStartFlag, kStepIntoCommand | kStartFlag, kGoCommand | kStartFlag,
                                kStepOutCommand | kStartFlag, kStartFlag, kInstructionFlag, 9u, 31u | kStartFlag}) {
    SCOPED_TRACE(request);
    const std::size_t waits = target.system.counters.waits;
    const std::size_t idles = target.system.input_waits.size();
    PendingCommand = request;
    EXPECT_EQ(loop(), "");
    EXPECT_EQ(target.system.counters.waits, waits);
    EXPECT_EQ(target.system.input_waits.size(), idles + 1);
    EXPECT_EQ(PendingCommand, 0u);
    EXPECT_EQ(process.run_mode(), kGoCommand);
  }
  EXPECT_TRUE(process.deferred_items().empty());
  EXPECT_EQ(process.handled_items(), (std::vector<std::string>{"first", "second"}));
}

TEST_F(MainLoopTest, TheIdleStepWaitsOnTheIdleEventThenYieldsAndRefreshes) {
  ended_program();
  SetPendingCommand(kRebuildWindowCommand, 0);
  loop();
  EXPECT_EQ(windows.rebuilds, 1);
  EXPECT_EQ(PendingCommand, 0u);
  // Two loops, each making its own event; every idle step waited 250 ms on that event.
  ASSERT_EQ(target.system.events_made.size(), 2u);
  ASSERT_EQ(target.system.input_waits.size(), 2u);
  EXPECT_EQ(target.system.input_waits[0].event, target.system.events_made[0]);
  EXPECT_EQ(target.system.input_waits[1].event, target.system.events_made[1]);
  EXPECT_EQ(target.system.input_waits[1].timeout_ms, 250u);
  EXPECT_EQ(windows.yields, 2);
  EXPECT_EQ(windows.list_refreshes, 2);
  EXPECT_EQ(CaptionText, " [C:\\progs\\p.exe]");
  EXPECT_EQ(IdleEvent, 0u);
}

TEST_F(MainLoopTest, TheTestSuiteDoesNotWaitForInput) {
  DebuggedProcess& process = ended_program();
  process.set_silent(false);
  const std::size_t idles = target.system.input_waits.size();
  TestSuiteMode = true;
  SetPendingCommand(kStepOverCommand, kStartFlag);
  // The driver finds the program ended: it says so and quits.
  EXPECT_EQ(loop(), "Process ended, exiting debugger\n");
  EXPECT_EQ(target.system.input_waits.size(), idles);
  EXPECT_EQ(CurrentProcess, nullptr);
  EXPECT_EQ(windows.yields, 2);  // the yield is in every mode
}

TEST_F(MainLoopTest, QuitClosesTheWindowsEndsTheProgramAndLeavesTheRequest) {
  launch(false);
  ui::OpenWindows.open(std::make_unique<ui::streams_window>());
  SetPendingCommand(kQuitCommand, kStartFlag);
  EXPECT_EQ(loop(), "");
  EXPECT_EQ(CurrentProcess, nullptr);
  EXPECT_TRUE(target.system.terminated);
  EXPECT_EQ(ui::OpenWindows.size(), 0);
  EXPECT_EQ(PendingCommand, kQuitCommand | kStartFlag);
}

TEST_F(MainLoopTest, ARunThatLeavesNoStopToShowPrintsTheState) {
  new_current_process();  // never launched: it cannot run
  ::testing::internal::CaptureStdout();
  RunAndReport(kGoCommand);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "State 0\n");
}

}  // namespace
}  // namespace vantor
