#include "process/hardware_slots.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

TEST(HardwareSlotsTest, TakesTheLowestFreeSlotAndRefusesAFifth) {
  HardwareSlots slots;
  EXPECT_EQ(slots.free_hardware_slots(), 4);
  EXPECT_EQ(slots.take(kAccessUse, kSlotDataBreakpoint, 0x1000, 8), 0);
  EXPECT_EQ(slots.take(kAccessUse, kSlotReturnWatch, 0x2000, 8), 1);
  EXPECT_EQ(slots.take(kAccessWrite, kSlotExecution, 0x3000, 1), 2);
  slots.free(1);
  EXPECT_EQ(slots.take(kAccessWrite, kSlotDataBreakpoint, 0x4000, 4), 1);
  EXPECT_EQ(slots.take(kAccessWrite, kSlotDataBreakpoint, 0x5000, 2), 3);
  EXPECT_EQ(slots.free_hardware_slots(), 0);
  EXPECT_EQ(slots.take(kAccessWrite, kSlotDataBreakpoint, 0x6000, 2), -1);
  EXPECT_EQ(slots[3].address, 0x5000u);  // the refusal changed nothing

  slots.free_one_shot_slots();  // the execution slot goes, data breakpoints stay
  EXPECT_EQ(slots[2].kind, kSlotFree);
  EXPECT_EQ(slots[0].kind, kSlotDataBreakpoint);
  slots.free_data_breakpoint_slots();
  EXPECT_EQ(slots.free_hardware_slots(), 4);
}

// Each slot's four-bit field at bit 16 + 4i holds R/W in its low two bits and LEN in its
// high two; the local enable is bit 2i.
TEST(HardwareSlotsTest, EncodesEveryKindIntoDr7BitForBit) {
  HardwareSlots slots;
  slots.take(kAccessWrite, kSlotExecution, 0x401000, 1);     // slot 0: field 0000
  slots.take(kAccessUse, kSlotReturnWatch, 0x7fff0, 8);      // slot 1: field 1011
  slots.take(kAccessUse, kSlotDataBreakpoint, 0x500000, 4);  // slot 2: LEN 11, R/W 11
  slots.take(kAccessWrite, kSlotDataBreakpoint, 0x500008, 2);  // slot 3: LEN 01, R/W 01
  EXPECT_EQ(slots.dr7_from(0), 0x5FB00055u);

  HardwareSlots data;
  data.take(0, kSlotDataBreakpoint, 0x10, 1);  // any access but use watches writes only
  data.take(kAccessUse, kSlotDataBreakpoint, 0x18, 8);
  EXPECT_EQ(data.dr7_from(0), (0x1ull << 16) | (0xBull << 20) | 0x5);
}

TEST(HardwareSlotsTest, KeepsGlobalEnablesAndHighBitsAndClearsTheRest) {
  HardwareSlots slots;
  // Every local enable and every field set beforehand; global enables, bits 8-15 and the
  // upper half set too.
  EXPECT_EQ(slots.dr7_from(0xABCDEF01FFFFFFFFull), 0xABCDEF010000FFAAull);
}

TEST(HardwareSlotsTest, EncodeWritesAddressesClearsFreeSlotsAndNeverArmsKindThree) {
  HardwareSlots slots;
  slots.take(kAccessUse, kSlotUnarmedReturnWatch, 0x7fff0, 8);
  slots.take(kAccessWrite, kSlotDataBreakpoint, 0x2000, 8);
  os::ThreadContext context;
  context.dr0 = 0x1111;
  context.dr2 = 0x2222;
  context.dr6 = 0xFFFF0FF3;  // stale hit bits
  context.dr7 = 0x55;
  EXPECT_TRUE(slots.encode(context));
  EXPECT_EQ(context.dr0, 0u);
  EXPECT_EQ(context.dr1, 0x2000u);
  EXPECT_EQ(context.dr2, 0u);
  EXPECT_EQ(context.dr7, 0x00900004u);
  EXPECT_EQ(context.dr6, 0xFFFF0FF0u);
  EXPECT_EQ(slots.enabled_mask(), 0x2u);
  EXPECT_FALSE(slots.encode(context));  // nothing left to change
}

// An object on a 4-byte boundary covered by an 8-byte watch: the register gets the 8-byte
// boundary below it (a system that checks alignment refuses the whole DR7 otherwise), while
// the slot keeps the object's address, which hits are matched against.
TEST(HardwareSlotsTest, UnalignedWatchesAreWrittenFromTheBoundaryBelow) {
  HardwareSlots slots;
  slots.take(kAccessWrite, kSlotDataBreakpoint, 0x101fc5c, 8);
  slots.take(kAccessWrite, kSlotDataBreakpoint, 0x101fc66, 4);
  slots.take(kAccessUse, kSlotDataBreakpoint, 0x101fc67, 2);
  slots.take(kAccessWrite, kSlotExecution, 0x401003, 1);
  os::ThreadContext context;
  slots.encode(context);
  EXPECT_EQ(context.dr0, 0x101fc58u);
  EXPECT_EQ(context.dr1, 0x101fc64u);
  EXPECT_EQ(context.dr2, 0x101fc66u);
  EXPECT_EQ(context.dr3, 0x401003u);  // an instruction starts where it starts
  EXPECT_EQ(slots[0].address, 0x101fc5cu);

  HardwareSlots stack;
  stack.take(kAccessUse, kSlotReturnWatch, 0x7fff4, 8);
  stack.encode(context);
  EXPECT_EQ(context.dr0, 0x7fff0u);
}

TEST(HardwareSlotsTest, HitIsTheLowestStatusBitAmongSlotsEverArmed) {
  HardwareSlots slots;
  os::ThreadContext context;
  EXPECT_EQ(slots.slot_hit(0xF), -1);  // nothing armed yet
  slots.take(kAccessUse, kSlotDataBreakpoint, 0x10, 4);
  slots.take(kAccessUse, kSlotDataBreakpoint, 0x20, 4);
  slots.take(kAccessUse, kSlotDataBreakpoint, 0x30, 4);
  slots.encode(context);
  EXPECT_EQ(slots.slot_hit(0x4000 | 0x8 | 0x4 | 0x2), 1);
  EXPECT_EQ(slots.slot_hit(0x8), -1);  // slot 3 never armed
  EXPECT_EQ(slots.slot_hit(0x4000), -1);  // single step only
  slots.free(0);
  slots.encode(context);
  EXPECT_EQ(slots.slot_hit(0x1), 0);  // freed, but its enable bit stays in the mask
}

}  // namespace
}  // namespace vantor
