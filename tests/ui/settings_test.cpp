#include "ui/settings.h"

#include <gtest/gtest.h>

#include "common/messages.h"
#include "support/fake_target.h"
#include "support/fake_window_library.h"
#include "ui/desktop_placement.h"
#include "ui/ignored_exceptions.h"

namespace vantor::ui {
namespace {

constexpr const char* kIni = "C:\\Users\\ann\\AppData\\Roaming\\vantor64.ini";

class SettingsTest : public ::testing::Test {
 protected:
  SettingsTest() {
    target.system.set_environment(L"APPDATA", L"C:\\Users\\ann\\AppData\\Roaming");
    forget_settings_file_path();
  }
  ~SettingsTest() override { forget_settings_file_path(); }

  std::map<std::string, std::string>& section() { return target.system.profile[std::string(kIni) + "|Debugger-Win32"]; }

  testing::FakeTarget target;
  testing::FakeWindowLibrary library;  // 1024 x 768 client, 8 x 16 cells: W 127, H 44
};

TEST_F(SettingsTest, WithNoFileEveryWindowOpensWhereTheMainWindowSizeSays) {
  EXPECT_EQ(main_window_units().width, 127);
  EXPECT_EQ(main_window_units().height, 44);
  EXPECT_EQ(get_setting_int(kSourceWindowX), 1);
  EXPECT_EQ(get_setting_int(kSourceWindowY), 1);
  EXPECT_EQ(get_setting_int(kSourceWindowW), 3 * 127 / 4 - 8);
  EXPECT_EQ(get_setting_int(kSourceWindowH), 44 - 3);
  EXPECT_EQ(get_setting_int(kStackWindowX), 3 * 127 / 4 - 1);
  EXPECT_EQ(get_setting_int(kVariablesWindowW), 127 / 4 - 2);
  EXPECT_EQ(get_setting_int(kVariablesWindowH), 44 - 15);
  EXPECT_EQ(get_setting_int(kBreakpointsWindowY), 44 - 10);
  EXPECT_EQ(get_setting_int(kMemDumpWindowBytesWide), 16);
  EXPECT_EQ(get_setting_int(kDesktopW), 1024);  // four fifths of 1280
  EXPECT_EQ(get_setting_int(kDesktopH), 819);   // of 1024, rounded down
  EXPECT_EQ(get_setting_int(kTextTabSize), 8);
  EXPECT_EQ(get_setting_text(kFont), "Courier New");
  EXPECT_EQ(get_setting_text(kLastTypedCmd), "");
  EXPECT_EQ(get_setting_text(kDesktopPlacement), "");

  // The defaults follow the main window as it is when asked, not as it was.
  library.client = {808, 600};  // 100 x 33 character units
  EXPECT_EQ(get_setting_int(kSourceWindowW), 67);
  EXPECT_EQ(get_setting_int(kSourceWindowH), 30);
  EXPECT_EQ(get_setting_int(kAsmWindowH), 29);
  EXPECT_TRUE(target.system.profile.empty()) << "reading must not create keys";
}

TEST_F(SettingsTest, KeyTableKeepsItsOrder) {
  // Spot checks across the table: a key slipped by one moves every later setting.
  EXPECT_EQ(setting_key_name(0), "SourceWindow-X");
  EXPECT_EQ(setting_key_name(26), "MemDumpWindow-BytesWide");
  EXPECT_EQ(setting_key_name(33), "MDIContainer");
  EXPECT_EQ(setting_key_name(55), "LastCommandLine");
  EXPECT_EQ(setting_key_name(65), "HideTornlibC");
  EXPECT_EQ(setting_key_name(80), "DesktopPlacement");
  EXPECT_EQ(setting_key_name(82), "LastTypedCmd");
  EXPECT_EQ(setting_key_name(83), "");
  EXPECT_EQ(setting_key_name(-1), "");
  int text_settings = 0;
  for (int n = 0; n < kSettingCount; ++n) text_settings += is_text_setting(n);
  EXPECT_EQ(text_settings, 4);
  EXPECT_TRUE(is_text_setting(kLastCommandLine) && is_text_setting(kFont) && is_text_setting(kDesktopPlacement) &&
              is_text_setting(kLastTypedCmd));
}

TEST_F(SettingsTest, ValuesRoundTripThroughTheFileUnderTheirKeys) {
  set_setting_int(kFindWindowX, 17);
  set_setting_int(kDesktopX, -8);  // a maximised frame sits a border left of the screen
  set_setting_text(kLastTypedCmd, "print x(3)");
  EXPECT_EQ(section()["FindWindow-X"], "17");
  EXPECT_EQ(section()["Desktop-X"], "-8");
  EXPECT_EQ(section()["LastTypedCmd"], "print x(3)");
  EXPECT_EQ(get_setting_int(kFindWindowX), 17);
  EXPECT_EQ(get_setting_int(kDesktopX), -8);
  EXPECT_EQ(get_setting_text(kLastTypedCmd), "print x(3)");

  // Nothing is cached: an edit of the file by someone else is seen at the next read.
  section()["FindWindow-X"] = "40";
  EXPECT_EQ(get_setting_int(kFindWindowX), 40);

  set_setting_text(kFont, "Lucida Console");
  EXPECT_EQ(get_setting_text(kFont), "Lucida Console");
  set_setting_text(kLastCommandLine, std::string(300, 'a'));
  EXPECT_EQ(get_setting_text(kLastCommandLine).size(), kSettingTextLimit);
  EXPECT_FALSE(last_setting_write_failed());
}

TEST_F(SettingsTest, FilePathComesFromAppDataOnceAndIsKept) {
  EXPECT_EQ(settings_file_path(), kIni);
  target.system.set_environment(L"APPDATA", L"D:\\elsewhere");
  EXPECT_EQ(settings_file_path(), kIni);

  forget_settings_file_path();
  os::InMemorySystem bare;  // no APPDATA at all
  os::set_system(&bare);
  EXPECT_EQ(settings_file_path(), "C:\\work\\vantor64.ini");
  os::set_system(&target.system);
}

TEST_F(SettingsTest, NumberOutsideTheTableIsReportedNotObeyed) {
  ConsoleMode = false;
  EXPECT_EQ(get_setting_int(kSettingCount), 0);
  EXPECT_EQ(get_setting_text(-3), "");
  set_setting_int(200, 5);
  EXPECT_TRUE(target.system.profile.empty());
#ifndef NDEBUG
  ASSERT_EQ(target.system.message_boxes.size(), 3u);
  EXPECT_EQ(target.system.message_boxes[0].text, L"Debugger failure: setting number 83 is not in the table");
#endif
}

class UnwritableSystem : public os::InMemorySystem {
 public:
  bool write_profile_string(const std::string&, const std::string&, const std::string&, const std::string&) override {
    return false;
  }
};

TEST_F(SettingsTest, WriteFailureIsRecordedAndTheDefaultStillServes) {
  UnwritableSystem read_only;
  os::set_system(&read_only);
  set_setting_int(kSourceWindowX, 9);
  EXPECT_TRUE(last_setting_write_failed());
  EXPECT_EQ(get_setting_int(kSourceWindowX), 1);
  EXPECT_TRUE(read_only.message_boxes.empty());
  os::set_system(&target.system);
  set_setting_int(kSourceWindowX, 9);
  EXPECT_FALSE(last_setting_write_failed());
}

TEST_F(SettingsTest, LibraryWithoutCellSizeStillGivesSizes) {
  library.pixels_per_h_unit = 0;
  library.pixels_per_v_unit = 0;
  EXPECT_EQ(get_setting_int(kSourceWindowH), 44 - 3);
}

TEST_F(SettingsTest, IgnoredExceptionsAreTheNonZeroHexEntriesInKeyOrder) {
  section()["IgnoreException-3"] = "c0000005";
  section()["IgnoreException-0"] = "";
  section()["IgnoreException-1"] = "zz";        // not hexadecimal
  section()["IgnoreException-10"] = "0";        // zero passes nothing
  section()["IgnoreException-40"] = "0xC0000094";
  section()["IgnoreException-255"] = "C00000FD stack";
  section()["IgnoreException-256"] = "80000001";  // beyond the keys that are read
  EXPECT_EQ(load_ignored_exceptions(), (std::vector<std::uint32_t>{0xC0000005, 0xC0000094, 0xC00000FD}));
}

TEST(ExceptionCodeText, ParsesLikeABase16Reader) {
  EXPECT_EQ(exception_code_from_text("e06d7363"), 0xE06D7363u);
  EXPECT_EQ(exception_code_from_text("0x"), 0u);
  EXPECT_EQ(exception_code_from_text("x10"), 0u);
  EXPECT_EQ(exception_code_from_text("123456789ab"), 0xFFFFFFFFu);
  EXPECT_EQ(exception_code_from_text("0X1f"), 0x1Fu);
}

TEST(DesktopPlacementText, RoundTripsTheTenFields) {
  DesktopPlacement placement{2, 3, -1, -1, -8, -8, 100, 50, 1380, 950};
  std::string text = text_from_placement(placement);
  EXPECT_EQ(text, "2,3,-1,-1,-8,-8,100,50,1380,950");
  EXPECT_EQ(placement_from_text(text), placement);
  EXPECT_FALSE(placement_from_text("2,3,-1,-1,-8,-8,100,50,1380"));
  EXPECT_FALSE(placement_from_text("2,3,-1,-1,-8,-8,100,50,1380,950,7"));
  EXPECT_FALSE(placement_from_text(""));
  EXPECT_FALSE(placement_from_text("a,b,c"));
}

}  // namespace
}  // namespace vantor::ui
