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
  std::int32_t run_guarded() {
    DebuggedProcess& process = new_current_process();
    EXPECT_TRUE(process.launch(debuggee_command(L"guarded"))) << process.status_text();
    return process.run(4);
  }

  ScratchSettingsSystem system;
};

TEST_F(IgnoredExceptionsTest, AnAccessViolationStopsTheProgramUnlessIgnored) {
  EXPECT_EQ(run_guarded(), psFailed);
  EXPECT_NE(CurrentProcess->status_text().find("Access Violation"), std::string::npos)
      << CurrentProcess->status_text();
  end_current_process();

  ignore(0, "E0001234");
  ignore(17, "c0000005");  // the numbering may have gaps; letter case does not matter
  EXPECT_EQ(run_guarded(), psEnded);
  EXPECT_EQ(CurrentProcess->exit_code(), 7u);  // the program's handler ended it
}

}  // namespace
}  // namespace vantor
