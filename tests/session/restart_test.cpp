// Restarting over the in-memory target: the breakpoints carried over (or not), the run
// queued, and a launch that fails.
#include "session/restart.h"

#include "process/debugged_process.h"
#include "session/session_fixture.h"
#include "session/session_process.h"
#include "ui/streams_window.h"
#include "ui/window_list.h"

namespace vantor {
namespace {

class RestartTest : public testing::SessionTest {
 protected:
  static constexpr Address kLine12 = 0x401010;
  static constexpr Address kLine20 = 0x401040;
  static constexpr Address kTotal = 0x405000;

  void SetUp() override {
    SessionTest::SetUp();
    full_command_line = L"\"C:\\my progs\\p.exe\" 1";
    target.system.map(0x401000, 0x1000);
    target.system.poke_value<std::uint8_t>(kLine12, 0x90);
    target.system.poke_value<std::uint8_t>(kLine20, 0x90);
    DebuggedProcess& process = new_current_process();
    ASSERT_TRUE(process.launch(full_command_line));
    BreakpointList& list = process.breakpoints();
    list.add_breakpoint(kLine20, 3, 2, "  n > 1 ", "prog.f95", 20);
    list.add_breakpoint(kLine12, 1, 1, "", "prog.f95", 12, /*temporary=*/true);
    list.set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, kTotal, 4);
    list.add_breakpoint(kLine12, 1, 1, "", "prog.f95", 12);
    list.check_breakpoint(kLine20);  // a hit, to be forgotten
    ui::OpenWindows.open(std::make_unique<ui::streams_window>());
  }
  void TearDown() override {
    KeepBreakpointsOnRestart = false;
    ui::OpenWindows.close_all();
    SessionTest::TearDown();
  }
};

TEST_F(RestartTest, TheUsersBreakpointsAreCarriedOverInTheirOrderWithoutTheirHits) {
  KeepBreakpointsOnRestart = true;
  const DebuggedProcess* old = CurrentProcess;
  RestartProgram();
  ASSERT_NE(CurrentProcess, nullptr);
  EXPECT_NE(CurrentProcess, old);
  EXPECT_EQ(target.system.created_command_lines,
            (std::vector<std::wstring>{full_command_line, full_command_line}));
  EXPECT_TRUE(target.system.terminated);  // the old program was ended
  EXPECT_EQ(CurrentProcess->state(), psPaused);
  EXPECT_EQ(PendingCommand, kStepIntoCommand | kStartFlag);
  EXPECT_EQ(ui::OpenWindows.size(), 0);

  const BreakpointList& list = CurrentProcess->breakpoints();
  ASSERT_EQ(list.count(), 3);
  const breakpoint_info& data = *list.breakpoint(0);  // data breakpoints go first
  EXPECT_TRUE(data.is_data());
  EXPECT_EQ(data.address, kTotal);
  EXPECT_EQ(data.length, 4u);
  EXPECT_EQ(CurrentProcess->hardware_slots()[data.line].access, kAccessWrite);
  const breakpoint_info& counted = *list.breakpoint(1);
  EXPECT_EQ(counted.address, kLine20);
  EXPECT_EQ(counted.file, "prog.f95");
  EXPECT_EQ(counted.line, 20);
  EXPECT_EQ(counted.after, 3);
  EXPECT_EQ(counted.every, 2);
  EXPECT_EQ(counted.condition, "n > 1");
  EXPECT_EQ(counted.hits, 0u);
  EXPECT_EQ(counted.saved_byte, 0x90);
  const breakpoint_info& plain = *list.breakpoint(2);
  EXPECT_EQ(plain.address, kLine12);
  EXPECT_FALSE(plain.temporary);
  // Each has an id of the new process, none shared.
  EXPECT_NE(data.id, counted.id);
  EXPECT_NE(counted.id, plain.id);
  EXPECT_EQ(list.next_id(), std::max({data.id, counted.id, plain.id}) + 1);
}

TEST_F(RestartTest, WithoutTheOptionTheNewProgramHasNoBreakpoints) {
  RestartProgram();
  ASSERT_NE(CurrentProcess, nullptr);
  EXPECT_EQ(CurrentProcess->breakpoints().count(), 0);
  EXPECT_EQ(CurrentProcess->hardware_slots().free_hardware_slots(), HardwareSlots::kCount);
  EXPECT_EQ(PendingCommand, kStepIntoCommand | kStartFlag);
}

TEST_F(RestartTest, AFailedLaunchIsReportedAndLeavesTheFailedProcess) {
  KeepBreakpointsOnRestart = true;
  target.system.set_create_process_error(2);
  ::testing::internal::CaptureStdout();
  RestartProgram();
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "Error: There was a problem debugging your executable:\n\nFile not found\n");
  ASSERT_NE(CurrentProcess, nullptr);
  EXPECT_EQ(CurrentProcess->state(), psFailed);
  EXPECT_EQ(CurrentProcess->breakpoints().count(), 0);
  EXPECT_EQ(PendingCommand, 0u);

  // The user may try again.
  target.system.set_create_process_error(0);
  RestartProgram();
  EXPECT_EQ(CurrentProcess->state(), psPaused);
  EXPECT_EQ(PendingCommand, kStepIntoCommand | kStartFlag);
}

}  // namespace
}  // namespace vantor
