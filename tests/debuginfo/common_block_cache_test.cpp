#include "debuginfo/common_block_cache.h"

#include <gtest/gtest.h>

#include "support/fake_target.h"

namespace vantor {
namespace {

// Builds the run-time library's list of COMMON blocks in fake memory.
class RuntimeCommonList {
 public:
  explicit RuntimeCommonList(os::InMemorySystem& system) : system_(system) {}
  // Appends a node; returns the address of the list's first node.
  Address add(const std::string& name, Address storage, std::uint64_t size) {
    Address node = next_ + 0x100 * nodes_.size();
    Address name_address = node + 0x40;
    system_.poke(name_address, name.c_str(), name.size() + 1);
    system_.poke_value(node, std::uint64_t{0});
    system_.poke_value(node + 8, name_address);
    system_.poke_value(node + 16, storage);
    system_.poke_value(node + 24, size);
    if (!nodes_.empty()) system_.poke_value(nodes_.back(), node);
    nodes_.push_back(node);
    return nodes_.front();
  }
  Address head() const { return nodes_.empty() ? 0 : nodes_.front(); }

 private:
  os::InMemorySystem& system_;
  Address next_ = 0x500000;
  std::vector<Address> nodes_;
};

class CommonBlockCacheTest : public ::testing::Test {
 protected:
  testing::FakeTarget target;
  RuntimeCommonList list{target.system};
  CommonBlockCache cache;
};

TEST_F(CommonBlockCacheTest, OneWalkCachesEveryBlockAndLaterLookupsReadNothing) {
  list.add("/ALPHA/", 0x601000, 24);
  list.add("/BETA/", 0x602000, 8);
  list.add("/GAMMA/", 0x603000, 400);

  EXPECT_EQ(cache.address_by_name(target.memory, list.head(), "/BETA/"), 0x602000u);
  EXPECT_EQ(cache.walks(), 1u);
  ASSERT_EQ(cache.blocks().size(), 3u);  // the walk went on past the match
  EXPECT_EQ(cache.blocks()[2].size, 400u);

  // Under Wine, tests/integration/stack_itest.cpp sees a repeated lookup read nothing.
  std::size_t reads = target.system.counters.reads;
  EXPECT_EQ(cache.address_by_name(target.memory, list.head(), "/GAMMA/"), 0x603000u);
  EXPECT_EQ(target.system.counters.reads, reads);
  EXPECT_EQ(cache.walks(), 1u);
}

TEST_F(CommonBlockCacheTest, NamesCompareExactlyAndAMissingOneGivesZeroEachTime) {
  list.add("/ALPHA/", 0x601000, 24);
  EXPECT_EQ(cache.address_by_name(target.memory, list.head(), "/alpha/"), 0u);
  EXPECT_EQ(cache.address_by_name(target.memory, list.head(), "ALPHA"), 0u);
  EXPECT_EQ(cache.walks(), 2u);
  EXPECT_EQ(cache.blocks().size(), 1u);  // a name is cached once however often it is walked past
}

TEST_F(CommonBlockCacheTest, CorruptListsEndTheWalkQuietly) {
  // A node pointing at itself, and a node whose next is unreadable.
  target.system.poke_value(Address{0x700000}, Address{0x700000});
  target.system.poke_value(Address{0x700008}, Address{0x700100});
  target.system.poke(0x700100, "/LOOP/", 7);
  EXPECT_EQ(cache.address_by_name(target.memory, 0x700000, "/OTHER/"), 0u);
  EXPECT_EQ(cache.blocks().size(), 1u);

  list.add("/ALPHA/", 0x601000, 24);
  target.system.poke_value(list.head(), Address{0x12345000});
  cache.refresh(target.memory, list.head());
  EXPECT_EQ(cache.blocks().size(), 2u);
}

TEST(ReadTargetString, ReadsInChunksAndStopsAtAnUnreadablePage) {
  testing::FakeTarget target;
  std::string name(300, 'N');
  target.system.poke(0x800000, name.c_str(), name.size() + 1);
  std::size_t reads = target.system.counters.reads;
  EXPECT_EQ(read_target_string(target.memory, 0x800000, 255), std::string(255, 'N'));
  EXPECT_LE(target.system.counters.reads - reads, 1u);

  // A name that runs to the end of its page, with nothing mapped after it.
  target.system.poke(0x900000 - 3, "XYZ", 3);
  EXPECT_EQ(read_target_string(target.memory, 0x900000 - 3, 255), "XYZ");
}

}  // namespace
}  // namespace vantor
