// Code breakpoints, stepping and data breakpoints against test-compiler programs, through
// the Win32 layer. Lines are found by the marker comments of the programs' sources.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "debuginfo/module.h"
#include "process/data_breakpoints.h"
#include "program_test.h"
#include "stack/stack_window_text.h"

namespace vantor {
namespace {

using testing::line_of;

class BreakpointsTest : public testing::ProgramTest {
 protected:
  std::int64_t set_breakpoint(const std::string& file, const std::string& marker, std::int32_t after = 1,
                              std::int32_t every = 1, const std::string& condition = "") {
    return process.breakpoints().set_breakpoint(file, line_of(file, marker), after, every, condition);
  }
  std::uint32_t hits(std::int64_t id) { return process.breakpoints().find(static_cast<std::uint32_t>(id))->hits; }
  // Takes `count` hardware slots with write watches on bytes nobody writes: the image's own
  // headers.
  void take_slots(int count) {
    Address headers = process.modules().back()->load_base();
    for (int i = 0; i < count; ++i)
      process.breakpoints().set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, headers += 0x40, 8);
  }
};

// ---- code breakpoints ----------------------------------------------------------------

// (After three, every two: the scripted session end to end, e2e.script_session.)
TEST_F(BreakpointsTest, AfterZeroCountsHitsAndNeverStops) {
  start(L"stepping");
  std::int64_t id = set_breakpoint("stepping.f95", "loop body", 0, 1);
  EXPECT_EQ(command(kModeGo), psEnded);
  EXPECT_EQ(hits(id), 10u);
}

// The session's first step leaves the line traps armed: the breakpoint must still stop.
TEST_F(BreakpointsTest, ABreakpointSetWhileLineTrapsAreArmedStopsAfterGo) {
  start(L"stepping");
  ASSERT_TRUE(process.line_traps_armed());
  ASSERT_GE(set_breakpoint("stepping.f95", "after work"), 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(stopped_line(), line_of("stepping.f95", "after work"));
  EXPECT_EQ(stack_status_line(process), "Status: breakpoint");
}

// "=" compares in a condition; the other nine hits run on.
TEST_F(BreakpointsTest, AConditionStopsOnlyWhenTrue) {
  start(L"stepping");
  ASSERT_GE(set_breakpoint("stepping.f95", "loop body", 1, 1, "i = 7"), 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  auto i = variable("i");
  ASSERT_TRUE(i);
  EXPECT_EQ(value_int32(*i, process), 7);
  EXPECT_EQ(command(kModeGo), psEnded);
}

TEST_F(BreakpointsTest, AFullPathAndALineWithoutCodeAreResolvedOrRefused) {
  start(L"stepping");
  EXPECT_EQ(process.breakpoints().set_breakpoint("stepping.f95", 1, 1, 1, ""), -1);  // a comment line
  std::string full = stack().information(0).source_file_name;
  ASSERT_NE(full.find('\\'), std::string::npos) << full;
  EXPECT_GE(process.breakpoints().set_breakpoint(full, line_of("stepping.f95", "leaf body"), 1, 1, ""), 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(stopped_routine(), "LEAF");
}

// ---- stepping ------------------------------------------------------------------------

// A step from a stop at a marked line of stepping.f95: where it ends, by routine or line.
struct Step {
  const char* name;
  const char* from;
  std::int32_t mode;
  int slots_taken;
  const char* routine;  // or nullptr
  const char* line;     // a marker, or nullptr
};

class StepTest : public BreakpointsTest, public ::testing::WithParamInterface<Step> {};

TEST_P(StepTest, StopsWhereTheStepEnds) {
  const Step& step = GetParam();
  start(L"stepping");
  set_breakpoint("stepping.f95", step.from);
  ASSERT_EQ(command(kModeGo), psStopped);
  take_slots(step.slots_taken);
  ASSERT_EQ(command(step.mode), psStopped);
  if (step.routine) {
    EXPECT_EQ(stopped_routine(), step.routine);
  }
  if (step.line) {
    EXPECT_EQ(stopped_line(), line_of("stepping.f95", step.line));
  }
  EXPECT_EQ(process.hardware_slots().free_hardware_slots(), 4 - step.slots_taken);  // no return watch left
}

INSTANTIATE_TEST_SUITE_P(
    Wine, StepTest,
    ::testing::Values(Step{"OverACall", "call work", kModeStepOver, 0, nullptr, "after work"},
                      Step{"IntoACall", "call work", kModeStepInto, 0, "WORK", nullptr},
                      // With every register taken there is no return watch: a step into.
                      Step{"OverWithEveryRegisterTaken", "call work", kModeStepOver, 4, "WORK", nullptr},
                      Step{"OutToTheCallersNextLineStart", "leaf body", kModeStepOut, 0, "WORK", "work last statement"},
                      Step{"OverTheLastLineOfARoutine", "work end", kModeStepOver, 0, nullptr, "after work"}),
    [](const ::testing::TestParamInfo<Step>& info) { return std::string(info.param.name); });

// The callee's own breakpoint stops the step inside it, and the return watch the step had
// placed does not outlive that stop.
TEST_F(BreakpointsTest, StepOverACallStopsAtABreakpointInTheCallee) {
  start(L"stepping");
  set_breakpoint("stepping.f95", "call work");
  set_breakpoint("stepping.f95", "leaf body");
  ASSERT_EQ(command(kModeGo), psStopped);
  ASSERT_EQ(command(kModeStepOver), psStopped);
  EXPECT_EQ(stopped_routine(), "LEAF");
  EXPECT_EQ(stopped_line(), line_of("stepping.f95", "leaf body"));
  EXPECT_EQ(process.hardware_slots().free_hardware_slots(), 4);
  ASSERT_EQ(command(kModeStepOver), psStopped);
  EXPECT_EQ(stopped_line(), line_of("stepping.f95", "leaf end"));
  ASSERT_EQ(command(kModeStepOver), psStopped);
  EXPECT_EQ(stopped_line(), line_of("stepping.f95", "work last statement"));
}

TEST_F(BreakpointsTest, RunToAnInstructionStopsThereOnce) {
  start(L"stepping");
  std::int64_t id = set_breakpoint("stepping.f95", "after work");
  ASSERT_GE(id, 1);
  const Address instruction = process.breakpoints().find(static_cast<std::uint32_t>(id))->address + 1;
  process.breakpoints().remove_breakpoint(static_cast<std::uint32_t>(id));
  ASSERT_TRUE(set_run_to_instruction(process.breakpoints(), instruction));
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(process.context().rip, instruction);
  EXPECT_EQ(stopped_line(), line_of("stepping.f95", "after work"));
  EXPECT_EQ(process.hardware_slots().free_hardware_slots(), 4);
  EXPECT_EQ(command(kModeGo), psEnded);
}

TEST_F(BreakpointsTest, OneInstructionMovesTheProgramByOneInstruction) {
  start(L"stepping");
  Address before = process.context().rip;
  ASSERT_EQ(command(kModeOneInstruction), psStopped);
  EXPECT_GT(process.context().rip, before);
  EXPECT_LT(process.context().rip, before + 16);
  EXPECT_EQ(command(kModeGo), psEnded);  // the trap flag is not left behind
}

// ---- data breakpoints ----------------------------------------------------------------
// A routine's locals have their home only once its prologue has run, after the stop at its
// statement line: these tests take them at a later line.

TEST_F(BreakpointsTest, AWriteBreakpointStopsOnWritesOnlyWhateverItsCounts) {
  start(L"data_watch");
  ASSERT_EQ(command(kModeStepInto), psStopped);
  ASSERT_EQ(stopped_line(), line_of("data_watch.f95", "start"));
  auto watched = variable("watched");
  ASSERT_TRUE(watched);
  ASSERT_TRUE(set_data_breakpoint_on_value(process.breakpoints(), *watched, kAccessWrite));
  // "watched = 0" on this line, then the loop's writes; its reads never stop.
  std::vector<std::int32_t> lines;
  for (int stop = 0; stop < 4 && command(kModeGo) == psStopped; ++stop) {
    EXPECT_EQ(stack_status_line(process), "Status: Write data breakpoint");
    lines.push_back(stopped_line());
  }
  std::int32_t write = line_of("data_watch.f95", "writes watched");
  EXPECT_EQ(lines, (std::vector<std::int32_t>{line_of("data_watch.f95", "start"), write, write, write}));
  EXPECT_EQ(process.breakpoints().breakpoint(0)->hits, 4u);  // after = 0, yet every hit stopped
  process.breakpoints().clear_breakpoints();
  EXPECT_EQ(command(kModeGo), psEnded);
}

TEST_F(BreakpointsTest, AUseBreakpointStopsOnARead) {
  start(L"data_watch");
  run_to("data_watch.f95", "reads watched");
  process.breakpoints().clear_breakpoints();
  auto watched = variable("watched");
  ASSERT_TRUE(watched);
  ASSERT_TRUE(set_data_breakpoint_on_value(process.breakpoints(), *watched, kAccessUse));
  ASSERT_EQ(command(kModeGo), psStopped);  // the read is on this very line
  EXPECT_EQ(stack_status_line(process), "Status: Use data breakpoint");
  EXPECT_EQ(stopped_line(), line_of("data_watch.f95", "reads watched"));
}

// A 12-byte array with one slot free is covered by one 8-byte watch: its third element goes
// unwatched. A 7-byte string gets one 4-byte watch on its first bytes.
TEST_F(BreakpointsTest, PartialCoversWatchOnlyTheirFirstBytes) {
  start(L"data_watch");
  run_to("data_watch.f95", "writes triple tail");
  process.breakpoints().clear_breakpoints();
  auto triple = variable("triple");
  auto seven = variable("seven");
  ASSERT_TRUE(triple && seven);
  ASSERT_EQ(triple->size, 12);
  ASSERT_EQ(seven->size, 7);

  take_slots(3);
  ASSERT_TRUE(set_data_breakpoint_on_value(process.breakpoints(), *triple, kAccessWrite));
  EXPECT_EQ(process.hardware_slots()[3].address, triple->address);
  EXPECT_EQ(process.hardware_slots()[3].size, 8u);
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(stopped_line(), line_of("data_watch.f95", "writes triple head"));

  // The string's bytes are copied by the C library, whose frames the walk may not see
  // through: the bytes themselves show which write stopped. Its tail went by unwatched,
  // and the stop came as its first byte was written.
  process.breakpoints().clear_breakpoints();
  ASSERT_TRUE(set_data_breakpoint_on_value(process.breakpoints(), *seven, kAccessWrite));
  EXPECT_EQ(process.hardware_slots()[0].size, 4u);
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(process.stop_reason(), kStopWriteDataBreakpoint);
  char text[7] = {};
  ASSERT_EQ(process.read(seven->address, text, 7), 7u);
  EXPECT_EQ(std::string(text + 5, 2), "fg");
  EXPECT_EQ(text[0], 'a');
}

TEST_F(BreakpointsTest, ThirtyTwoBytesTakeAllFourSlotsAndFortyAreRefused) {
  start(L"data_watch");
  ASSERT_EQ(command(kModeStepInto), psStopped);
  auto wide = variable("wide");
  auto wider = variable("wider");
  ASSERT_TRUE(wide && wider);
  ASSERT_EQ(wider->size, 40);
  EXPECT_FALSE(set_data_breakpoint_on_value(process.breakpoints(), *wider, kAccessWrite));
  EXPECT_EQ(process.hardware_slots().free_hardware_slots(), 4);
  ASSERT_TRUE(set_data_breakpoint_on_value(process.breakpoints(), *wide, kAccessWrite));
  EXPECT_EQ(process.hardware_slots().free_hardware_slots(), 0);
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(stopped_line(), line_of("data_watch.f95", "writes wide"));
  EXPECT_EQ(process.hardware_slots().slot_hit(process.context().dr6), 3);  // wide(4) is the last eight
}

// ---- libraries loaded later ----------------------------------------------------------

// lines.exe loads lines_moved.dll while it runs, through C code without lines.
TEST_F(BreakpointsTest, ABreakpointResolvesInALibraryLoadedLater) {
  ASSERT_TRUE(process.launch(testing::program_command(L"lines"))) << process.status_text();
  process.add_deferred_breakpoint({"lines_moved.f95", "", line_of("lines_moved.f95", "moved work"), 1, 1});
  ASSERT_EQ(command(kModeStepInto), psStopped);
  EXPECT_EQ(process.deferred_breakpoints().size(), 1u);  // the library is not loaded yet
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_TRUE(process.deferred_breakpoints().empty());
  EXPECT_EQ(stopped_routine(), "MOVED_WORK");
  EXPECT_EQ(stopped_line(), line_of("lines_moved.f95", "moved work"));
}

// The library is loaded by the very call being stepped into: its routine has debug
// information, so the step stops at its first line.
TEST_F(BreakpointsTest, StepIntoEntersARoutineOfALibraryLoadedDuringTheStep) {
  start(L"lines");
  run_to("lines.f95", "load the library");
  ASSERT_EQ(command(kModeStepInto), psStopped);
  EXPECT_EQ(stopped_routine(), "MOVED_WORK");
}

}  // namespace
}  // namespace vantor
