// Breakpoints from commands: the argument forms of "breakpoint" and "getto" with their
// messages, and data breakpoints on values.
#include "commands/command_fixture.h"
#include "process/data_breakpoints.h"

namespace vantor::testing {
namespace {

using BreakpointCommandTest = CommandTest;

const breakpoint_info* only_breakpoint(const BreakpointList& list) {
  EXPECT_EQ(list.count(), 1);
  return list.count() == 1 ? list.breakpoint(0) : nullptr;
}

TEST_F(BreakpointCommandTest, ALineAloneOrAfterADotIsInTheNameSpacesFile) {
  EXPECT_EQ(run("breakpoint . 12"), kCommandDone);
  const breakpoint_info* set = only_breakpoint(host.list);
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(set->file, kSource);
  EXPECT_EQ(set->line, 12);
  EXPECT_EQ(set->address, 0x401010u);
  EXPECT_EQ(set->after, 1);
  EXPECT_EQ(set->every, 1);

  host.list.clear_breakpoints();
  EXPECT_EQ(run("breakpoint 20"), kCommandDone);
  set = only_breakpoint(host.list);
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(set->file, kSource);
  EXPECT_EQ(set->line, 20);
  EXPECT_TRUE(set->condition.empty());
  EXPECT_EQ(printed, "");
  EXPECT_EQ(PendingCommand, 0u);
}

TEST_F(BreakpointCommandTest, FileLineAfterAndEvery) {
  EXPECT_EQ(run("breakpoint prog.f95 12 3 2"), kCommandDone);
  const breakpoint_info* set = only_breakpoint(host.list);
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(set->file, "prog.f95");
  EXPECT_EQ(set->line, 12);
  EXPECT_EQ(set->after, 3);
  EXPECT_EQ(set->every, 2);
  EXPECT_EQ(run("breakpoint prog.f95 20 5"), kCommandDone);
  EXPECT_EQ(host.list.breakpoint(1)->after, 5);
  EXPECT_EQ(host.list.breakpoint(1)->every, 1);
}

TEST_F(BreakpointCommandTest, WhereTheLineCannotBeFoundOrHasNoNameSpace) {
  EXPECT_EQ(run("breakpoint 13"), kCommandFailed);
  EXPECT_EQ(printed, "Could not set breakpoint at line 13 in C:\\src\\prog.f95\n");
  EXPECT_EQ(run("breakpoint other.f95 12"), kCommandFailed);
  EXPECT_EQ(printed, "Could not set breakpoint at line 12 in other.f95\n");

  ::testing::internal::CaptureStdout();
  EXPECT_EQ(execute_command("breakpoint 12", nullptr, 5, 5), kCommandFailed);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Unable to get namespace\n");

  FakeFrame& library_frame = host.add_frame("_write_unit");  // no line table
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(execute_command("breakpoint 12", &library_frame, 5, 5), kCommandFailed);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "No debug information for _write_unit\n");
  // A dot there is taken as a file name.
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(execute_command("breakpoint . 12", &library_frame, 5, 5), kCommandFailed);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Could not set breakpoint at line 12 in .\n");

  host.process = false;
  EXPECT_EQ(run("breakpoint 12"), kCommandFailed);
  EXPECT_EQ(host.list.count(), 0);
}

TEST_F(BreakpointCommandTest, GettoSetsTheRunToBreakpointAndGoes) {
  run("breakpoint 12");
  EXPECT_EQ(run("getto 20"), kCommandDone);
  ASSERT_EQ(host.list.count(), 2);
  EXPECT_EQ(host.run_to_breakpoint, static_cast<std::int32_t>(host.list.breakpoint(1)->id));
  EXPECT_EQ(PendingCommand, kGoCommand | kStartFlag);

  PendingCommand = 0;
  host.run_to_breakpoint = -1;
  EXPECT_EQ(run("getto 14"), kCommandFailed);
  EXPECT_EQ(printed, "Could not set breakpoint at line 14 in C:\\src\\prog.f95\n");
  EXPECT_EQ(host.run_to_breakpoint, -1);
  EXPECT_EQ(PendingCommand, 0u);
}

TEST_F(BreakpointCommandTest, BreakpointsWindowFollowsTheCommands) {
  EXPECT_EQ(run("bps"), kCommandDone);
  auto* window = ui::OpenWindows.find_first(ui::kBreakpointsKind);
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->contents_text(), "Breakpoints\nNo breakpoints\n");
  run("breakpoint prog.f95 12 2");
  ASSERT_EQ(window->row_count(), 2);
  EXPECT_EQ(window->rows()[1], "prog.f95                                12       2       1       0  ");
  EXPECT_EQ(run("breakpoints"), kCommandDone);
  EXPECT_EQ(ui::OpenWindows.size(), 1);  // brought forward, not opened again
}

TEST_F(BreakpointCommandTest, DataBreakpointsCoverTheValueWithHardwareWatches) {
  EXPECT_EQ(run("wb"), kCommandDone);
  EXPECT_EQ(host.slots.free_hardware_slots(), 4);

  EXPECT_EQ(run("write_break n"), kCommandDone);
  EXPECT_EQ(printed, "Information: Data breakpoint set\n");
  EXPECT_EQ(host.slots[0].address, kN);
  EXPECT_EQ(host.slots[0].size, 4u);
  EXPECT_EQ(host.slots[0].kind, kSlotDataBreakpoint);
  EXPECT_NE(host.slots[0].access, kAccessUse);
  EXPECT_EQ(run("ub x"), kCommandDone);
  EXPECT_EQ(host.slots[1].access, kAccessUse);
  EXPECT_EQ(host.slots[1].size, 8u);
  // Data breakpoints show in the window as soon as they are set.
  run("bps");
  EXPECT_EQ(ui::OpenWindows.find_first(ui::kBreakpointsKind)->row_count(), 3);
}

TEST_F(BreakpointCommandTest, ObjectsOfUpToThirtyNineBytesPassTheSizeTest) {
  // 36 bytes: four 8-byte watches and one of 4, though the count asked only for four.
  EXPECT_EQ(run("wb text"), kCommandDone);
  EXPECT_EQ(host.slots.free_hardware_slots(), 0);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(host.slots[i].address, kText + 8 * i);
    EXPECT_EQ(host.slots[i].size, 8u);
  }
  host.slots.free_data_breakpoint_slots();
  EXPECT_EQ(run("wb n"), kCommandDone);
  EXPECT_EQ(run("wb text"), kCommandFailed);
  EXPECT_EQ(printed, "Information: There are not enough hardware registers available to satisfy this request\n");
  EXPECT_EQ(run("wb a(1:2)"), kCommandDone);  // a section: 8 bytes at its first element
}

TEST_F(BreakpointCommandTest, ValuesThatCannotBeWatched) {
  EXPECT_EQ(run("wb 3"), kCommandFailed);
  EXPECT_EQ(printed, "Information: This value cannot be breakpointed\n");
  EXPECT_EQ(run("ub nosuch"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Unknown variable\n");
  EXPECT_EQ(host.slots.free_hardware_slots(), 4);
  // An address made by loc() is watched where it points.
  EXPECT_EQ(run("wb loc(x)"), kCommandDone);
  EXPECT_EQ(host.slots[0].address, kX);
}

}  // namespace
}  // namespace vantor::testing
