// Finding the text of a source file that a live program's line tables name, on the real
// file system: the recorded full path, and a recorded bare name through the current
// directory, the "/sourcepath" list and the "SOURCEPATH" variable; or not at all.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "common/messages.h"
#include "debuggee.h"
#include "debuginfo/source_locator.h"
#include "os/win32/win32_system.h"
#include "process/debugged_process.h"
#include "process/user_space_buffer.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

constexpr std::int32_t kStepInto = 3;

std::wstring programs_directory() {
  return testing::test_executable_directory() + L"\\..\\..\\tests\\integration\\programs";
}

std::string text_of_file(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

// The lines as the locator keeps them: one per line of the file, without line ends.
std::string joined_lines(const source_file& file) {
  std::string text;
  for (const source_line& line : file.lines) text += line.text + "\n";
  return text;
}

std::string without_carriage_returns(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

bool ends_with(const std::wstring& text, const std::wstring& tail) {
  return text.size() >= tail.size() && _wcsicmp(text.c_str() + text.size() - tail.size(), tail.c_str()) == 0;
}

class ModuleSourceLocationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    os::set_system(&system);
    winlib::set_window_library(&windows);
    ConsoleMode = true;
    // An empty current directory of our own, so that ".\" finds only what a test puts there.
    wchar_t saved[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, saved);
    saved_directory_ = saved;
    scratch_ = testing::scratch_path(L"sources");
    for (const wchar_t* folder : {L"", L"\\here", L"\\switch", L"\\variable"})
      CreateDirectoryW((scratch_ + folder).c_str(), nullptr);
    ASSERT_TRUE(SetCurrentDirectoryW((scratch_ + L"\\here").c_str()));
    SetEnvironmentVariableW(L"SOURCEPATH", nullptr);
  }
  void TearDown() override {
    if (process.launched()) process.end();
    SetEnvironmentVariableW(L"SOURCEPATH", nullptr);
    SetCurrentDirectoryW(saved_directory_.c_str());
    for (const wchar_t* folder : {L"\\here", L"\\switch", L"\\variable"}) {
      DeleteFileW((scratch_ + folder + L"\\stepping.f95").c_str());
      RemoveDirectoryW((scratch_ + folder).c_str());
    }
    RemoveDirectoryW(scratch_.c_str());
    winlib::set_window_library(nullptr);
  }

  // The program's record of stepping.f95, made as its image loaded.
  source_file* stepping_source(const std::wstring& program) {
    EXPECT_TRUE(process.launch(testing::program_command(program))) << process.status_text();
    EXPECT_EQ(process.run(kStepInto), psStopped) << process.status_text();
    for (const auto& file : process.source_files())
      if (ends_with(file->recorded_name, L"stepping.f95")) return file.get();
    ADD_FAILURE() << "no source file stepping.f95 in " << narrow_from_wide(program);
    return nullptr;
  }

  // A copy of the source in one of the scratch folders; its path.
  std::wstring copy_into(const wchar_t* folder) {
    std::wstring path = scratch_ + folder + L"\\stepping.f95";
    EXPECT_TRUE(CopyFileW((programs_directory() + L"\\stepping.f95").c_str(), path.c_str(), FALSE));
    return path;
  }

  os::Win32System system;
  winlib::HeadlessLibrary windows;
  DebuggedProcess process;
  std::wstring scratch_, saved_directory_;
};

TEST_F(ModuleSourceLocationTest, TheRecordedFullPathIsReadIntoItsLines) {
  source_file* file = stepping_source(L"stepping");
  ASSERT_NE(file, nullptr);
  ASSERT_NE(file->recorded_name.find(L'\\'), std::wstring::npos) << "the full path is recorded";
  EXPECT_EQ(locate_source_file(*file, SourceSearch{}), kSourceLoaded);
  EXPECT_EQ(file->full_path, file->recorded_name);
  EXPECT_EQ(joined_lines(*file), without_carriage_returns(text_of_file(programs_directory() + L"\\stepping.f95")));
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

TEST_F(ModuleSourceLocationTest, ABareNameIsFoundThroughTheSourcePathSwitch) {
  source_file* file = stepping_source(L"stepping_bare");
  ASSERT_NE(file, nullptr);
  std::wstring copy = copy_into(L"\\switch");
  std::wstring list = L"Z:\\no\\such\\folder;" + scratch_ + L"\\switch";
  EXPECT_EQ(locate_source_file(*file, SourceSearch{L"", list}), kSourceLoaded);
  EXPECT_EQ(file->full_path, copy);
  EXPECT_EQ(joined_lines(*file), without_carriage_returns(text_of_file(copy)));
}

TEST_F(ModuleSourceLocationTest, ABareNameIsFoundThroughTheSourcePathVariable) {
  source_file* file = stepping_source(L"stepping_bare");
  ASSERT_NE(file, nullptr);
  std::wstring copy = copy_into(L"\\variable");
  SetEnvironmentVariableW(L"SOURCEPATH", (L"Z:\\no\\such\\folder;" + scratch_ + L"\\variable").c_str());
  EXPECT_EQ(locate_source_file(*file, SourceSearch{}), kSourceLoaded);
  EXPECT_EQ(file->full_path, copy);
}

TEST_F(ModuleSourceLocationTest, ABareNameFoundNowhereIsState2AndStaysSo) {
  source_file* file = stepping_source(L"stepping_bare");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(locate_source_file(*file, SourceSearch{L"Z:\\no\\such\\folder", L""}), kSourceNotFound);
  EXPECT_TRUE(file->full_path.empty());
  // The outcome is kept: a copy that appears later is not looked for again.
  copy_into(L"\\switch");
  EXPECT_EQ(locate_source_file(*file, SourceSearch{L"", scratch_ + L"\\switch"}), kSourceNotFound);
  EXPECT_TRUE(file->lines.empty());
}

}  // namespace
}  // namespace vantor
