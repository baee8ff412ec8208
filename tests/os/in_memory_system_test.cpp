#include "os/inmemory/in_memory_system.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace vantor::os {
namespace {

constexpr Address kPage = InMemorySystem::kPageSize;
constexpr Handle kProcess = InMemorySystem::kProcessHandle;

// Transfers move whole pages at once; these pin that a transfer spanning pages sees each
// byte where it was put, and that the platform's all-or-nothing rule holds at every edge.
TEST(InMemorySystemTest, TransfersAcrossPagesKeepEveryByteInPlace) {
  InMemorySystem system;
  std::vector<std::uint8_t> bytes(3 * kPage + 10);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{7});
  const Address at = 5 * kPage - 3;
  system.poke(at, bytes);
  EXPECT_EQ(system.peek(at, bytes.size()), bytes);

  std::vector<std::uint8_t> read(bytes.size() - 2);
  ASSERT_EQ(system.read_memory(kProcess, at + 1, read.data(), read.size()), read.size());
  EXPECT_TRUE(std::equal(read.begin(), read.end(), bytes.begin() + 1));

  const std::uint8_t written[] = {1, 2, 3, 4, 5, 6};
  ASSERT_EQ(system.write_memory(kProcess, 6 * kPage - 3, written, sizeof written), sizeof written);
  EXPECT_EQ(system.peek(6 * kPage - 3, 6), std::vector<std::uint8_t>(written, written + 6));
}

TEST(InMemorySystemTest, ATransferTouchingAnUnmappedPageMovesNothing) {
  InMemorySystem system;
  system.map(0x10000, kPage);
  system.map(0x12000, kPage);  // a gap of one page between
  std::uint8_t buffer[16] = {};
  EXPECT_EQ(system.read_memory(kProcess, 0x11000 - 8, buffer, 16), 0u);
  EXPECT_EQ(system.read_memory(kProcess, 0x11000 - 16, buffer, 16), 16u);
  const std::uint8_t ones[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  EXPECT_EQ(system.write_memory(kProcess, 0x12000 - 8, ones, 16), 0u);
  EXPECT_EQ(system.peek(0x11000 - 8, 8), std::vector<std::uint8_t>(8, 0));
  EXPECT_EQ(system.peek(0x11FF8, 16), std::vector<std::uint8_t>(16, 0));  // a gap reads as zeros
  EXPECT_EQ(system.read_memory(kProcess, ~Address{0} - 3, buffer, 8), 0u);  // wraps into nothing
  EXPECT_EQ(system.counters.reads, 3u);
  EXPECT_EQ(system.counters.writes, 1u);
}

}  // namespace
}  // namespace vantor::os
