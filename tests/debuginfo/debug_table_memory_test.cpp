#include "debuginfo/debug_table_memory.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/fake_target.h"

namespace vantor {
namespace {

class DebugTableMemoryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::vector<std::uint8_t> bytes(2 * 4096);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i % 251 + 1);
    target.system.poke(kBase, bytes);  // two pages, nothing after them
  }
  static constexpr Address kBase = 0x50000;
  testing::FakeTarget target;
  DebugTableMemory memory{target.memory};
};

TEST_F(DebugTableMemoryTest, OneCallForAReadableRangeAndZerosPastTheReadablePrefix) {
  std::uint8_t buffer[128];
  EXPECT_EQ(memory.read(kBase + 4000, buffer, sizeof buffer), sizeof buffer);  // across the page boundary
  EXPECT_EQ(target.system.counters.reads, 1u);
  EXPECT_EQ(buffer[127], static_cast<std::uint8_t>((4000 + 127) % 251 + 1));

  std::memset(buffer, 0xEE, sizeof buffer);
  EXPECT_EQ(memory.read(kBase + 2 * 4096 - 20, buffer, sizeof buffer), sizeof buffer);
  for (int i = 0; i < 128; ++i)
    EXPECT_EQ(buffer[i], i < 20 ? static_cast<std::uint8_t>((2 * 4096 - 20 + i) % 251 + 1) : 0) << i;

  std::memset(buffer, 0xEE, sizeof buffer);
  EXPECT_EQ(memory.read(kBase + 0x100000, buffer, 16), 16u);  // an unreadable start
  for (int i = 0; i < 16; ++i) EXPECT_EQ(buffer[i], 0) << i;
}

}  // namespace
}  // namespace vantor
