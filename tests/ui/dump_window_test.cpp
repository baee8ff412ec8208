#include "ui/dump_window.h"
#include "ui/window_test.h"


namespace vantor::ui {
namespace {

class DumpWindowTest : public WindowTest {
 protected:
  DumpWindowTest() {
    std::vector<std::uint8_t> bytes(0x40);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i);
    target.system.poke(kBase, bytes);
  }

  static constexpr Address kBase = 0x401000;
};

TEST_F(DumpWindowTest, LinesShowTheAddressAndBytesReadInOneCall) {
  dump_window window(target.memory, kBase + 4, "loc(x)");
  window.set_location({2, 2, 70, 2});
  std::size_t reads = target.system.counters.reads;
  window.refresh();
  EXPECT_EQ(target.system.counters.reads, reads + 1);
  EXPECT_EQ(window.title(), "Memory Dump: loc(x)");
  EXPECT_EQ(window.caption(), "Dump View");
  EXPECT_EQ(window.rows(), (std::vector<std::string>{
                               "0000000000401004 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13",
                               "0000000000401014 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f 20 21 22 23",
                           }));

  window.handle_command(kCommandLineDown);
  EXPECT_EQ(window.address(), kBase + 20);
  window.handle_command(kCommandPageUp);  // two lines of sixteen back
  EXPECT_EQ(window.address(), kBase - 12);
  EXPECT_EQ(window.rows()[0].substr(16, 15), " ?? ?? ?? ?? ??") << "the page before is not mapped";
}

TEST_F(DumpWindowTest, ReadableLinesAfterAGapAreStillShown) {
  target.system.poke(kBase + 0x2000, std::vector<std::uint8_t>{0xAB, 0xCD});  // next page but one
  // The first line cannot be read, so the one-call read fails; each line is then tried
  // on its own, and the mapped page shows.
  dump_window across(target.memory, kBase + 0x1FF0, "q");
  across.set_location({2, 2, 70, 3});
  std::size_t reads = target.system.counters.reads;
  across.set_bytes_per_line(8);
  EXPECT_EQ(target.system.counters.reads, reads + 4);
  EXPECT_EQ(across.rows()[0], "0000000000402FF0 ?? ?? ?? ?? ?? ?? ?? ??");
  EXPECT_EQ(across.rows()[2], "0000000000403000 ab cd 00 00 00 00 00 00");
}

TEST_F(DumpWindowTest, BytesPerLineAreRememberedAndOddValuesRefused) {
  dump_window window(target.memory, kBase, "a");
  EXPECT_EQ(window.bytes_per_line(), 16);  // nothing saved yet
  EXPECT_TRUE(window.handle_popup_choice(kPopupDump4Bytes));
  EXPECT_EQ(window.rows()[0], "0000000000401000 00 01 02 03");
  EXPECT_EQ(get_setting_int(kMemDumpWindowBytesWide), 4);
  EXPECT_FALSE(window.set_bytes_per_line(3));
  EXPECT_EQ(window.bytes_per_line(), 4);
  window.handle_popup_choice(kPopupDump16Bytes);
  EXPECT_EQ(window.bytes_per_line(), 16);

  set_setting_int(kMemDumpWindowBytesWide, 12);  // a hand-edited file
  dump_window reopened(target.memory, kBase, "a");
  EXPECT_EQ(reopened.bytes_per_line(), 16);
}

TEST_F(DumpWindowTest, EditingAByteWritesTheProgramsMemory) {
  dump_window window(target.memory, kBase, "a");
  window.set_location({2, 2, 70, 4});
  window.refresh();
  EXPECT_EQ(window.byte_address_at(1, 16 + 3 * 2 + 1), kBase + 16 + 2);
  EXPECT_FALSE(window.byte_address_at(0, 10)) << "the address column holds no byte";
  EXPECT_FALSE(window.byte_address_at(0, 16 + 3 * 16)) << "past the last byte";
  EXPECT_FALSE(window.byte_address_at(9, 20)) << "below the last line";

  library.number_answers = {0x7F, 300, std::nullopt};
  EXPECT_TRUE(window.edit_byte(1, 16 + 3 * 2 + 1));
  EXPECT_EQ(target.system.peek(kBase + 18, 1)[0], 0x7F);
  EXPECT_EQ(window.rows()[1].substr(16, 9), " 10 11 7f");
  EXPECT_EQ(library.prompts.back().caption, "New byte value");
  EXPECT_EQ(library.prompts.back().question, "Type the new value for the byte");
  EXPECT_FALSE(window.edit_byte(0, 17)) << "300 is not a byte";
  EXPECT_FALSE(window.edit_byte(0, 17)) << "cancelled";
  EXPECT_EQ(target.system.peek(kBase, 1)[0], 0x00);
}

TEST_F(DumpWindowTest, DataBreakAsksHowManyBytesFromTheSelectedLine) {
  struct request {
    bool use;
    Address address;
    int bytes;
  };
  std::vector<request> requests;
  dump_window window(target.memory, kBase, "a", 0,
                     [&](bool use, Address address, int bytes) { requests.push_back({use, address, bytes}); });
  window.set_location({2, 2, 70, 4});
  window.refresh();
  window.select_row(2);
  library.number_answers = {8, std::nullopt};
  window.handle_popup_choice(kPopupDumpUseBreak);
  window.handle_popup_choice(kPopupDumpWriteBreak);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_TRUE(requests[0].use);
  EXPECT_EQ(requests[0].address, kBase + 32);
  EXPECT_EQ(requests[0].bytes, 8);
  EXPECT_EQ(library.prompts[0].caption, "Use databreak");
  EXPECT_EQ(library.prompts[1].caption, "Write databreak");
  EXPECT_EQ(library.prompts[1].question, "How many bytes to cover?");
}

}  // namespace
}  // namespace vantor::ui
