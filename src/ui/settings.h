// The user's preferences and the remembered places of the debugger's windows, kept in one
// private profile file under the user's application-data folder. A setting is addressed
// by its number, which indexes a fixed table of keys; nothing but the file's path is
// cached, so a value written is what the next read sees.
#pragma once

#include <cstddef>
#include <string>

namespace vantor::ui {

// Setting numbers, in table order.
enum Setting : int {
  kSourceWindowX = 0,
  kSourceWindowY = 1,
  kSourceWindowW = 2,
  kSourceWindowH = 3,
  kStackWindowX = 4,
  kStackWindowY = 5,
  kStackWindowW = 6,
  kStackWindowH = 7,
  kVariablesWindowX = 8,
  kVariablesWindowY = 9,
  kVariablesWindowW = 10,
  kVariablesWindowH = 11,
  kAsmWindowX = 12,
  kAsmWindowY = 13,
  kAsmWindowW = 14,
  kAsmWindowH = 15,
  kFindWindowX = 16,
  kFindWindowY = 17,
  kFindWindowW = 18,
  kFindWindowH = 19,
  kBreakpointsWindowX = 20,
  kBreakpointsWindowY = 21,
  kBreakpointsWindowW = 22,
  kBreakpointsWindowH = 23,
  kMemDumpWindowX = 24,
  kMemDumpWindowY = 25,
  kMemDumpWindowBytesWide = 26,
  kRegsWindowX = 27,
  kRegsWindowY = 28,
  kDesktopX = 29,
  kDesktopY = 30,
  kDesktopW = 31,
  kDesktopH = 32,
  kMDIContainer = 33,
  kBubbleHelp = 34,
  kAlwaysOpenVarList = 35,
  kExpressionWindowX = 36,
  kExpressionWindowY = 37,
  kExpressionWindowW = 38,
  kExpressionWindowH = 39,
  kStructureWindowX = 40,
  kStructureWindowY = 41,
  kStructureWindowW = 42,
  kStructureWindowH = 43,
  kArrayWindowX = 44,
  kArrayWindowY = 45,
  kArrayWindowW = 46,
  kArrayWindowH = 47,
  kSortVarList = 48,
  kShowParametersInVarList = 49,
  kStreamWindowX = 50,
  kStreamWindowY = 51,
  kStreamWindowW = 52,
  kStreamWindowH = 53,
  kUseOneSourceFile = 54,
  kLastCommandLine = 55,
  kShowTips = 56,
  kNextTip = 57,
  kDesktopMaximised = 58,
  kStreamsWindowX = 59,
  kStreamsWindowY = 60,
  kStreamsWindowW = 61,
  kStreamsWindowH = 62,
  kVariableTips = 63,
  kRecordEvents = 64,
  kHideTornlibC = 65,
  kFont = 66,
  kFontSize = 67,
  kFontBold = 68,
  kFontItalic = 69,
  kStringWindowX = 70,
  kStringWindowY = 71,
  kStringWindowW = 72,
  kStringWindowH = 73,
  kWatchWindowX = 74,
  kWatchWindowY = 75,
  kWatchWindowW = 76,
  kWatchWindowH = 77,
  kOldColours = 78,
  kSavePositionOnExit = 79,
  kDesktopPlacement = 80,
  kTextTabSize = 81,
  kLastTypedCmd = 82,
};

constexpr int kSettingCount = 83;
// The section of the profile file that holds every key.
inline constexpr const char* kSettingsSection = "Debugger-Win32";
// Text settings are read into this many characters at most.
constexpr std::size_t kSettingTextLimit = 255;

// The key text of a setting; empty for a number outside the table.
std::string setting_key_name(int number);
bool is_text_setting(int number);

// The stored value, or the table's default when the file or key is absent. Defaults that
// depend on the main window are worked out from its size at the time of the call.
// A number outside the table is a programming error: it is reported and yields 0.
int get_setting_int(int number);
// Text of at most kSettingTextLimit characters; absent gives "" ("Courier New" for Font).
std::string get_setting_text(int number);

// Failures to write are remembered (last_setting_write_failed) and otherwise ignored:
// losing a preference must never stop a debugging session.
void set_setting_int(int number, int value);
void set_setting_text(int number, const std::string& text);
bool last_setting_write_failed();

// "%s\vantor64.ini" in the folder named by APPDATA (the current directory when APPDATA
// is not set), worked out on first use and kept.
const std::string& settings_file_path();
// Forgets the cached path: for when the OS layer under it is replaced.
void forget_settings_file_path();

// The main window's client area in character units, from which the size defaults follow.
struct MainWindowUnits {
  int width = 0;
  int height = 0;
};
MainWindowUnits main_window_units();

}  // namespace vantor::ui
