#include "process/data_breakpoints.h"

#include <gtest/gtest.h>

#include "common/messages.h"
#include "support/fake_breakpoint_host.h"
#include "values/element.h"

namespace vantor {
namespace {

class DataBreakpointsTest : public ::testing::Test {
 protected:
  void SetUp() override { ConsoleMode = false; }
  const element& variable(Address address, std::int64_t size) {
    values.push_back(make_element(kTypeInteger4));
    values.back()->address = address;
    values.back()->size = size;
    return *values.back();
  }
  // The last information box shown, or "" when none.
  std::string last_box() const {
    if (target.system.message_boxes.empty()) return "";
    const std::wstring& text = target.system.message_boxes.back().text;
    return std::string(text.begin(), text.end());
  }
  std::vector<std::pair<Address, std::uint32_t>> watches() const {
    std::vector<std::pair<Address, std::uint32_t>> out;
    for (int i = 0; i < HardwareSlots::kCount; ++i)
      if (slots[i].kind == kSlotDataBreakpoint) out.push_back({slots[i].address, slots[i].size});
    return out;
  }
  void fill_slots(int count) {
    for (int i = 0; i < count; ++i) slots.take(kAccessUse, kSlotReturnWatch, 0x9000 + 8 * i, 8);
  }

  testing::FakeTarget target;
  testing::FakeBreakpointHost host{target};
  HardwareSlots slots;
  BreakpointList list{host, slots};
  std::vector<std::unique_ptr<element>> values;
};

TEST(WatchPiecesTest, EightByteCoverWithItsRemainderRule) {
  using P = std::vector<std::pair<Address, std::uint32_t>>;
  auto pieces = [](std::int64_t size) {
    P out;
    for (const watch_piece& piece : watch_pieces(0x100, size)) out.push_back({piece.address, piece.size});
    return out;
  };
  EXPECT_EQ(pieces(1), (P{{0x100, 1}}));
  EXPECT_EQ(pieces(2), (P{{0x100, 2}}));
  for (std::int64_t size = 3; size <= 7; ++size) EXPECT_EQ(pieces(size), (P{{0x100, 4}})) << size;
  EXPECT_EQ(pieces(8), (P{{0x100, 8}}));
  EXPECT_EQ(pieces(12), (P{{0x100, 8}, {0x108, 4}}));
  EXPECT_EQ(pieces(19), (P{{0x100, 8}, {0x108, 8}, {0x110, 4}}));
  EXPECT_EQ(pieces(32), (P{{0x100, 8}, {0x108, 8}, {0x110, 8}, {0x118, 8}}));
}

// (Thirty-two bytes taking all four registers: the Wine test of data breakpoints.)
TEST_F(DataBreakpointsTest, SizeRules) {
  EXPECT_FALSE(set_data_breakpoint_on_value(list, variable(0x5000, 40), kAccessWrite));
  EXPECT_EQ(last_box(), "The maximum size of object that can be covered by a hardware breakpoint is 32-bytes");
  EXPECT_EQ(slots.free_hardware_slots(), 4);
  // 33 to 39 bytes pass the whole-eights test; the rest beyond four watches is dropped.
  EXPECT_TRUE(set_data_breakpoint_on_value(list, variable(0x5000, 39), kAccessWrite));
  EXPECT_EQ(target.system.message_boxes.back().title, L"Information");
  EXPECT_EQ(watches().size(), 4u);
  EXPECT_EQ(list.count(), 4);  // one record per watch
}

TEST_F(DataBreakpointsTest, NotEnoughRegisters) {
  fill_slots(3);
  EXPECT_FALSE(set_data_breakpoint_on_value(list, variable(0x6000, 16), kAccessWrite));
  EXPECT_EQ(last_box(), "There are not enough hardware registers available to satisfy this request");
  EXPECT_EQ(slots.free_hardware_slots(), 1);
  EXPECT_EQ(list.count(), 0);
}

TEST_F(DataBreakpointsTest, ConstantsAndEmptyValues) {
  auto constant = make_element(kTypeInteger4);
  set_integer_constant(*constant, 0x5000, kTypeInteger4);
  EXPECT_FALSE(set_data_breakpoint_on_value(list, *constant, kAccessWrite));
  EXPECT_EQ(last_box(), "This value cannot be breakpointed");
  EXPECT_FALSE(set_data_breakpoint_on_value(list, variable(0x5000, 0), kAccessWrite));
  EXPECT_EQ(target.system.message_boxes.size(), 2u);
  EXPECT_EQ(slots.free_hardware_slots(), 4);

  // An INTEGER*8 constant holds an address: that address is watched.
  auto address = make_element(kTypeInteger8);
  const Address held = 0x7ff00010;
  set_integer_constant(*address, static_cast<std::int64_t>(held), kTypeInteger8);
  EXPECT_TRUE(set_data_breakpoint_on_value(list, *address, kAccessWrite));
  EXPECT_EQ(watches(), (std::vector<std::pair<Address, std::uint32_t>>{{held, 8}}));
}

TEST_F(DataBreakpointsTest, RawAddressAndRunToInstruction) {
  bool refreshed = false;
  BreakpointsChanged = [&refreshed] { refreshed = true; };
  EXPECT_TRUE(set_data_breakpoint_on_address(list, 0x8000, 6, kAccessUse));
  EXPECT_TRUE(refreshed);
  BreakpointsChanged = nullptr;
  EXPECT_EQ(watches(), (std::vector<std::pair<Address, std::uint32_t>>{{0x8000, 4}}));
  EXPECT_TRUE(set_data_breakpoint_on_address(list, 0x8010, 64, kAccessUse));
  EXPECT_EQ(slots[1].size, 8u);

  EXPECT_TRUE(set_run_to_instruction(list, 0x401000));
  EXPECT_EQ(slots[2].kind, kSlotExecution);
  EXPECT_EQ(slots[2].size, 1u);
  EXPECT_EQ(list.count(), 2);  // no record for the execution slot
  fill_slots(1);

  EXPECT_FALSE(set_data_breakpoint_on_address(list, 0x8020, 4, kAccessUse));
  EXPECT_EQ(last_box(), "There are no hardware registers available to satisfy this request");
  EXPECT_FALSE(set_run_to_instruction(list, 0x401000));
  EXPECT_EQ(last_box(), "All hardware registers are being used");
}

}  // namespace
}  // namespace vantor
