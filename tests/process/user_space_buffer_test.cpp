#include "process/user_space_buffer.h"

#include <gtest/gtest.h>


#include "common/messages.h"
#include "support/fake_target.h"

namespace vantor {
namespace {

// Memory whose byte at A is A & 0xFF, so every read can be checked against its address.
class UserSpaceBufferTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::vector<std::uint8_t> bytes(0x2000);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>((kBase + i) & 0xFF);
    target.system.poke(kBase, bytes);
  }
  static constexpr Address kBase = 0x10000;
  testing::FakeTarget target;
};

TEST_F(UserSpaceBufferTest, ValueStraddlingTheChunkEndSlidesTheWindow) {
  UserSpaceBuffer buffer(target.memory, kBase, 16);
  buffer.skip(13);  // cursor at kBase + 13, window re-read there
  EXPECT_EQ(buffer.base(), kBase + 13);
  for (int i = 0; i < 15; ++i) buffer.read_unsigned_byte();  // one byte left in this chunk
  std::size_t reads = target.system.counters.reads;
  std::int32_t value = buffer.read_32();
  EXPECT_EQ(buffer.base(), kBase + 28);
  EXPECT_EQ(static_cast<std::uint32_t>(value), 0x1F1E1D1Cu);
  EXPECT_EQ(target.system.counters.reads, reads + 1);
}

TEST_F(UserSpaceBufferTest, OversizedBlockGrowsTheBufferAndItStaysGrown) {
  UserSpaceBuffer buffer(target.memory, kBase, 128);
  std::vector<std::uint8_t> block(300);
  EXPECT_TRUE(buffer.read_block(block.data(), 300));
  EXPECT_EQ(buffer.this_chunk_size(), 300 + 64);
  EXPECT_EQ(block[299], static_cast<std::uint8_t>((kBase + 299) & 0xFF));
  buffer.skip(100);
  EXPECT_EQ(buffer.this_chunk_size(), 364);
}

TEST_F(UserSpaceBufferTest, KeepGrowsFromTheSameBase) {
  UserSpaceBuffer buffer(target.memory, kBase, 16);
  for (int i = 0; i < 10; ++i) buffer.read_unsigned_byte();
  buffer.ensure(40, true);
  EXPECT_EQ(buffer.base(), kBase);
  EXPECT_EQ(buffer.this_chunk_size(), 50);
  EXPECT_EQ(buffer.data()[3], 3);
  EXPECT_EQ(buffer.read_unsigned_byte(), 10u);
}

TEST_F(UserSpaceBufferTest, CutStringEndsWithZeroAndLeavesTheRest) {
  const char text[] = "ABCDEFGH";
  target.system.poke(0x30000, text, sizeof text);
  UserSpaceBuffer buffer(target.memory, 0x30000, 64);
  char out[5];
  EXPECT_FALSE(buffer.read_string(out, 5));
  EXPECT_STREQ(out, "ABCD");
  char rest[16];
  EXPECT_TRUE(buffer.read_string(rest, 16));
  EXPECT_STREQ(rest, "EFGH");

  // Exactly capacity - 1 characters: cut before its zero, which is still to come.
  UserSpaceBuffer exact(target.memory, 0x30004, 64);
  EXPECT_FALSE(exact.read_string(out, 5));
  EXPECT_STREQ(out, "EFGH");
  EXPECT_EQ(exact.read_unsigned_byte(), 0u);
}

TEST_F(UserSpaceBufferTest, NarrowStringStopsAtFFAndAtUnreadableMemory) {
  const std::uint8_t bytes[] = {'a', 'b', 0xFF, 'c', 0};
  target.system.poke(0x40000, bytes, sizeof bytes);
  char out[16];
  target.memory.read_narrow_string(out, 0x40000, 10);
  EXPECT_STREQ(out, "ab");
  const char tail[] = "xyz";
  target.system.poke(0x50000 - 3, tail, 3);  // the page after is unmapped
  target.memory.read_narrow_string(out, 0x50000 - 3, 10);
  EXPECT_STREQ(out, "xyz");
  EXPECT_EQ(target.memory.read_u32(0x50000 - 2), 0xFFFFFFFFu);
  EXPECT_EQ(target.memory.read_u64(0x50000 - 2), ~std::uint64_t{0});
}

TEST_F(UserSpaceBufferTest, SkipAlwaysReadsAgainEvenInsideTheHeldBytes) {
  UserSpaceBuffer buffer(target.memory, kBase, 64);
  std::size_t reads = target.system.counters.reads;
  buffer.skip(4);
  EXPECT_EQ(target.system.counters.reads, reads + 1);
  EXPECT_EQ(buffer.base(), kBase + 4);
  EXPECT_EQ(buffer.this_chunk_size(), 64);
  EXPECT_EQ(buffer.peek_64(), 0x0B0A090807060504u);  // peeking leaves the cursor
  EXPECT_EQ(buffer.read_64(), 0x0B0A090807060504u);
  EXPECT_EQ(buffer.cursor_address(), kBase + 12);
  buffer.skip(-10);  // backward
  EXPECT_EQ(buffer.cursor_address(), kBase + 2);
  EXPECT_EQ(buffer.read_unsigned_byte(), 2u);
}

TEST_F(UserSpaceBufferTest, ANegativeChunkSizeGivesAnEmptyWindowThatGrows) {
  UserSpaceBuffer buffer(target.memory, kBase, -16);
  EXPECT_EQ(buffer.this_chunk_size(), 0);
  EXPECT_EQ(buffer.read_unsigned_byte(), static_cast<std::uint32_t>(kBase & 0xFF));
  EXPECT_EQ(buffer.this_chunk_size(), 1);
}

TEST_F(UserSpaceBufferTest, ReadersTakeTheMachinesByteOrderAndSign) {
  const std::uint8_t bytes[] = {0xFE, 0x80, 0x01, 0x00, 0x00, 0x00};
  target.system.poke(0x60000, bytes, sizeof bytes);
  UserSpaceBuffer buffer(target.memory, 0x60000, 16);
  EXPECT_EQ(buffer.read_signed_byte(), -2);
  EXPECT_EQ(buffer.read_unsigned_byte(), 0x80u);
  EXPECT_EQ(buffer.read_32(), 1);
  EXPECT_TRUE(buffer.read_block(nullptr, 0));
  EXPECT_EQ(buffer.cursor_address(), 0x60006u);
}

// A short read is a broken invariant: reported, and the missing bytes read as zero.
TEST_F(UserSpaceBufferTest, ShortReadsAreAssertionsAndLeaveZeros) {
  ConsoleMode = true;
  const std::uint8_t ones[8] = {1, 1, 1, 1, 1, 1, 1, 1};
  target.system.poke(0x70000 - 8, ones, 8);  // the page at 0x70000 is not mapped
  ::testing::internal::CaptureStdout();
  UserSpaceBuffer buffer(target.memory, 0x70000 - 8, 32);
  std::string out = ::testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("Error: Assert failure: expr = nbytes == chunk_size\nfile = UserSpaceBuffer\nline = "),
            std::string::npos);
  EXPECT_EQ(buffer.data()[0], 0u);  // the read failed as a whole
  ::testing::internal::CaptureStdout();
  buffer.skip(40);
  out = ::testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("expr = nbytes == this_chunk_size\nfile = UserSpaceBuffer"), std::string::npos);
  ConsoleMode = false;
}

}  // namespace
}  // namespace vantor
