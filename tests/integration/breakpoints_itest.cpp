// Code breakpoints, stepping and data breakpoints against test-compiler programs, through
// the Win32 layer. Lines are found by the marker comments of the programs' sources.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/messages.h"
#include "debuggee.h"
#include "debuginfo/module.h"
#include "os/win32/win32_system.h"
#include "process/data_breakpoints.h"
#include "process/debugged_process.h"
#include "stack/call_stack.h"
#include "stack/stack_window_text.h"
#include "support/run_command.h"
#include "values/element.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

using testing::line_of;
using testing::program_command;

class BreakpointsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    os::set_system(&system);
    winlib::set_window_library(&windows);
    ConsoleMode = true;
  }
  void TearDown() override {
    if (process.launched() && process.state() != psEnded) process.end();
    winlib::set_window_library(nullptr);
  }

  // Launches the program and steps into its first line, as a session begins.
  void start(const std::wstring& name) {
    ASSERT_TRUE(process.launch(program_command(name))) << process.status_text();
    ASSERT_EQ(command(kModeStepInto), psStopped) << process.status_text();
  }
  std::int32_t command(std::int32_t mode) { return testing::run_command(process, mode); }
  // The line of the innermost frame that has one (0 when none has).
  std::int32_t stopped_line() {
    CallStack* stack = process.current_stack();
    if (!stack) return 0;
    for (std::int32_t i = 0; i < stack->depth(); ++i)
      if (std::int32_t line = stack->information(i).line; line > 0) return line;
    return 0;
  }
  std::string stopped_routine() {
    CallStack* stack = process.current_stack();
    return stack && stack->depth() > 0 ? stack->information(0).routine_name : "";
  }
  std::int64_t set_breakpoint(const std::string& file, const std::string& marker, std::int32_t after,
                              std::int32_t every) {
    return process.breakpoints().set_breakpoint(file, line_of(file, marker), after, every, "");
  }
  std::unique_ptr<element> variable(const std::string& name) {
    StackFrame* frame = process.current_stack() ? process.current_stack()->frame(0) : nullptr;
    return frame ? frame->find_variable(name) : nullptr;
  }
  // Takes every free hardware slot with a write watch on bytes nobody writes: the image's
  // own headers.
  void take_every_slot() {
    Address headers = process.modules().back()->load_base();
    while (process.hardware_slots().free_hardware_slots() > 0)
      process.breakpoints().set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, headers += 0x40, 8);
  }

  os::Win32System system;
  winlib::HeadlessLibrary windows;
  DebuggedProcess process;
};

// ---- code breakpoints ----------------------------------------------------------------

TEST_F(BreakpointsTest, AfterThreeEveryTwoStopsOnHitsThreeFiveSevenNine) {
  start(L"stepping");
  std::int64_t id = set_breakpoint("stepping.f95", "loop body", 3, 2);
  ASSERT_GE(id, 1);
  std::vector<std::uint32_t> stops;
  while (command(kModeGo) == psStopped) {
    EXPECT_EQ(stopped_line(), line_of("stepping.f95", "loop body"));
    stops.push_back(process.breakpoints().find(static_cast<std::uint32_t>(id))->hits);
  }
  EXPECT_EQ(process.state(), psEnded);
  EXPECT_EQ(stops, (std::vector<std::uint32_t>{3, 5, 7, 9}));
  EXPECT_EQ(process.breakpoints().find(static_cast<std::uint32_t>(id))->hits, 10u);
}

TEST_F(BreakpointsTest, AfterZeroCountsHitsAndNeverStops) {
  start(L"stepping");
  std::int64_t id = set_breakpoint("stepping.f95", "loop body", 0, 1);
  EXPECT_EQ(command(kModeGo), psEnded);
  EXPECT_EQ(process.breakpoints().find(static_cast<std::uint32_t>(id))->hits, 10u);
}

TEST_F(BreakpointsTest, ABreakpointSetWhileLineTrapsAreArmedStopsAfterGo) {
  start(L"stepping");
  ASSERT_TRUE(process.line_traps_armed());
  ASSERT_GE(set_breakpoint("stepping.f95", "after work", 1, 1), 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(stopped_line(), line_of("stepping.f95", "after work"));
  EXPECT_EQ(stack_status_line(process), "Status: breakpoint");
}

TEST_F(BreakpointsTest, AConditionStopsOnlyWhenTrue) {
  start(L"stepping");
  process.breakpoints().set_breakpoint("stepping.f95", line_of("stepping.f95", "loop body"), 1, 1, "i = 7");
  ASSERT_EQ(command(kModeGo), psStopped);
  auto i = variable("i");
  ASSERT_TRUE(i);
  EXPECT_EQ(value_int32(*i, process), 7);
}

TEST_F(BreakpointsTest, AFullPathAndALineWithoutCodeAreResolvedOrRefused) {
  start(L"stepping");
  EXPECT_EQ(process.breakpoints().set_breakpoint("stepping.f95", 1, 1, 1, ""), -1);  // a comment line
  std::string full = process.current_stack()->information(0).source_file_name;
  ASSERT_NE(full.find('\\'), std::string::npos) << full;
  EXPECT_GE(process.breakpoints().set_breakpoint(full, line_of("stepping.f95", "leaf body"), 1, 1, ""), 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(stopped_routine(), "LEAF");
}

// ---- stepping ------------------------------------------------------------------------

TEST_F(BreakpointsTest, StepOverACallStopsAtTheCallersNextLine) {
  start(L"stepping");
  set_breakpoint("stepping.f95", "call work", 1, 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  ASSERT_EQ(command(kModeStepOver), psStopped);
  EXPECT_EQ(stopped_line(), line_of("stepping.f95", "after work"));
  EXPECT_EQ(process.hardware_slots().free_hardware_slots(), 4);  // the return watch is gone
}

TEST_F(BreakpointsTest, StepIntoEntersTheCalledRoutine) {
  start(L"stepping");
  set_breakpoint("stepping.f95", "call work", 1, 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  ASSERT_EQ(command(kModeStepInto), psStopped);
  EXPECT_EQ(stopped_routine(), "WORK");
}

TEST_F(BreakpointsTest, StepOverWithEveryRegisterTakenBehavesAsStepInto) {
  start(L"stepping");
  set_breakpoint("stepping.f95", "call work", 1, 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  take_every_slot();
  ASSERT_EQ(command(kModeStepOver), psStopped);
  EXPECT_EQ(stopped_routine(), "WORK");
}

TEST_F(BreakpointsTest, StepOutReturnsToTheCallersNextLineStart) {
  start(L"stepping");
  set_breakpoint("stepping.f95", "leaf body", 1, 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  ASSERT_EQ(command(kModeStepOut), psStopped);
  EXPECT_EQ(stopped_routine(), "WORK");
  EXPECT_EQ(stopped_line(), line_of("stepping.f95", "work last statement"));
  ASSERT_EQ(command(kModeStepOut), psStopped);
  EXPECT_EQ(stopped_line(), line_of("stepping.f95", "after work"));
}

TEST_F(BreakpointsTest, StepOverAtTheLastLineOfARoutineStopsInItsCaller) {
  start(L"stepping");
  set_breakpoint("stepping.f95", "work end", 1, 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  ASSERT_EQ(command(kModeStepOver), psStopped);
  EXPECT_EQ(stopped_line(), line_of("stepping.f95", "after work"));
}

// The callee's own breakpoint stops the step inside it, and the return watch the step had
// placed does not outlive that stop.
TEST_F(BreakpointsTest, StepOverACallStopsAtABreakpointInTheCallee) {
  start(L"stepping");
  set_breakpoint("stepping.f95", "call work", 1, 1);
  set_breakpoint("stepping.f95", "leaf body", 1, 1);
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
  std::int64_t id = set_breakpoint("stepping.f95", "after work", 1, 1);
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
  Address after = process.context().rip;
  EXPECT_GT(after, before);
  EXPECT_LT(after, before + 16);
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
    EXPECT_EQ(process.stop_reason(), kStopWriteDataBreakpoint);
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
  set_breakpoint("data_watch.f95", "reads watched", 1, 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  process.breakpoints().clear_breakpoints();
  auto watched = variable("watched");
  ASSERT_TRUE(watched);
  ASSERT_TRUE(set_data_breakpoint_on_value(process.breakpoints(), *watched, kAccessUse));
  ASSERT_EQ(command(kModeGo), psStopped);  // the read is on this very line
  EXPECT_EQ(process.stop_reason(), kStopUseDataBreakpoint);
  EXPECT_EQ(stack_status_line(process), "Status: Use data breakpoint");
  EXPECT_EQ(stopped_line(), line_of("data_watch.f95", "reads watched"));
}

// A 12-byte array with one slot free is covered by one 8-byte watch: its third element goes
// unwatched. A 7-byte string gets one 4-byte watch on its first bytes.
TEST_F(BreakpointsTest, PartialCoversWatchOnlyTheirFirstBytes) {
  start(L"data_watch");
  set_breakpoint("data_watch.f95", "writes triple tail", 1, 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  process.breakpoints().clear_breakpoints();
  auto triple = variable("triple");
  auto seven = variable("seven");
  ASSERT_TRUE(triple && seven);
  ASSERT_EQ(triple->size, 12);
  ASSERT_EQ(seven->size, 7);

  Address headers = process.modules().back()->load_base();
  for (int i = 1; i <= 3; ++i)
    process.breakpoints().set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, headers + 0x40 * i, 8);
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

// ---- deferred requests ---------------------------------------------------------------

TEST_F(BreakpointsTest, ABreakpointResolvesInALibraryLoadedLater) {
  ASSERT_TRUE(process.launch(program_command(L"late_dll"))) << process.status_text();
  process.add_deferred_breakpoint({"late_dll_lib.f95", "", line_of("late_dll_lib.f95", "late work"), 1, 1});
  ASSERT_EQ(command(kModeStepInto), psStopped);
  EXPECT_EQ(process.deferred_breakpoints().size(), 1u);  // the library is not loaded yet
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_TRUE(process.deferred_breakpoints().empty());
  EXPECT_EQ(stopped_routine(), "LATE_WORK");
  EXPECT_EQ(stopped_line(), line_of("late_dll_lib.f95", "late work"));
}

// The library is loaded by the very call being stepped into: its routine has debug
// information, so the step stops at its first line.
TEST_F(BreakpointsTest, StepIntoEntersARoutineOfALibraryLoadedDuringTheStep) {
  start(L"late_dll");
  ASSERT_GE(set_breakpoint("late_dll.f95", "load the library", 1, 1), 1);
  ASSERT_EQ(command(kModeGo), psStopped);
  ASSERT_EQ(stopped_line(), line_of("late_dll.f95", "load the library"));
  ASSERT_EQ(command(kModeStepInto), psStopped);
  EXPECT_EQ(stopped_routine(), "LATE_WORK");
}

}  // namespace
}  // namespace vantor
