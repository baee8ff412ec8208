// Exceptions the settings say to ignore: read from the settings file when the session's
// process is made, and passed back to the program, whose own handler then deals with them.
#include <gtest/gtest.h>

#include "common/messages.h"
#include "debuggee.h"
#include "os/win32/win32_system.h"
#include "process/debugged_process.h"
#include "session/session_process.h"
#include "ui/ignored_exceptions.h"
#include "ui/settings.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

using testing::debuggee_command;
using testing::scratch_path;

// The real system, with the settings folder moved to a scratch folder of the test.
class ScratchSettingsSystem : public os::Win32System {
 public:
  std::optional<std::wstring> environment(const std::wstring& name) override {
    if (name == L"APPDATA") return folder;
    return os::Win32System::environment(name);
  }
  std::wstring folder;
};

class IgnoredExceptionsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    system.folder = scratch_path(L"settings");
    CreateDirectoryW(system.folder.c_str(), nullptr);
    os::set_system(&system);
    ui::forget_settings_file_path();
    DeleteFileA(ui::settings_file_path().c_str());
    ConsoleMode = true;
  }
  void TearDown() override {
    end_current_process();
    DeleteFileA(ui::settings_file_path().c_str());
    ui::forget_settings_file_path();
  }
  void ignore(int index, const std::string& code) {
    system.write_profile_string(ui::kSettingsSection, ui::ignored_exception_key(index), code,
                                ui::settings_file_path());
  }
  std::int32_t run_program(const std::wstring& name, const std::wstring& fault) {
    end_current_process();
    DebuggedProcess& process = new_current_process();
    EXPECT_TRUE(process.launch(debuggee_command(name, fault))) << process.status_text();
    return process.run(4);
  }
  std::int32_t run_guarded(const std::wstring& fault) { return run_program(L"guarded", fault); }

  ScratchSettingsSystem system;
};

TEST_F(IgnoredExceptionsTest, ACodeNamedInTheSettingsReachesTheProgramsHandler) {
  EXPECT_EQ(run_guarded(L"raise"), psFailed);
  EXPECT_EQ(CurrentProcess->status_text(), "Exception 0xE0001234");

  ignore(0, "C0000005");
  ignore(17, "e0001234");  // the numbering may have gaps; letter case does not matter
  ignore(18, "banana");    // not a code: skipped
  EXPECT_EQ(run_guarded(L"raise"), psEnded);
  EXPECT_EQ(CurrentProcess->exit_code(), 7u);  // the program's handler ended it
}

// A named access violation reaches the program's own handler; unnamed, it stops the program.
TEST_F(IgnoredExceptionsTest, ANamedAccessViolationReachesTheProgramsHandler) {
  EXPECT_EQ(run_guarded(L"write"), psFailed);
  EXPECT_EQ(CurrentProcess->status_text(), "Access Violation writing address 0x0000000000000000");

  ignore(3, "c0000005");
  EXPECT_EQ(run_guarded(L"write"), psEnded);
  EXPECT_EQ(CurrentProcess->exit_code(), 7u);

  // A program without a handler gives the fault back: it stops all the same.
  EXPECT_EQ(run_program(L"faults", L"write-null"), psFailed);
  EXPECT_EQ(CurrentProcess->status_text(), "Access Violation writing address 0x0000000000000000");
}

}  // namespace
}  // namespace vantor
