#include "process/breakpoint_list.h"

#include <gtest/gtest.h>

#include "support/fake_breakpoint_host.h"

namespace vantor {
namespace {

class BreakpointListTest : public ::testing::Test {
 protected:
  void SetUp() override {
    host.add_line("loop.f95", 10, kLine10);
    host.add_line("loop.f95", 11, kLine11);
  }
  std::uint8_t byte_at(Address address) { return target.system.peek(address, 1)[0]; }

  static constexpr Address kLine10 = 0x401010;
  static constexpr Address kLine11 = 0x401020;
  testing::FakeTarget target;
  testing::FakeBreakpointHost host{target};
  HardwareSlots slots;
  BreakpointList list{host, slots};
};

TEST_F(BreakpointListTest, IdsAreSharedWithDataBreakpointsWhoseRecordsComeFirst) {
  EXPECT_EQ(list.set_breakpoint("loop.f95", 10, 1, 1, ""), 1);
  EXPECT_EQ(list.set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, 0x5000, 4), 0);
  EXPECT_EQ(list.set_breakpoint("loop.f95", 11, 1, 1, "  i == 4 \t"), 3);
  ASSERT_EQ(list.count(), 3);
  EXPECT_EQ(list.breakpoint(0)->id, 2u);
  EXPECT_TRUE(list.breakpoint(0)->is_data());
  EXPECT_EQ(list.breakpoint(0)->line, 0);  // the slot
  EXPECT_EQ(list.breakpoint(1)->id, 1u);
  EXPECT_EQ(list.breakpoint(2)->condition, "i == 4");
  EXPECT_EQ(list.breakpoint(3), nullptr);
  // A return watch or execution slot makes no record; a line without code, no breakpoint.
  EXPECT_EQ(list.set_hardware_slot(kAccessUse, kSlotReturnWatch, 0x7ff0, 8), 1);
  EXPECT_EQ(list.set_breakpoint("loop.f95", 12, 1, 1, ""), -1);
  EXPECT_EQ(list.set_breakpoint("other.f95", 10, 1, 1, ""), -1);
  EXPECT_EQ(list.count(), 3);
}

// (The hit rule of after and every: e2e.script_session and the Wine breakpoint tests.)
TEST_F(BreakpointListTest, ConditionDecidesOnlyAStopAndFailureStops) {
  host.condition_values["i = 3"] = false;
  host.condition_values["i = 4"] = true;
  list.set_breakpoint("loop.f95", 10, 2, 1, "i = 3");
  EXPECT_EQ(list.check_breakpoint(kLine10), kBreakpointRunOn);
  EXPECT_TRUE(host.conditions_evaluated.empty());  // hit 1 is no stop: nothing evaluated
  EXPECT_EQ(list.check_breakpoint(kLine10), kBreakpointRunOn);
  EXPECT_EQ(host.conditions_evaluated, std::vector<std::string>{"i = 3"});

  BreakpointList other{host, slots};
  other.set_breakpoint("loop.f95", 10, 1, 1, "i = 4");
  other.set_breakpoint("loop.f95", 11, 1, 1, "no such thing");
  EXPECT_EQ(other.check_breakpoint(kLine10), kBreakpointStop);
  EXPECT_EQ(other.check_breakpoint(kLine11), kBreakpointStop);
}

TEST_F(BreakpointListTest, PlantingAndTheLineTrapSwitchWriteOnlyWhatChanges) {
  list.set_breakpoint("loop.f95", 10, 1, 1, "");
  list.set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, kLine11, 1);  // no code byte for it
  list.plant_breakpoints();
  EXPECT_EQ(byte_at(kLine10), 0xCC);
  EXPECT_EQ(byte_at(kLine11), 0x90);
  list.arm_line_traps();
  EXPECT_EQ(byte_at(kLine11), 0xCC);
  list.disarm_line_traps();
  EXPECT_EQ(byte_at(kLine10), 0xCC);  // re-planted after the traps went
  EXPECT_EQ(byte_at(kLine11), 0x90);
  std::size_t writes = target.system.counters.writes;
  list.disarm_line_traps();  // not armed: nothing at all
  EXPECT_EQ(target.system.counters.writes, writes);
  list.lift_breakpoints();
  EXPECT_FALSE(list.planted());
  EXPECT_EQ(byte_at(kLine10), 0x90);
}

TEST_F(BreakpointListTest, BreakpointMadeOverOurOwnTrapsSavesTheNoOperation) {
  list.arm_line_traps();
  list.set_breakpoint("loop.f95", 10, 1, 1, "");
  EXPECT_EQ(list.breakpoint(0)->saved_byte, 0x90);
  list.disarm_line_traps();
  list.set_breakpoint("loop.f95", 10, 5, 1, "");  // a second one on the planted line
  EXPECT_EQ(list.breakpoint(1)->saved_byte, 0x90);
  list.lift_breakpoints();
  EXPECT_EQ(byte_at(kLine10), 0x90);
}

TEST_F(BreakpointListTest, RemoveAndClear) {
  list.set_breakpoint("loop.f95", 10, 1, 1, "");
  list.set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, 0x5000, 8);
  list.set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, 0x5008, 8);
  list.remove_breakpoint(2);
  EXPECT_EQ(slots[0].kind, kSlotFree);
  list.remove_breakpoint(77);  // unknown: nothing
  EXPECT_EQ(list.count(), 2);

  // Removed while planted (a paused program): its trap must not stay in the code.
  list.plant_breakpoints();
  list.remove_breakpoint(1);
  EXPECT_EQ(byte_at(kLine10), 0x90);

  list.set_breakpoint("loop.f95", 11, 1, 1, "");
  list.plant_breakpoints();
  slots.take(kAccessUse, kSlotReturnWatch, 0x7ff0, 8);
  list.clear_breakpoints();
  EXPECT_EQ(list.count(), 0);
  EXPECT_EQ(byte_at(kLine11), 0x90);
  EXPECT_EQ(slots[1].kind, kSlotFree);         // the data breakpoint's slot
  EXPECT_EQ(slots[0].kind, kSlotReturnWatch);  // a step's watch is not a breakpoint
  EXPECT_EQ(list.next_id(), 5u);               // ids are never reused
}

TEST_F(BreakpointListTest, DeferredRequestsResolveWhenTheirModuleLoads) {
  list.add_deferred_breakpoint("dll.f95", 5, 1, 1, "");
  list.add_deferred_breakpoint("loop.f95", 11, 1, 1, "");
  list.add_deferred_breakpoint("dll.f95", 6, 2, 1, "k > 1");
  list.retry_deferred_breakpoints();
  ASSERT_EQ(list.deferred().size(), 2u);

  host.add_line("dll.f95", 5, 0x7000010);
  host.add_line("dll.f95", 6, 0x7000020);
  list.plant_breakpoints();  // the program is running when the library loads
  list.retry_deferred_breakpoints();
  EXPECT_TRUE(list.deferred().empty());
  // Walked from the last request to the first.
  ASSERT_EQ(list.count(), 3);
  EXPECT_EQ(list.breakpoint(1)->condition, "k > 1");
  EXPECT_EQ(list.breakpoint(2)->line, 5);
  EXPECT_EQ(byte_at(0x7000010), 0xCC);  // planted at once
}

}  // namespace
}  // namespace vantor
