// Breakpoints from commands: the argument forms of "breakpoint" and "getto" with their
// messages, and data breakpoints on values.
#include "commands/command_fixture.h"
#include "process/data_breakpoints.h"

namespace vantor::testing {
namespace {

using BreakpointCommandTest = CommandTest;

TEST_F(BreakpointCommandTest, ArgumentFormsNameTheFileLineAfterAndEvery) {
  struct Case {
    const char* line;
    std::string file;
    int line_number, after, every;
  };
  const Case cases[] = {
      {"breakpoint . 12", kSource, 12, 1, 1},  // a line alone or after a dot: the name space's file
      {"breakpoint 20", kSource, 20, 1, 1},
      {"breakpoint prog.f95 12 3 2", "prog.f95", 12, 3, 2},
      {"breakpoint prog.f95 20 5", "prog.f95", 20, 5, 1},
  };
  for (const Case& c : cases) {
    host.list.clear_breakpoints();
    expect_run(c.line, kCommandDone, "");
    ASSERT_EQ(host.list.count(), 1);
    const breakpoint_info& set = *host.list.breakpoint(0);
    EXPECT_EQ(set.file, c.file);
    EXPECT_EQ(set.line, c.line_number);
    EXPECT_EQ(set.address, c.line_number == 12 ? 0x401010u : 0x401040u);
    EXPECT_EQ(set.after, c.after);
    EXPECT_EQ(set.every, c.every);
    EXPECT_TRUE(set.condition.empty());
  }
  EXPECT_EQ(PendingCommand, 0u);
}

TEST_F(BreakpointCommandTest, WhereTheLineCannotBeFoundOrHasNoNameSpace) {
  expect_run("breakpoint 13", kCommandFailed, "Could not set breakpoint at line 13 in C:\\src\\prog.f95\n");
  expect_run("breakpoint other.f95 12", kCommandFailed, "Could not set breakpoint at line 12 in other.f95\n");
  const auto in_frame = [](StackFrame* frame, const char* line) {
    return captured([&] { EXPECT_EQ(execute_command(line, frame, 5, 5), kCommandFailed); });
  };
  EXPECT_EQ(in_frame(nullptr, "breakpoint 12"), "Unable to get namespace\n");
  FakeFrame& library_frame = host.add_frame("_write_unit");  // no line table
  EXPECT_EQ(in_frame(&library_frame, "breakpoint 12"), "No debug information for _write_unit\n");
  // A dot there is taken as a file name.
  EXPECT_EQ(in_frame(&library_frame, "breakpoint . 12"), "Could not set breakpoint at line 12 in .\n");

  host.process = false;
  EXPECT_EQ(run("breakpoint 12"), kCommandFailed);
  EXPECT_EQ(host.list.count(), 0);
}

// A getto that sets its breakpoint and goes runs end to end (tests/e2e/cases/script_session.case).
TEST_F(BreakpointCommandTest, GettoToALineWithoutCodeNeitherSetsNorGoes) {
  expect_run("getto 14", kCommandFailed, "Could not set breakpoint at line 14 in C:\\src\\prog.f95\n");
  EXPECT_EQ(host.run_to_breakpoint, -1);
  EXPECT_EQ(PendingCommand, 0u);
}

TEST_F(BreakpointCommandTest, BreakpointsWindowFollowsTheCommands) {
  EXPECT_EQ(run("bps"), kCommandDone);
  auto* window = ui::OpenWindows.find_first(ui::kBreakpointsKind);
  ASSERT_NE(window, nullptr);
  run("breakpoint prog.f95 12 2");
  ASSERT_EQ(window->row_count(), 2);
  EXPECT_EQ(window->rows()[1], "prog.f95                                12       2       1       0  ");
  run("wb n");  // data breakpoints show as soon as they are set
  EXPECT_EQ(window->row_count(), 3);
  EXPECT_EQ(run("breakpoints"), kCommandDone);
  EXPECT_EQ(ui::OpenWindows.size(), 1);  // brought forward, not opened again
}

TEST_F(BreakpointCommandTest, DataBreakpointsCoverTheValueWithHardwareWatches) {
  EXPECT_EQ(run("wb"), kCommandDone);
  EXPECT_EQ(host.slots.free_hardware_slots(), 4);
  expect_run("write_break n", kCommandDone, "Information: Data breakpoint set\n");
  EXPECT_EQ(host.slots[0].address, kN);
  EXPECT_EQ(host.slots[0].size, 4u);
  EXPECT_EQ(host.slots[0].kind, kSlotDataBreakpoint);
  EXPECT_NE(host.slots[0].access, kAccessUse);
  EXPECT_EQ(run("ub loc(x)"), kCommandDone);  // an address made by loc() is watched where it points
  EXPECT_EQ(host.slots[1].address, kX);
  EXPECT_EQ(host.slots[1].access, kAccessUse);
  EXPECT_EQ(host.slots[1].size, 8u);

  expect_run("wb 3", kCommandFailed, "Information: This value cannot be breakpointed\n");
  expect_run("ub nosuch", kCommandFailed, "Error: Unknown variable\n");
  EXPECT_EQ(host.slots.free_hardware_slots(), 2);
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
  expect_run("wb text", kCommandFailed,
             "Information: There are not enough hardware registers available to satisfy this request\n");
  EXPECT_EQ(run("wb a(1:2)"), kCommandDone);  // a section: 8 bytes at its first element
}

}  // namespace
}  // namespace vantor::testing
