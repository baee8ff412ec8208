// The debugged process against real C programs, through the Win32 layer: how they end,
// fail, stop and pause, and that nothing is left running once they are ended.
#include <gtest/gtest.h>

#include "debuginfo/module.h"
#include "program_test.h"

namespace vantor {
namespace {

using testing::debuggee_command;

void expect_gone(std::uint32_t pid) {
  HANDLE handle = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid);
  if (handle == nullptr) return;  // no such process any more
  EXPECT_EQ(WaitForSingleObject(handle, 5000), WAIT_OBJECT_0) << "process " << pid << " is still alive";
  CloseHandle(handle);
}

class DebuggedProcessTest : public testing::ProgramTest {
 protected:
  void TearDown() override {
    std::uint32_t pid = process.process_information().process_id;
    if (process.launched()) process.end();
    if (pid != 0) expect_gone(pid);
    winlib::set_window_library(nullptr);
  }

  // Launches a debuggee and runs it (go) until its first stop.
  std::int32_t run(const std::wstring& name, const std::wstring& arguments = L"") {
    EXPECT_TRUE(process.launch(debuggee_command(name, arguments))) << process.status_text();
    return process.run(kModeGo);
  }
};

TEST_F(DebuggedProcessTest, AMissingProgramIsNotFound) {
  EXPECT_FALSE(process.launch(L"C:\\no\\such\\program.exe"));
  EXPECT_EQ(process.state(), psFailed);
  EXPECT_EQ(process.status_text(), "File not found");
}

TEST_F(DebuggedProcessTest, AProgramThatEndsGivesItsExitCode) {
  EXPECT_EQ(run(L"hello", L"a b"), psEnded);
  EXPECT_EQ(process.exit_code(), 2u);
  EXPECT_TRUE(process.loader_breakpoint_seen());
  ASSERT_GE(process.modules().size(), 2u);  // the program and at least the system's libraries
  EXPECT_TRUE(process.modules().back()->main_image());
}

// Threads, debug strings, libraries and exception codes without the high bit (which go
// back to the program's own handler, whose exit is 7) do not stop the program.
TEST_F(DebuggedProcessTest, EventsThatAreNotFaultsDoNotStopTheProgram) {
  EXPECT_EQ(run(L"faults", L"events"), psEnded);
  EXPECT_EQ(process.exit_code(), 0u);
  DebuggedProcess information;
  ASSERT_TRUE(information.launch(debuggee_command(L"faults", L"raise-information")));
  EXPECT_EQ(information.run(kModeGo), psEnded);
  EXPECT_EQ(information.exit_code(), 7u);
}

// Each fault, run in a process of its own, stops with its message and is ended.
TEST_F(DebuggedProcessTest, EveryFaultStopsWithItsMessage) {
  const struct {
    const wchar_t *program, *arguments;
    const char* text;
  } cases[] = {
      {L"faults", L"read-null", "Access Violation reading address 0x0000000000000000"},
      {L"faults", L"write-null", "Access Violation writing address 0x0000000000000000"},
      {L"faults", L"read-high", "Access Violation reading address 0x0000000012345678"},
      {L"faults", L"divide", "Integer Division by zero"},
      {L"faults", L"illegal", "Illegal instruction"},
      {L"faults", L"privileged", "Privileged instruction"},
      {L"faults", L"stack", "Stack overflow"},
      {L"faults", L"raise", "Exception 0xE0001234"},
      {L"faults", L"raise-bounds", "Array bounds exceeded"},
      // The run-time library's errors: the number in RCX, a name or text at RDX.
      {L"runtime_error", L"29 SOLVE_SYSTEM", "Call to missing routine: SOLVE_SYSTEM"},
      {L"runtime_error", L"345 \"Matrix is singular\"", "Matrix is singular"},
      {L"runtime_error", L"14", "Run-time error 14: DO-loop has zero increment"},
      {L"runtime_error", L"0", "Run-time error 0"},
      {L"runtime_error", L"-3", "Run-time error -3"},
      {L"runtime_error", L"448", "Run-time error 448"},
  };
  for (const auto& fault : cases) {
    SCOPED_TRACE(fault.text);
    DebuggedProcess failing;
    ASSERT_TRUE(failing.launch(debuggee_command(fault.program, fault.arguments)));
    EXPECT_EQ(failing.run(kModeGo), psFailed);
    EXPECT_EQ(failing.status_text(), fault.text);
    std::uint32_t pid = failing.process_information().process_id;
    failing.end();
    expect_gone(pid);
  }
}

TEST_F(DebuggedProcessTest, AJumpToAnUnmappedAddressStopsThere) {
  EXPECT_EQ(run(L"faults", L"jump"), psFailed);
  EXPECT_EQ(process.status_text(), "Access Violation executing address 0x0000000012345670");
  EXPECT_EQ(process.context().rip, 0x12345670u);
}

TEST_F(DebuggedProcessTest, ABreakpointInTheProgramStopsAndTheNextRunGoesOn) {
  EXPECT_EQ(run(L"faults", L"breakpoint"), psStopped);
  EXPECT_EQ(process.stop_reason(), kStopCodeTrap);
  EXPECT_EQ(process.run(kModeGo), psEnded);
  EXPECT_EQ(process.exit_code(), 0u);
}

TEST_F(DebuggedProcessTest, PauseStopsAnEndlessLoopAndTheNextRunResumesIt) {
  const std::wstring stop_file = testing::scratch_path(L"endless.stop");
  DeleteFileW(stop_file.c_str());
  windows.pause_on_yield = 2;
  EXPECT_EQ(run(L"endless", L"\"" + stop_file + L"\""), psPaused);
  EXPECT_EQ(process.status_text(), "Program Paused");
  HANDLE created = CreateFileW(stop_file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(created, INVALID_HANDLE_VALUE);
  CloseHandle(created);
  EXPECT_EQ(process.run(kModeGo), psEnded);
  EXPECT_EQ(process.exit_code(), 5u);
  DeleteFileW(stop_file.c_str());
}

// TearDown ends the program and checks that the process is gone.
TEST_F(DebuggedProcessTest, EndingAPausedProgramLeavesNothingBehind) {
  windows.pause_on_yield = 1;
  EXPECT_EQ(run(L"endless", L"never-created.stop"), psPaused);
}

TEST_F(DebuggedProcessTest, EndingAProgramThatNeverRanLeavesNothingBehind) {
  ASSERT_TRUE(process.launch(debuggee_command(L"hello")));
  EXPECT_EQ(process.state(), psPaused);
}

}  // namespace
}  // namespace vantor
