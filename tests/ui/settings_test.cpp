// The settings file: defaults from the main window, values under their keys, the file's
// place, failures, and the texts stored in it (exception codes, the desktop placement).
#include "ui/settings.h"

#include "common/messages.h"
#include "ui/desktop_placement.h"
#include "ui/ignored_exceptions.h"
#include "ui/window_test.h"

namespace vantor::ui {
namespace {

using SettingsTest = WindowTest;  // 1024 x 768 client, 8 x 16 cells: W 127, H 44

TEST_F(SettingsTest, WithNoFileEveryWindowOpensWhereTheMainWindowSizeSays) {
  EXPECT_EQ(main_window_units().width, 127);
  EXPECT_EQ(main_window_units().height, 44);
  EXPECT_EQ(get_setting_int(kSourceWindowW), 3 * 127 / 4 - 8);
  EXPECT_EQ(get_setting_int(kSourceWindowH), 44 - 3);
  EXPECT_EQ(get_setting_int(kStackWindowX), 3 * 127 / 4 - 1);
  EXPECT_EQ(get_setting_int(kVariablesWindowW), 127 / 4 - 2);
  EXPECT_EQ(get_setting_int(kBreakpointsWindowY), 44 - 10);
  EXPECT_EQ(get_setting_int(kDesktopW), 1024);  // four fifths of 1280
  EXPECT_EQ(get_setting_int(kDesktopH), 819);   // of 1024, rounded down

  // The defaults follow the main window as it is when asked, not as it was.
  library.client = {808, 600};  // 100 x 33 character units
  EXPECT_EQ(get_setting_int(kSourceWindowW), 67);
  EXPECT_EQ(get_setting_int(kAsmWindowH), 29);
  // A library that knows no cell size still gives sizes.
  library.pixels_per_h_unit = 0;
  library.pixels_per_v_unit = 0;
  EXPECT_EQ(get_setting_int(kSourceWindowH), 33 - 3);
  EXPECT_TRUE(target.system.profile.empty()) << "reading must not create keys";
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
  EXPECT_EQ(exception_code_from_text("x10"), 0u);
  EXPECT_EQ(exception_code_from_text("123456789ab"), 0xFFFFFFFFu);
  EXPECT_EQ(exception_code_from_text("0X1f"), 0x1Fu);
}

TEST(DesktopPlacementText, RoundTripsTheTenFields) {
  DesktopPlacement placement{2, 3, -1, -1, -8, -8, 100, 50, 1380, 950};
  std::string text = text_from_placement(placement);
  EXPECT_EQ(text, "2,3,-1,-1,-8,-8,100,50,1380,950");
  EXPECT_EQ(placement_from_text(text), placement);
  for (const char* bad : {"2,3,-1,-1,-8,-8,100,50,1380", "2,3,-1,-1,-8,-8,100,50,1380,950,7", "", "a,b,c"})
    EXPECT_FALSE(placement_from_text(bad)) << bad;
}

}  // namespace
}  // namespace vantor::ui
