// Finding the text of a source file that a live program's line tables name, on the real
// file system: the recorded full path, and a recorded bare name through the current
// directory (before the "/sourcepath" list) and the "SOURCEPATH" variable. The order of the
// search and the kept outcome are pinned by the unit tests over the in-memory system.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "debuginfo/source_locator.h"
#include "program_test.h"

namespace vantor {
namespace {

using testing::ends_with;

// The file's text as the locator keeps it: one line each, without carriage returns.
std::string text_of_file(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  std::string lines = text.str();
  lines.erase(std::remove(lines.begin(), lines.end(), '\r'), lines.end());
  return lines;
}

std::string joined_lines(const source_file& file) {
  std::string text;
  for (const source_line& line : file.lines) text += line.text + "\n";
  return text;
}

class ModuleSourceLocationTest : public testing::ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    // An empty current directory of our own, so that ".\" finds only what a test puts there.
    wchar_t saved[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, saved);
    saved_directory_ = saved;
    for (const wchar_t* folder : {L"", L"\\here", L"\\switch", L"\\variable"})
      CreateDirectoryW((scratch_ + folder).c_str(), nullptr);
    ASSERT_TRUE(SetCurrentDirectoryW((scratch_ + L"\\here").c_str()));
    SetEnvironmentVariableW(L"SOURCEPATH", nullptr);
  }
  void TearDown() override {
    ProgramTest::TearDown();
    SetEnvironmentVariableW(L"SOURCEPATH", nullptr);
    SetCurrentDirectoryW(saved_directory_.c_str());
    for (const wchar_t* folder : {L"\\here", L"\\switch", L"\\variable"}) {
      DeleteFileW((scratch_ + folder + L"\\stepping.f95").c_str());
      RemoveDirectoryW((scratch_ + folder).c_str());
    }
    RemoveDirectoryW(scratch_.c_str());
  }

  // The program's record of stepping.f95, made as its image loaded.
  source_file* stepping_source(const std::wstring& program) {
    start(program);
    for (const auto& file : process.source_files())
      if (ends_with(file->recorded_name, L"stepping.f95")) return file.get();
    ADD_FAILURE() << "no source file stepping.f95 in " << narrow_from_wide(program);
    return nullptr;
  }

  // A copy of the source in one of the scratch folders; its path.
  std::wstring copy_into(const wchar_t* folder) {
    std::wstring path = scratch_ + folder + L"\\stepping.f95";
    EXPECT_TRUE(CopyFileW(original_.c_str(), path.c_str(), FALSE));
    return path;
  }

  const std::wstring original_ =
      testing::test_executable_directory() + L"\\..\\..\\tests\\integration\\programs\\stepping.f95";
  const std::wstring scratch_ = testing::scratch_path(L"sources");
  std::wstring saved_directory_;
};

TEST_F(ModuleSourceLocationTest, TheRecordedFullPathIsReadIntoItsLines) {
  source_file* file = stepping_source(L"stepping");
  ASSERT_NE(file, nullptr);
  ASSERT_NE(file->recorded_name.find(L'\\'), std::wstring::npos) << "the full path is recorded";
  EXPECT_EQ(locate_source_file(*file, SourceSearch{}), kSourceLoaded);
  EXPECT_EQ(file->full_path, file->recorded_name);
  EXPECT_EQ(joined_lines(*file), text_of_file(original_));
  EXPECT_FALSE(file->routines.empty());
}

TEST_F(ModuleSourceLocationTest, ABareNameIsFoundInTheCurrentDirectoryFirst) {
  source_file* file = stepping_source(L"stepping_bare");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->recorded_name, L"stepping.f95");
  copy_into(L"\\here");
  copy_into(L"\\switch");
  EXPECT_EQ(locate_source_file(*file, SourceSearch{L"", scratch_ + L"\\switch"}), kSourceLoaded);
  EXPECT_TRUE(ends_with(file->full_path, L"stepping.f95"));
  EXPECT_EQ(file->full_path.find(L"switch"), std::wstring::npos) << narrow_from_wide(file->full_path);
}

TEST_F(ModuleSourceLocationTest, ABareNameIsFoundThroughTheSourcePathVariable) {
  source_file* file = stepping_source(L"stepping_bare");
  ASSERT_NE(file, nullptr);
  std::wstring copy = copy_into(L"\\variable");
  SetEnvironmentVariableW(L"SOURCEPATH", (L"Z:\\no\\such\\folder;" + scratch_ + L"\\variable").c_str());
  EXPECT_EQ(locate_source_file(*file, SourceSearch{}), kSourceLoaded);
  EXPECT_EQ(file->full_path, copy);
  EXPECT_EQ(joined_lines(*file), text_of_file(copy));
}

}  // namespace
}  // namespace vantor
