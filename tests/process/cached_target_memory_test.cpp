#include "process/cached_target_memory.h"

#include <gtest/gtest.h>

#include "support/fake_target.h"

namespace vantor {
namespace {

// Memory whose byte at A is A & 0xFF over two readable pages, with nothing mapped after.
class CachedTargetMemoryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::vector<std::uint8_t> bytes(0x2000);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>((kBase + i) & 0xFF);
    target.system.poke(kBase, bytes);
  }
  static constexpr Address kBase = 0x40000;
  testing::FakeTarget target;
};

TEST_F(CachedTargetMemoryTest, ValuesOfOneBlockCostOneRead) {
  CachedTargetMemory cache(target.memory, 512);
  std::size_t before = target.system.counters.reads;
  for (Address a = kBase + 0x200; a < kBase + 0x400; a += 8)
    EXPECT_EQ(cache.read_u8(a), static_cast<std::uint32_t>(a & 0xFF));
  EXPECT_EQ(target.system.counters.reads - before, 1u);
  EXPECT_EQ(cache.fetches(), 1u);
}

TEST_F(CachedTargetMemoryTest, ReadStraddlingBlocksJoinsThem) {
  CachedTargetMemory cache(target.memory, 256);
  std::uint8_t bytes[16];
  ASSERT_EQ(cache.read(kBase + 0x1F8, bytes, 16), 16u);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(bytes[i], static_cast<std::uint8_t>((kBase + 0x1F8 + i) & 0xFF));
  EXPECT_EQ(cache.fetches(), 2u);
}

TEST_F(CachedTargetMemoryTest, ReadRunningIntoAnUnreadablePageIsShortAndRemembered) {
  CachedTargetMemory cache(target.memory);
  std::uint8_t bytes[16];
  // The decoder asks for 16 bytes at the last instruction of an image: only 4 exist.
  EXPECT_EQ(cache.read(kBase + 0x2000 - 4, bytes, 16), 4u);
  EXPECT_EQ(bytes[3], static_cast<std::uint8_t>((kBase + 0x1FFF) & 0xFF));
  EXPECT_EQ(cache.read_u64(kBase + 0x2000), ~std::uint64_t{0});
  std::size_t fetches = cache.fetches();
  EXPECT_EQ(cache.read_u64(kBase + 0x2008), ~std::uint64_t{0});
  EXPECT_EQ(cache.fetches(), fetches);
}

TEST_F(CachedTargetMemoryTest, WriteGoesThroughAndIsSeenByTheNextRead) {
  CachedTargetMemory cache(target.memory);
  EXPECT_EQ(cache.read_u8(kBase + 5), 5u);
  std::uint8_t value = 0xAB;
  EXPECT_EQ(cache.write(kBase + 5, &value, 1), 1u);
  EXPECT_EQ(cache.read_u8(kBase + 5), 0xABu);
  EXPECT_EQ(target.system.peek(kBase + 5, 1)[0], 0xAB);
}

}  // namespace
}  // namespace vantor
