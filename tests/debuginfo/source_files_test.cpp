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

TEST(LineOfOffsetTest, AThreadStoppedByALineTrapIsOneBytePastItsLine) {
  LineTable table = table_of({{10, 0}, {11, 5}, {12, 9}});
  EXPECT_EQ(line_of_offset(&table, 1), 10);
  EXPECT_EQ(line_of_offset(&table, 6), 11);
  EXPECT_EQ(line_of_offset(&table, 10), 12);
}

TEST(LineOfOffsetTest, AnOffsetInsideALinesCodeBelongsToThatLine) {
  LineTable table = table_of({{10, 0}, {11, 5}, {12, 9}});
  EXPECT_EQ(line_of_offset(&table, 7), 11);
  EXPECT_EQ(line_of_offset(&table, 8), 11);
  EXPECT_EQ(line_of_offset(&table, 9), 11);  // the line-12 byte itself, not stopped by its trap
  EXPECT_EQ(line_of_offset(&table, 2), 10);
}

TEST(LineOfOffsetTest, BeforeTheFirstRecordIsTheFirstLineAndAfterTheLastIsTheLast) {
  LineTable table = table_of({{20, 8}, {21, 12}});
  EXPECT_EQ(line_of_offset(&table, 0), 20);
  EXPECT_EQ(line_of_offset(&table, 5), 20);
  EXPECT_EQ(line_of_offset(&table, 14), 21);
  EXPECT_EQ(line_of_offset(&table, 0x10000), 21);
}

TEST(LineOfOffsetTest, NoTableOrNoRecordsIsLineZero) {
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

// ---- locating the text ----------------------------------------------------------------

class SourceLocatorTest : public ::testing::Test {
 protected:
  source_file file_named(const std::wstring& name) {
    source_file file;
    file.recorded_name = name;
    return file;
  }
  FakeTarget target;
};

TEST_F(SourceLocatorTest, TheRecordedFullPathIsUsedWhenItExists) {
  target.system.add_text_file(L"C:\\src\\prog.f95", "program p\r\n  x = 1\r\n\r\nend\n");
  source_file file = file_named(L"C:\\src\\prog.f95");
  EXPECT_EQ(locate_source_file(file, {}), kSourceLoaded);
  EXPECT_EQ(file.full_path, L"C:\\src\\prog.f95");
  ASSERT_EQ(file.lines.size(), 4u);
  EXPECT_EQ(file.lines[0].text, "program p");
  EXPECT_EQ(file.lines[1].text, "  x = 1");
  EXPECT_EQ(file.lines[2].text, "");
  EXPECT_EQ(file.lines[3].text, "end");
}

TEST_F(SourceLocatorTest, TheBareNameIsFoundThroughTheSourcePathSwitch) {
  target.system.add_text_file(L"D:\\two\\prog.f95", "end");
  target.system.add_text_file(L"D:\\three\\prog.f95", "other");
  target.system.set_environment(L"SOURCEPATH", L"D:\\three");
  source_file file = file_named(L"C:\\build\\prog.f95");
  EXPECT_EQ(locate_source_file(file, {L"", L"D:\\one;D:\\two\\"}), kSourceLoaded);
  EXPECT_EQ(file.full_path, L"D:\\two\\prog.f95");
}

TEST_F(SourceLocatorTest, TheBareNameIsFoundThroughTheSourcePathVariable) {
  target.system.add_text_file(L"E:\\sources\\prog.f95", "end");
  target.system.set_environment(L"SOURCEPATH", L"E:\\nothing;E:\\sources");
  source_file file = file_named(L"C:\\build\\prog.f95");
  EXPECT_EQ(locate_source_file(file, {}), kSourceLoaded);
  EXPECT_EQ(file.full_path, L"E:\\sources\\prog.f95");
}

TEST_F(SourceLocatorTest, TheCurrentDirectoryAndTheStartupListComeBeforeTheSourcePath) {
  target.system.add_text_file(L".\\prog.f95", "here");
  target.system.add_text_file(L"F:\\startup\\util.f95", "startup");
  target.system.add_text_file(L"F:\\path\\util.f95", "path");
  source_file here = file_named(L"/unix/build/prog.f95");
  EXPECT_EQ(locate_source_file(here, {L"F:\\startup", L"F:\\path"}), kSourceLoaded);
  EXPECT_EQ(here.full_path, L".\\prog.f95");
  source_file util = file_named(L"util.f95");
  EXPECT_EQ(locate_source_file(util, {L"F:\\startup", L"F:\\path"}), kSourceLoaded);
  EXPECT_EQ(util.full_path, L"F:\\startup\\util.f95");
}

TEST_F(SourceLocatorTest, NotFoundIsState2AndTheStateIsCached) {
  source_file file = file_named(L"C:\\gone\\prog.f95");
  EXPECT_EQ(locate_source_file(file, {L"C:\\a", L"C:\\b"}), kSourceNotFound);
  target.system.add_text_file(L"C:\\gone\\prog.f95", "end");
  EXPECT_EQ(locate_source_file(file, {}), kSourceNotFound);
  EXPECT_TRUE(file.lines.empty());
  // A path chosen by the user still loads.
  EXPECT_TRUE(load_source_text(file, L"C:\\gone\\prog.f95"));
  EXPECT_EQ(file.locate_state, kSourceLoaded);
  EXPECT_EQ(file.lines.size(), 1u);
}

}  // namespace
}  // namespace vantor::testing
