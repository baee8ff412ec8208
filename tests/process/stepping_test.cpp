#include "process/stepping.h"

#include <gtest/gtest.h>

#include "support/fake_breakpoint_host.h"

namespace vantor {
namespace {

// A caller routine (lines 10-12) calling a routine with debug information (lines 20-21).
// Stack addresses: the caller runs at kCallerSp; the callee's return address sits at
// kCalleeReturnSlot, just below.
class SteppingTest : public ::testing::Test {
 protected:
  static constexpr Address kLine10 = 0x401010, kLine11 = 0x401020, kLine12 = 0x401030;
  static constexpr Address kLine20 = 0x402000, kLine21 = 0x402010;
  static constexpr Address kCallerSp = 0x7ff00100, kCalleeReturnSlot = 0x7ff000f8, kMainReturnSlot = 0x7ff00180;

  void SetUp() override {
    const std::pair<std::int32_t, Address> lines[] = {
        {10, kLine10}, {11, kLine11}, {12, kLine12}, {20, kLine20}, {21, kLine21}};
    for (auto [line, address] : lines) host.add_line("prog.f95", line, address);
    stopped_in_caller();
  }
  void stopped_in_caller() {
    host.depth = 2;
    host.return_slots = {kMainReturnSlot, 0};
    host.context().rsp = kCallerSp;
    host.context().dr6 = 0;
  }
  void stopped_in_callee() {
    host.depth = 3;
    host.return_slots = {kCalleeReturnSlot, kMainReturnSlot, 0};
    host.context().rsp = kCalleeReturnSlot;
    host.context().dr6 = 0;
  }
  // The main loop switches the traps for the mode before it runs.
  void run(std::int32_t mode) {
    if (mode == kModeStepInto || mode == kModeStepOver || mode == kModeStepOut)
      list.arm_line_traps();
    else
      list.disarm_line_traps();
    stepping.start_run(mode);
  }
  TrapVerdict trap_at(std::int32_t mode, Address address) {
    return stepping.at_trap(mode, kBreakpointException, address);
  }
  // A hardware hit on `slot`, reported as the single-step exception it is.
  TrapVerdict hit_on(std::int32_t mode, int slot, Address pc) {
    host.context().dr6 = 0xFFFF0FF0 | (1u << slot);
    return stepping.at_trap(mode, kSingleStepException, pc);
  }
  std::uint8_t byte_at(Address address) { return target.system.peek(address, 1)[0]; }
  void fill_data_slots(int count) {
    for (int i = 0; i < count; ++i) list.set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, 0x6000 + 8 * i, 8);
  }

  testing::FakeTarget target;
  testing::FakeBreakpointHost host{target};
  HardwareSlots slots;
  BreakpointList list{host, slots};
  Stepping stepping{host, list, slots};
};

TEST_F(SteppingTest, StartOfRunRemembersPlantsAndProgramsInOneStore) {
  list.set_breakpoint("prog.f95", 12, 1, 1, "");
  list.add_deferred_breakpoint("prog.f95", 21, 1, 1, "");
  fill_data_slots(1);
  host.context().eflags = 0x246 | os::kTrapFlag;
  run(kModeGo);
  EXPECT_EQ(stepping.remembered_depth(), 2);
  EXPECT_EQ(stepping.remembered_stack_pointer(), kCallerSp);
  EXPECT_EQ(host.refreshes, 1);
  EXPECT_TRUE(list.deferred().empty());
  EXPECT_EQ(byte_at(kLine12), 0xCC);
  EXPECT_EQ(byte_at(kLine21), 0xCC);
  EXPECT_EQ(host.stores, 1);
  EXPECT_EQ(host.stored_context().dr0, 0x6000u);
  EXPECT_EQ(host.stored_context().dr7 & 0x3, 0x1u);
  EXPECT_EQ(host.stored_context().eflags, 0x246u);  // trap flag cleared in the same store

  run(kModeOneInstruction);
  EXPECT_EQ(host.stores, 2);
  EXPECT_EQ(host.stored_context().eflags, 0x246u | os::kTrapFlag);
  run(kModeGo);  // the trap flag comes off again
  EXPECT_EQ(host.stores, 3);
  EXPECT_EQ(host.stored_context().eflags, 0x246u);
  run(kModeGo);  // registers already as they should be: no store at all
  EXPECT_EQ(host.stores, 3);
}

// Each breakpoint byte is written once per run: by the line-trap switch when the mode
// changed the traps, else by the start of the run.
TEST_F(SteppingTest, AStartOfRunPlantsOnlyWhatTheTrapSwitchDidNotPlant) {
  list.set_breakpoint("prog.f95", 12, 1, 1, "");
  auto writes = [this] { return target.system.counters.writes; };
  std::size_t before = writes();
  const std::size_t switching = host.line_starts.size() + 1;  // every line start, then the breakpoint
  run(kModeStepInto);  // the traps go on and plant the breakpoint; the run adds nothing
  EXPECT_EQ(byte_at(kLine12), 0xCC);
  EXPECT_EQ(writes() - before, switching);
  EXPECT_EQ(stepping.at_trap(kModeStepInto, kBreakpointException, kLine11).stop, true);
  EXPECT_EQ(byte_at(kLine12), 0x90);  // lifted at the stop
  before = writes();
  run(kModeStepInto);  // the traps are already on: the run plants
  EXPECT_EQ(byte_at(kLine12), 0xCC);
  EXPECT_EQ(writes() - before, 1u);
  stepping.at_trap(kModeStepInto, kBreakpointException, kLine11);
  before = writes();
  run(kModeGo);  // the traps come off and the breakpoint is planted again, once
  EXPECT_EQ(byte_at(kLine12), 0xCC);
  EXPECT_EQ(byte_at(kLine11), 0x90);
  EXPECT_EQ(writes() - before, switching);
}

TEST_F(SteppingTest, BeforeTheFirstStopNothingIsProgrammed) {
  host.depth = 0;
  fill_data_slots(1);
  run(kModeStepInto);
  EXPECT_EQ(host.stores, 0);
  EXPECT_EQ(slots.enabled_mask(), 0u);
}

TEST_F(SteppingTest, StepOverWatchesTheCalleeReturnAndStopsAtTheCallerNextLine) {
  run(kModeStepOver);
  // The callee's first line start: deeper, lower stack pointer.
  stopped_in_callee();
  TrapVerdict verdict = trap_at(kModeStepOver, kLine20);
  EXPECT_FALSE(verdict.stop);
  EXPECT_EQ(slots[0].kind, kSlotReturnWatch);
  EXPECT_EQ(slots[0].address, kCalleeReturnSlot);
  EXPECT_EQ(slots[0].size, 8u);
  EXPECT_FALSE(list.line_traps_armed());
  EXPECT_EQ(byte_at(kLine21), 0x90);  // the callee's lines run freely
  EXPECT_EQ(host.stored_context().dr0, kCalleeReturnSlot);
  EXPECT_EQ((host.stored_context().dr7 >> 16) & 0xF, 0xBu);
  EXPECT_EQ(host.stack_restores, 1);

  // The return reads the slot: back in the caller, traps armed again, no stop yet.
  stopped_in_caller();
  host.context().rsp = kCallerSp;
  verdict = hit_on(kModeStepOver, 0, 0x40102a);
  EXPECT_FALSE(verdict.stop);
  EXPECT_EQ(slots[0].kind, kSlotFree);
  EXPECT_TRUE(list.line_traps_armed());
  EXPECT_EQ(byte_at(kLine11), 0xCC);
  EXPECT_EQ(host.stored_context().dr7 & 0x3, 0u);
  EXPECT_EQ(host.stored_context().dr6 & 0xF, 0u);  // the hit bit does not linger
  EXPECT_EQ(host.stack_restores, 2);

  verdict = trap_at(kModeStepOver, kLine11);
  EXPECT_TRUE(verdict.stop);
}

TEST_F(SteppingTest, StepOverTakesTheFrameCalledFromTheSteppingRoutine) {
  run(kModeStepOver);
  // Two levels down (a callee of the callee has debug information too): watch the first.
  host.depth = 4;
  host.return_slots = {0x7ff00080, kCalleeReturnSlot, kMainReturnSlot, 0};
  host.context().rsp = 0x7ff00080;
  EXPECT_FALSE(trap_at(kModeStepOver, kLine20).stop);
  EXPECT_EQ(slots[0].address, kCalleeReturnSlot);
}

TEST_F(SteppingTest, StepOutWithoutAFreeSlotStopsAtTheNextLineStart) {
  fill_data_slots(4);
  stopped_in_callee();
  run(kModeStepOut);
  EXPECT_TRUE(list.line_traps_armed());
  EXPECT_TRUE(trap_at(kModeStepOut, kLine21).stop);
}

TEST_F(SteppingTest, EveryStopFreesOneShotSlotsAndRemovesTheRunToBreakpoint) {
  std::int64_t id = list.set_breakpoint("prog.f95", 12, 1, 1, "");
  stepping.set_run_to_breakpoint(static_cast<std::int32_t>(id));
  list.set_hardware_slot(kAccessWrite, kSlotExecution, 0x401234, 1);
  run(kModeGo);
  EXPECT_TRUE(trap_at(kModeGo, kLine12).stop);
  EXPECT_EQ(slots[0].kind, kSlotFree);
  EXPECT_EQ(list.count(), 0);
  EXPECT_EQ(stepping.run_to_breakpoint(), -1);
}

TEST_F(SteppingTest, OneInstructionStopsEvenOnABreakpointThatWouldNotStop) {
  list.set_breakpoint("prog.f95", 11, 5, 1, "");
  run(kModeOneInstruction);
  EXPECT_TRUE(stepping.at_trap(kModeOneInstruction, kSingleStepException, kLine11).stop);
  EXPECT_EQ(list.breakpoint(0)->hits, 0u);
}

}  // namespace
}  // namespace vantor
