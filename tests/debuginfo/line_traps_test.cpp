#include <gmock/gmock.h>

#include "debuginfo/module_test_support.h"

namespace vantor::testing {
namespace {

class LineTrapsTest : public ModuleTest {
 protected:
  void SetUp() override {
    image.routine("MAIN", 0x1000, 0x40).line(3, 2).line(4, 9).line(5, 0x20);
    image.routine("ONE_LINE", 0x1040, 0x10).line(10, 4);
    image.routine("NO_LINES", 0x1050, 0x10).no_debug_block();
    module = &load();
    original = target.system.peek(kBase + 0x1000, 0x60);
  }
  std::uint8_t byte_at(Address rva) { return target.system.peek(kBase + rva, 1)[0]; }
  // Under Wine: tests/integration/module_itest.cpp switches the traps of a real program.
  void expect_line_bytes(std::uint8_t expected) {
    for (Address rva : {0x1002, 0x1009, 0x1020, 0x1044}) EXPECT_EQ(byte_at(rva), expected) << std::hex << rva;
  }
  // Every byte that is not a line start is as it was.
  void expect_other_bytes_untouched() {
    std::vector<std::uint8_t> now = target.system.peek(kBase + 0x1000, 0x60);
    for (std::size_t i = 0; i < now.size(); ++i)
      if (i != 0x02 && i != 0x09 && i != 0x20 && i != 0x44) {
        EXPECT_EQ(now[i], original[i]) << std::hex << i;
      }
  }
  Module* module = nullptr;
  std::vector<std::uint8_t> original;
};

TEST_F(LineTrapsTest, OneReadAndOneWritePerRoutineAndASingleByteForOneLine) {
  auto before = target.system.counters;
  module->set_line_traps(true);
  // MAIN: one read and one write of offsets 2..0x20; ONE_LINE: one write, no read.
  EXPECT_EQ(target.system.counters.reads - before.reads, 1u);
  EXPECT_EQ(target.system.counters.writes - before.writes, 2u);
  expect_line_bytes(0xCC);
  expect_other_bytes_untouched();
  module->set_line_traps(false);
  EXPECT_EQ(target.system.peek(kBase + 0x1000, 0x60), original);
}

TEST_F(LineTrapsTest, SwitchingToTheCurrentStateDoesNothing) {
  auto before = target.system.counters;
  module->set_line_traps(false);
  EXPECT_EQ(target.system.counters.calls(), before.calls());
  module->set_line_traps(true);
  before = target.system.counters;
  module->set_line_traps(true);
  EXPECT_EQ(target.system.counters.calls(), before.calls());
  expect_line_bytes(0xCC);
}

TEST_F(LineTrapsTest, UnreadableCodeIsABrokenInvariantAndIsNotWrittenBack) {
  target.system.unmap(kBase + 0x1000, 0x1000);
  module->set_line_traps(true);
  // Lookup order: ONE_LINE's single byte, then MAIN's range.
  ASSERT_EQ(boxes().size(), 2u);
  EXPECT_NE(boxes()[0].find(L"expr = nbytes == 1\nfile = Module"), std::wstring::npos);
  EXPECT_NE(boxes()[1].find(L"expr = nbytes == size\nfile = Module"), std::wstring::npos);
  EXPECT_FALSE(target.system.is_mapped(kBase + 0x1000));
}

TEST(LineTrapsCorruptTableTest, OffsetsOutOfOrderOrOutsideTheRangeAreSkipped) {
  FakeTarget target;
  DebuggedProcess process;
  DebugImageBuilder image(0x10000000);
  image.routine("BACKWARDS", 0x1000, 0x40).line(1, 0x20).line(2, 4);
  image.routine("STRAY", 0x1040, 0x40).line(1, 0).line(2, 0x7FFFFFF0).line(3, 8);
  image.install(target.system, L"C:\\p.exe");
  Module module(process, 0, L"C:\\p.exe", image.base(), true);
  auto expected = target.system.peek(image.base() + 0x1000, 0x80);
  expected[0x40] = expected[0x48] = 0xCC;  // STRAY's offsets inside its first..last range
  module.set_line_traps(true);
  EXPECT_EQ(target.system.peek(image.base() + 0x1000, 0x80), expected);
  EXPECT_TRUE(target.system.message_boxes.empty());
}

}  // namespace
}  // namespace vantor::testing
