// The debugged process against real programs, through the Win32 layer.
#include <gtest/gtest.h>

#include "common/messages.h"
#include "debuggee.h"
#include "debuginfo/module.h"
#include "os/win32/win32_system.h"
#include "pausing_library.h"
#include "process/debugged_process.h"

namespace vantor {
namespace {

using testing::debuggee_command;
using testing::PausingLibrary;

class DebuggedProcessTest : public ::testing::Test {
 protected:
  void SetUp() override {
    os::set_system(&system);
    winlib::set_window_library(&windows);
    ConsoleMode = true;
  }
  void TearDown() override {
    std::uint32_t pid = process.process_information().process_id;
    if (process.launched()) process.end();
    if (pid != 0) expect_gone(pid);
    winlib::set_window_library(nullptr);
  }

  // Launches a debuggee and runs it (go) until its first stop.
  std::int32_t run(const std::wstring& name, const std::wstring& arguments = L"") {
    EXPECT_TRUE(process.launch(debuggee_command(name, arguments))) << process.status_text();
    return process.run(4);
  }

  // Runs a debuggee of its own to its failure, checks the message and ends it.
  static void expect_failure(const wchar_t* name, const wchar_t* arguments, const char* text) {
    DebuggedProcess failing;
    ASSERT_TRUE(failing.launch(debuggee_command(name, arguments)));
    EXPECT_EQ(failing.run(4), psFailed) << text;
    EXPECT_EQ(failing.status_text(), text);
    std::uint32_t pid = failing.process_information().process_id;
    failing.end();
    expect_gone(pid);
  }

  static void expect_gone(std::uint32_t pid) {
    HANDLE handle = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid);
    if (handle == nullptr) return;  // no such process any more
    EXPECT_EQ(WaitForSingleObject(handle, 5000), WAIT_OBJECT_0) << "process " << pid << " is still alive";
    CloseHandle(handle);
  }

  os::Win32System system;
  PausingLibrary windows;
  DebuggedProcess process;
};

TEST_F(DebuggedProcessTest, AMissingProgramIsNotFound) {
  EXPECT_FALSE(process.launch(L"C:\\no\\such\\program.exe"));
  EXPECT_EQ(process.state(), psFailed);
  EXPECT_EQ(process.status_text(), "File not found");
}

TEST_F(DebuggedProcessTest, AProgramThatEndsGivesItsExitCode) {
  EXPECT_EQ(run(L"exit_with", L"42"), psEnded);
  EXPECT_EQ(process.exit_code(), 42u);
  EXPECT_TRUE(process.loader_breakpoint_seen());
  ASSERT_FALSE(process.modules().empty());
  EXPECT_TRUE(process.modules().back()->main_image());
  EXPECT_GE(process.modules().size(), 2u);  // the program and at least the system's libraries
}

TEST_F(DebuggedProcessTest, ThreadsDebugStringsAndLibrariesDoNotStopTheProgram) {
  EXPECT_EQ(run(L"faults", L"events"), psEnded);
  EXPECT_EQ(process.exit_code(), 0u);
}

TEST_F(DebuggedProcessTest, NullPointerReadStops) {
  EXPECT_EQ(run(L"faults", L"read-null"), psFailed);
  EXPECT_EQ(process.status_text(), "Access Violation reading address 0x0000000000000000");
}

TEST_F(DebuggedProcessTest, NullPointerWriteStops) {
  EXPECT_EQ(run(L"faults", L"write-null"), psFailed);
  EXPECT_EQ(process.status_text(), "Access Violation writing address 0x0000000000000000");
}

TEST_F(DebuggedProcessTest, ReadOfAnUnmappedAddressNamesIt) {
  EXPECT_EQ(run(L"faults", L"read-high"), psFailed);
  EXPECT_EQ(process.status_text(), "Access Violation reading address 0x0000000012345678");
}

TEST_F(DebuggedProcessTest, JumpToAnUnmappedAddressStops) {
  EXPECT_EQ(run(L"faults", L"jump"), psFailed);
  EXPECT_EQ(process.status_text(), "Access Violation executing address 0x0000000012345670");
  EXPECT_EQ(process.context().rip, 0x12345670u);
}

TEST_F(DebuggedProcessTest, RunTimeErrorsFollowTheRegisterConvention) {
  const std::pair<const wchar_t*, const char*> cases[] = {
      {L"29 SOLVE_SYSTEM", "Call to missing routine: SOLVE_SYSTEM"},
      {L"345 \"Matrix is singular\"", "Matrix is singular"},
      {L"14", "Run-time error 14: DO-loop has zero increment"},
      {L"15", "Run-time error 15: Argument to CHAR outside range 0 - 255"},
      {L"0", "Run-time error 0"},
      {L"-3", "Run-time error -3"},
      {L"448", "Run-time error 448"},
  };
  for (auto [arguments, text] : cases) expect_failure(L"runtime_error", arguments, text);
}

TEST_F(DebuggedProcessTest, ProcessorExceptionsHaveTheirNames) {
  const std::pair<const wchar_t*, const char*> cases[] = {
      {L"divide", "Integer Division by zero"},     {L"illegal", "Illegal instruction"},
      {L"privileged", "Privileged instruction"},   {L"stack", "Stack overflow"},
      {L"raise", "Exception 0xE0001234"},          {L"raise-bounds", "Array bounds exceeded"},
      {L"raise-handled", "Exception 0xE0005678"},
  };
  for (auto [arguments, text] : cases) expect_failure(L"faults", arguments, text);
}

TEST_F(DebuggedProcessTest, AnIgnoredCodeReachesTheProgramsOwnHandler) {
  process.add_ignored_exception(0xE0005678);
  EXPECT_EQ(run(L"faults", L"raise-handled"), psEnded);
  EXPECT_EQ(process.exit_code(), 7u);  // the handler's exit
}

TEST_F(DebuggedProcessTest, CodesWithoutTheHighBitAlwaysGoBack) {
  EXPECT_EQ(run(L"faults", L"raise-information"), psEnded);
  EXPECT_EQ(process.exit_code(), 7u);
}

TEST_F(DebuggedProcessTest, ABreakpointInTheProgramStopsAndTheNextRunGoesOn) {
  EXPECT_EQ(run(L"faults", L"breakpoint"), psStopped);
  EXPECT_EQ(process.stop_reason(), kStopCodeTrap);
  EXPECT_EQ(process.run(4), psEnded);
  EXPECT_EQ(process.exit_code(), 0u);
}

TEST_F(DebuggedProcessTest, PauseStopsAnEndlessLoopAndTheNextRunResumesIt) {
  const std::wstring stop_file = testing::scratch_path(L"endless.stop");
  DeleteFileW(stop_file.c_str());
  windows.process = &process;
  windows.pause_on_yield = 2;
  EXPECT_EQ(run(L"endless", L"\"" + stop_file + L"\""), psPaused);
  EXPECT_EQ(process.status_text(), "Program Paused");
  HANDLE created = CreateFileW(stop_file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(created, INVALID_HANDLE_VALUE);
  CloseHandle(created);
  EXPECT_EQ(process.run(4), psEnded);
  EXPECT_EQ(process.exit_code(), 5u);
  DeleteFileW(stop_file.c_str());
}

TEST_F(DebuggedProcessTest, EndingAPausedProgramLeavesNothingBehind) {
  windows.process = &process;
  windows.pause_on_yield = 1;
  EXPECT_EQ(run(L"endless", L"never-created.stop"), psPaused);
  // TearDown ends it and checks that the process is gone.
}

TEST_F(DebuggedProcessTest, EndingAProgramThatNeverRanLeavesNothingBehind) {
  ASSERT_TRUE(process.launch(debuggee_command(L"hello")));
  EXPECT_EQ(process.state(), psPaused);
}

}  // namespace
}  // namespace vantor
