#include <gmock/gmock.h>

#include "debuginfo/module_test_support.h"
#include "debuginfo/source_file.h"

namespace vantor::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RoutineMapTest : public ModuleTest {};

std::vector<std::string> names_in_lookup_order(const Module& module) {
  std::vector<std::string> names;
  for (const auto& routine : module.routines()) names.push_back(routine->name);
  return names;
}

TEST_F(RoutineMapTest, BuilderToReaderRoundTrip) {
  image.routine("MAIN", 0x1000, 0x40)
      .source("C:\\src\\prog.f95")
      .lead_word(0x2000)
      .frame_offset(-48)
      .second_value(0xABCD)
      .line(3, 0)
      .line(4, 7)
      .line(6, 0x12);
  image.routine("Helper_Routine", 0x1040, 0x10).source("C:\\src\\util.f95").line(20, 0);
  image.routine("asm_stub", 0x1050, 0x8).no_debug_block();
  Module& module = load();

  EXPECT_THAT(names_in_lookup_order(module), ElementsAre("asm_stub", "Helper_Routine", "MAIN"));
  const MapEntry& main = *module.routines()[2];
  EXPECT_EQ(main.lower_name, "main");
  EXPECT_EQ(main.flags, 1u);
  EXPECT_EQ(main.start, kBase + 0x1000);
  EXPECT_EQ(main.end, kBase + 0x103F);
  EXPECT_EQ(main.debug_block, image.block_address("MAIN"));
  EXPECT_EQ(main.lead_word, 0x2000u);
  EXPECT_EQ(main.frame_offset, -48);
  EXPECT_EQ(main.second_value, 0xABCDu);
  ASSERT_TRUE(main.has_lines());  // read back whole from real programs in tests/integration/module_itest.cpp
  EXPECT_EQ(main.lines->count(), 3);
  const MapEntry& stub = *module.routines()[0];
  EXPECT_EQ(stub.debug_block, 0u);
  EXPECT_EQ(stub.lines, nullptr);
}

TEST_F(RoutineMapTest, AbsoluteEntriesAreNotRelocated) {
  image.routine("MAIN", 0x1000, 0x20).absolute().line(1, 0);
  Module& module = load();
  const MapEntry& main = *module.routines()[0];
  EXPECT_EQ(main.flags, 0u);
  EXPECT_EQ(main.start, kBase + 0x1000);
  EXPECT_EQ(main.debug_block, image.block_address("MAIN"));
  EXPECT_TRUE(main.has_lines());
}

TEST_F(RoutineMapTest, TheEndIsInclusiveAndOfOverlappingRoutinesTheLaterInTheMapIsFound) {
  image.routine("A", 0x1000, 0x10);
  image.routine("OUTER", 0x1020, 0x100);
  image.routine("INNER", 0x1040, 0x20);
  image.routine("SAME", 0x1040, 0x20);  // stored after INNER, so it shadows it
  Module& module = load();
  EXPECT_EQ(module.routine_at(kBase + 0x100F)->name, "A");
  EXPECT_EQ(module.routine_at(kBase + 0x1010), nullptr);
  EXPECT_EQ(module.routine_at(kBase + 0x0FFF), nullptr);
  EXPECT_EQ(module.routine_at(kBase + 0x1050)->name, "SAME");
  EXPECT_EQ(module.routine_at(kBase + 0x1030)->name, "OUTER");
  EXPECT_EQ(module.routine_at(kBase + 0x111F)->name, "OUTER");
}

TEST_F(RoutineMapTest, ABlockWithoutItsMagicMeansNoDebugInformation) {
  image.routine("MAIN", 0x1000, 0x20).block_magic("RHUC").line(1, 0);
  Module& module = load();
  const MapEntry& main = *module.routines()[0];
  EXPECT_EQ(main.debug_block, 0u);
  EXPECT_EQ(main.lines, nullptr);
  EXPECT_EQ(module.routine_at(kBase + 0x1000), &main);
  EXPECT_TRUE(process.source_files().empty());
  EXPECT_FALSE(module.load_symbols(const_cast<MapEntry&>(main)));
}

TEST_F(RoutineMapTest, CorruptBlockSizesMeanNoDebugInformationRatherThanHugeReads) {
  image.routine("HUGE_STREAM", 0x1000, 0x20).stream_size_word(0x7FFFFFF0).line(1, 0);
  image.routine("NEGATIVE_STREAM", 0x1020, 0x20).stream_size_word(-100).line(1, 0);
  image.routine("HUGE_COUNT", 0x1040, 0x20).line_count_word(0x7FFFFFFF).line(1, 0);
  image.routine("NEGATIVE_COUNT", 0x1060, 0x20).line_count_word(-3).line(1, 0);
  image.routine("GOOD", 0x1080, 0x20).line(5, 0);
  Module& module = load();
  for (const auto& routine : module.routines()) {
    if (routine->name == "GOOD") {
      EXPECT_TRUE(routine->has_lines());
    } else if (routine->name == "NEGATIVE_COUNT") {
      EXPECT_FALSE(routine->has_lines());  // a negative count holds no records
    } else {
      EXPECT_EQ(routine->debug_block, 0u) << routine->name;
      EXPECT_EQ(routine->lines, nullptr) << routine->name;
    }
  }
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(RoutineMapTest, ABlockOutsideTheImageIsIgnored) {
  image.routine("MAIN", 0x1000, 0x20).line(1, 0);
  image.blocks_rva(image.size_of_image() + 0x100);
  Module& module = load();
  EXPECT_EQ(module.routines()[0]->debug_block, 0u);
}

// Tables read in 128-byte chunks run past the last readable byte when they end close to
// it; the readable part must still be read and the rest must not break anything.
TEST_F(RoutineMapTest, AMapAndBlocksEndingJustBeforeUnreadableMemoryAreReadWhole) {
  const std::uint32_t page_end = 0x3000;
  image.routine("FIRST", 0x1000, 0x20).source("a.f95").line(1, 0).line(2, 4);
  image.routine("LAST", 0x1020, 0x20).source("a.f95").line(3, 0);
  // Blocks first, the map last, its final byte the last byte of readable memory.
  image.blocks_rva(0x2000);
  image.map_rva(page_end - (8 + 6 + 40 + 5 + 40 + 1));
  Module& module = load();
  ASSERT_FALSE(target.system.is_mapped(kBase + page_end));
  ASSERT_THAT(names_in_lookup_order(module), ElementsAre("LAST", "FIRST"));
  EXPECT_TRUE(module.routines()[0]->has_lines());
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(RoutineMapTest, ABlockEndingJustBeforeUnreadableMemoryKeepsItsLines) {
  image.routine("MAIN", 0x1000, 0x20).source("a.f95").line(1, 0).line(2, 4);
  std::uint32_t block_size = static_cast<std::uint32_t>(image["MAIN"].debug_block().size());
  image.map_rva(0x2000);
  image.blocks_rva(0x4000 - block_size);
  Module& module = load();
  ASSERT_FALSE(target.system.is_mapped(kBase + 0x4000));
  ASSERT_EQ(module.routines().size(), 1u);
  ASSERT_TRUE(module.routines()[0]->has_lines());
  EXPECT_EQ(module.routines()[0]->lines->file_name, "a.f95");
  EXPECT_TRUE(module.load_symbols(*module.routines()[0]));
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(RoutineMapTest, ReadsTheMapInChunksAndEachBlockInTwoReads) {
  for (int i = 0; i < 40; ++i)
    image.routine("ROUTINE_" + std::to_string(i), 0x1000 + 0x40 * static_cast<std::uint32_t>(i), 0x40)
        .line(10 * i, 0)
        .line(10 * i + 1, 8);
  image.install(target.system, kPath);
  std::size_t before = target.system.counters.reads;
  Module module(process, 0, kPath, kBase, true);
  std::size_t map_bytes = 8 + 40 * (11 + 40) + 1;
  // The offset word, the map's chunks, and per block its first chunk and the skip to its
  // line table.
  EXPECT_LE(target.system.counters.reads - before, 1 + (map_bytes + 127) / 128 + 1 + 2 * 40);
  EXPECT_EQ(target.system.counters.writes, 0u);
  EXPECT_EQ(module.routines().size(), 40u);
}

// ---- lookups ------------------------------------------------------------------------------

class RoutineLookupTest : public ModuleTest {
 protected:
  void SetUp() override {
    image.routine("Main_Program", 0x1000, 0x40).source("C:\\src\\Prog.f95").line(3, 0).line(4, 7).line(6, 0x12);
    image.routine("SOLVE", 0x1040, 0x40).source("C:\\src\\Prog.f95").line(10, 0).line(12, 5);
    image.routine("solve_helper", 0x1080, 0x20).source("D:\\other\\prog.f95").line(4, 2);
    image.routine("NOLINES", 0x10A0, 0x10).no_debug_block();
    module = &load();
  }
  Module* module = nullptr;
};

TEST_F(RoutineLookupTest, RoutineStartByExactNameLinesByPathIgnoringCaseOrByBareName) {
  EXPECT_EQ(module->routine_start("SOLVE"), kBase + 0x1040);
  EXPECT_EQ(module->routine_start("solve"), 0u);
  EXPECT_EQ(module->routine_start("SOLV"), 0u);
  EXPECT_EQ(module->routine_start("NOLINES"), kBase + 0x10A0);
  EXPECT_EQ(module->line_address("c:\\SRC\\prog.F95", 4), kBase + 0x1000 + 7);
  EXPECT_EQ(module->line_address("C:\\src\\Prog.f95", 12), kBase + 0x1040 + 5);
  EXPECT_EQ(module->line_address("C:\\src\\Prog.f95", 5), 0u);
  EXPECT_EQ(module->line_address("Prog.f95", 4), 0u);
  // Both files are prog.f95 by their bare names; the routine stored later comes first.
  EXPECT_EQ(module->line_address_by_bare_name("PROG.F95", 4), kBase + 0x1080 + 2);
  EXPECT_EQ(module->line_address_by_bare_name("prog.f95", 3), kBase + 0x1000);
  EXPECT_EQ(module->line_address_by_bare_name("src\\prog.f95", 3), 0u);
  EXPECT_TRUE(module->has_source_file("C:\\SRC\\PROG.F95", true));
  EXPECT_FALSE(module->has_source_file("prog.f95", true));
  EXPECT_TRUE(module->has_source_file("prog.f95", false));
  EXPECT_FALSE(module->has_source_file("util.f95", false));
}

TEST_F(RoutineLookupTest, CollectsRoutinesByLowerCaseFragment) {
  std::vector<routine_match> found;
  module->collect_routines("solve", found);
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].name, "solve_helper");
  EXPECT_EQ(found[1].name, "SOLVE");
  EXPECT_EQ(found[1].start, kBase + 0x1040);
  EXPECT_TRUE(found[1].has_lines);
  EXPECT_EQ(found[1].first_line.line, 10);
  EXPECT_EQ(found[1].file_name, "C:\\src\\Prog.f95");
  EXPECT_EQ(found[1].module, module);

  found.clear();
  module->collect_routines("SOLVE", found);  // the fragment is compared as given
  EXPECT_TRUE(found.empty());
  module->collect_routines("nolines", found);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_FALSE(found[0].has_lines);
  EXPECT_EQ(found[0].file_name, "");
}

}  // namespace
}  // namespace vantor::testing
