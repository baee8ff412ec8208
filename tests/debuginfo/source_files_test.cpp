#include "debuginfo/source_files.h"

#include <gmock/gmock.h>

#include "debuginfo/module_test_support.h"
#include "debuginfo/source_locator.h"

namespace vantor::testing {
namespace {

LineTable table_of(std::vector<LineRecord> records) {
  LineTable table;
  table.records = std::move(records);
  return table;
}

TEST(LineOfOffsetTest, TrapStopsInsideCodeAndOutsideTheRecords) {
  // {offset, line}: a thread stopped by a line trap is one byte past its line; an offset
  // inside a line's code belongs to that line (the line-12 byte itself when not stopped by
  // its trap); before the first record is the first line, after the last the last.
  LineTable table = table_of({{10, 0}, {11, 5}, {12, 9}});
  for (const auto& c : std::vector<std::pair<int, int>>{{1, 10}, {2, 10}, {6, 11}, {7, 11}, {9, 11}, {10, 12}})
    EXPECT_EQ(line_of_offset(&table, c.first), c.second) << c.first;
  LineTable late = table_of({{20, 8}, {21, 12}});
  for (const auto& c : std::vector<std::pair<int, int>>{{0, 20}, {5, 20}, {14, 21}, {0x10000, 21}})
    EXPECT_EQ(line_of_offset(&late, c.first), c.second) << c.first;
  LineTable empty;
  EXPECT_EQ(line_of_offset(nullptr, 3), 0);
  EXPECT_EQ(line_of_offset(&empty, 3), 0);
  MapEntry routine;
  routine.start = 0x1000;
  EXPECT_EQ(line_of_address(routine, 0x1001), 0);
  routine.lines = std::make_unique<LineTable>(table_of({{5, 0}, {6, 4}}));
  EXPECT_EQ(line_of_address(routine, 0x1005), 6);
}

class SourceFilesTest : public ModuleTest {
 protected:
  void SetUp() override {
    image.routine("MAIN", 0x1000, 0x40).source("C:\\src\\prog.f95").line(3, 0).line(4, 6);
    image.routine("SHARED_A", 0x1040, 0x20).source("C:\\src\\shared.f95").line(30, 0);
    main_module = &load();
    library.routine("SHARED_B", 0x1000, 0x20).source("c:\\SRC\\shared.f95").line(40, 2);
    library.routine("LIB_ONLY", 0x1020, 0x20).source("C:\\lib\\lib.f95").line(7, 1);
    dll = &load(library, L"C:\\bin\\lib.dll");
  }
  static constexpr Address kLibraryBase = 0x7FF800000000;
  DebugImageBuilder library{kLibraryBase};
  Module* main_module = nullptr;
  Module* dll = nullptr;
};

TEST_F(SourceFilesTest, EachImageGathersItsRoutinesUnderItsOwnRecordOfAFile) {
  auto& files = process.source_files();
  ASSERT_EQ(files.size(), 4u);
  EXPECT_EQ(files[1]->recorded_name, L"C:\\src\\shared.f95");
  EXPECT_EQ(files[1]->module, main_module);
  EXPECT_EQ(files[2]->recorded_name, L"c:\\SRC\\shared.f95");
  EXPECT_EQ(files[2]->module, dll);
  ASSERT_EQ(files[2]->routines.size(), 1u);
  EXPECT_EQ(files[2]->routines[0]->name, "SHARED_B");
}

TEST_F(SourceFilesTest, AddressOfALineSearchesEveryModuleNewestFirst) {
  EXPECT_EQ(address_of_line(process, "C:\\src\\prog.f95", 4), kBase + 0x1006);
  EXPECT_EQ(address_of_line(process, "C:\\lib\\lib.f95", 7), kLibraryBase + 0x1021);
  EXPECT_EQ(address_of_line(process, "C:\\src\\shared.f95", 40), kLibraryBase + 0x1002);
  EXPECT_EQ(address_of_line(process, "C:\\src\\shared.f95", 30), kBase + 0x1040);
  EXPECT_EQ(address_of_line(process, "lib.f95", 7), 0u);
  EXPECT_EQ(address_of_line(process, "lib.f95", 7, false), kLibraryBase + 0x1021);
  EXPECT_EQ(address_of_line(process, "C:\\src\\prog.f95", 5), 0u);
}

TEST_F(SourceFilesTest, UnloadingAnImageDetachesItsFilesAndDropsItsRoutines) {
  process.remove_module_at(kLibraryBase);
  auto& files = process.source_files();
  ASSERT_EQ(files.size(), 4u);
  EXPECT_EQ(files[2]->module, nullptr);
  EXPECT_TRUE(files[2]->routines.empty());
  EXPECT_EQ(files[1]->routines.size(), 1u);
  EXPECT_EQ(address_of_line(process, "C:\\lib\\lib.f95", 7), 0u);
}

// ---- locating the text: the search order under Wine in tests/integration/source_location_itest.cpp

TEST(SourceLocatorTest, LinesLoseTheirReturnsAndListEntriesTheirTrailingBackslash) {
  FakeTarget target;
  target.system.add_text_file(L"D:\\two\\prog.f95", "program p\r\n  x = 1\r\n\r\nend\n");
  source_file file;
  file.recorded_name = L"C:\\build\\prog.f95";
  EXPECT_EQ(locate_source_file(file, {L"", L"D:\\one;D:\\two\\"}), kSourceLoaded);
  EXPECT_EQ(file.full_path, L"D:\\two\\prog.f95");
  ASSERT_EQ(file.lines.size(), 4u);
  EXPECT_EQ(file.lines[1].text, "  x = 1");
  EXPECT_EQ(file.lines[2].text, "");
  EXPECT_EQ(file.lines[3].text, "end");
  // A file not found stays so, but a path chosen by the user still loads.
  source_file gone;
  gone.recorded_name = L"C:\\gone\\prog.f95";
  EXPECT_EQ(locate_source_file(gone, {}), kSourceNotFound);
  target.system.add_text_file(L"C:\\gone\\prog.f95", "end");
  EXPECT_TRUE(load_source_text(gone, L"C:\\gone\\prog.f95"));
  EXPECT_EQ(gone.locate_state, kSourceLoaded);
}

}  // namespace
}  // namespace vantor::testing
