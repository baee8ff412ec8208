// The Win32 layer's services that the other Wine-side tests do not reach by themselves
// (they drive the system walker, image mappings, the environment and settings reads).
#include <gtest/gtest.h>

#include <cstring>

#include "common/messages.h"
#include "debuggee.h"
#include "debuginfo/module.h"
#include "os/win32/win32_system.h"
#include "process/debugged_process.h"

namespace vantor {
namespace {

class Win32SystemTest : public ::testing::Test {
 protected:
  void SetUp() override {
    os::set_system(&system);
    ConsoleMode = true;
  }
  os::Win32System system;
};

// A program stopped at its own breakpoint instruction, for the thread and memory services.
class StoppedProgramTest : public Win32SystemTest {
 protected:
  void SetUp() override {
    Win32SystemTest::SetUp();
    ASSERT_TRUE(process.launch(testing::debuggee_command(L"faults", L"breakpoint")));
    ASSERT_EQ(process.run(4), psStopped);
  }
  void TearDown() override { process.end(); }
  DebuggedProcess process;
};

TEST_F(StoppedProgramTest, ContextsRoundTripIncludingTheDebugRegisters) {
  os::ThreadContext context;
  ASSERT_TRUE(system.get_context(process.thread_handle(), context));
  EXPECT_TRUE(context.has_native);
  EXPECT_EQ(context.rip, process.debug_event().exception_address + 1);  // past the trap byte

  const std::uint64_t watched = context.rsp;
  context.dr0 = watched;
  context.dr7 = 0x000D0001;  // slot 0, local, write, 4 bytes
  context.r12 = 0x1122334455667788;
  ASSERT_TRUE(system.set_context(process.thread_handle(), context));
  os::ThreadContext again;
  ASSERT_TRUE(system.get_context(process.thread_handle(), again));
  EXPECT_EQ(again.dr0, watched);
  EXPECT_EQ(again.dr7 & 0x000F0003, 0x000D0001u);
  EXPECT_EQ(again.r12, 0x1122334455667788u);
  EXPECT_EQ(again.rip, context.rip);

  // A context with only the named fields takes the rest from the thread.
  os::ThreadContext named_only = again;
  named_only.has_native = false;
  named_only.dr0 = 0;
  named_only.dr7 = 0;
  ASSERT_TRUE(system.set_context(process.thread_handle(), named_only));
  ASSERT_TRUE(system.get_context(process.thread_handle(), again));
  EXPECT_EQ(again.dr7 & 0xFF, 0u);
  EXPECT_EQ(again.rip, context.rip);
}

TEST_F(StoppedProgramTest, MemoryReadsAndWritesReportWhatTheyMoved) {
  const Address base = process.modules().back()->load_base();
  EXPECT_EQ(process.read_u16(base), 0x5A4Du);  // "MZ"
  EXPECT_EQ(process.read_u32(0), 0xFFFFFFFFu);
  EXPECT_EQ(process.read_u64(0x10), ~std::uint64_t{0});
  EXPECT_FALSE(process.is_readable(0));
  std::uint8_t big[16384];
  EXPECT_EQ(process.read(base, big, sizeof big), sizeof big);

  const Address stack = process.context().rsp - 64;  // below the live stack, writable
  const std::uint64_t value = 0xFEEDFACECAFEBEEF;
  EXPECT_EQ(process.write(stack, &value, 8), 8u);
  EXPECT_EQ(process.read_u64(stack), value);
  EXPECT_EQ(process.write(0x10, &value, 8), 0u);
}

TEST_F(Win32SystemTest, PlainFilesAndDirectories) {
  const std::wstring path = testing::scratch_path(L"plain.txt");
  ASSERT_TRUE(system.write_file(path, "first\n"));
  ASSERT_TRUE(system.append_file(path, "second\n"));
  EXPECT_TRUE(system.file_exists(path));
  auto bytes = system.read_file(path, 8);
  ASSERT_TRUE(bytes);
  EXPECT_EQ(std::string(bytes->begin(), bytes->end()), "first\nse");
  EXPECT_TRUE(system.delete_file(path));
  EXPECT_FALSE(system.file_exists(path));
  EXPECT_FALSE(system.read_file(path, 10));
  // A directory is not a file to read.
  EXPECT_FALSE(system.read_file(testing::test_executable_directory(), 10));
  EXPECT_FALSE(system.file_exists(testing::test_executable_directory()));
}

TEST_F(Win32SystemTest, ProfileStringsCodePagesAndTheIdleWait) {
  const std::string ini = system.oem_from_wide(testing::scratch_path(L"settings.ini"));
  ASSERT_TRUE(system.write_profile_string("Debugger-Win32", "LastCommandLine", "\"a b.exe\" x", ini));
  ASSERT_TRUE(system.write_profile_string("Debugger-Win32", "FontSize", "14", ini));
  EXPECT_EQ(system.profile_string("Debugger-Win32", "LastCommandLine", "", 256, ini), "\"a b.exe\" x");
  EXPECT_EQ(system.profile_string("Debugger-Win32", "LastCommandLine", "", 5, ini), "\"a b");
  EXPECT_EQ(system.profile_string("Debugger-Win32", "Missing", "fallback", 256, ini), "fallback");
  EXPECT_EQ(system.profile_int("Debugger-Win32", "FontSize", 12, ini), 14u);
  EXPECT_EQ(system.profile_int("Debugger-Win32", "Missing", 12, ini), 12u);
  system.delete_file(system.wide_from_oem(ini));

  EXPECT_EQ(system.wide_from_oem("plain"), L"plain");
  EXPECT_EQ(system.oem_from_wide(L"x\u4E2Dy"), "x?y");
  EXPECT_FALSE(system.current_directory().empty());
  std::uint64_t before = system.milliseconds();
  os::Handle event = system.create_event();
  EXPECT_NE(event, 0u);
  system.wait_for_input(event, 30);
  EXPECT_GE(system.milliseconds() - before, 15u);
  system.close_handle(event);
}

}  // namespace
}  // namespace vantor
