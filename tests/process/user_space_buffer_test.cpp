#include "process/user_space_buffer.h"

#include <gtest/gtest.h>

#include <cstring>

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

TEST_F(UserSpaceBufferTest, NegativeSkipMovesBackward) {
  UserSpaceBuffer buffer(target.memory, kBase + 0x100, 32);
  buffer.read_64();
  buffer.skip(-16);
  EXPECT_EQ(buffer.cursor_address(), kBase + 0x100 + 8 - 16);
  EXPECT_EQ(buffer.read_unsigned_byte(), static_cast<std::uint32_t>((kBase + 0xF8) & 0xFF));
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

}  // namespace
}  // namespace vantor
