// Exceptions the settings say to ignore: read from the settings file when the session's
// process is made, and passed back to the program, whose own handler then deals with them.
#include <gtest/gtest.h>

#include "common/messages.h"
#include "debuggee.h"
#include "os/win32/win32_system.h"
#include "process/debugged_process.h"
#include "process/stepping.h"
#include "session/session_process.h"
#include "ui/ignored_exceptions.h"
#include "ui/settings.h"

namespace vantor {
namespace {

// The real system, with the settings folder moved to a scratch folder of the test.
class ScratchSettingsSystem : public os::Win32System {
 public:
  std::optional<std::wstring> environment(const std::wstring& name) override {
    return name == L"APPDATA" ? folder : os::Win32System::environment(name);
  }
  std::wstring folder = testing::scratch_path(L"settings");
};

class IgnoredExceptionsTest : public ::testing::Test {
 protected:
  void SetUp() override {
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
  // Runs the faults program in a new session process; the status text of its end or stop.
  std::string run_faults(const std::wstring& fault) {
    end_current_process();
    DebuggedProcess& process = new_current_process();
    EXPECT_TRUE(process.launch(testing::debuggee_command(L"faults", fault))) << process.status_text();
    std::int32_t state = process.run(kModeGo);
    return state == psEnded ? "ended " + std::to_string(process.exit_code()) : process.status_text();
  }

  ScratchSettingsSystem system;
};

// The program's handler ends it with 7; a program without a handler gives the fault back.
TEST_F(IgnoredExceptionsTest, ACodeNamedInTheSettingsReachesTheProgramsHandler) {
  EXPECT_EQ(run_faults(L"raise-handled"), "Exception 0xE0005678");
  EXPECT_EQ(run_faults(L"guarded-write"), "Access Violation writing address 0x0000000000000000");

  ignore(0, "C0000005");
  ignore(17, "e0005678");  // the numbering may have gaps; letter case does not matter
  ignore(18, "banana");    // not a code: skipped
  EXPECT_EQ(run_faults(L"raise-handled"), "ended 7");
  EXPECT_EQ(run_faults(L"guarded-write"), "ended 7");
  EXPECT_EQ(run_faults(L"write-null"), "Access Violation writing address 0x0000000000000000");
}

}  // namespace
}  // namespace vantor
