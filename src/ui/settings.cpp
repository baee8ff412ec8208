#include "ui/settings.h"

#include <optional>

#include "common/messages.h"
#include "os/os.h"
#include "winlib/headless_library.h"
#include "winlib/window_library.h"

namespace vantor::ui {

namespace {

// How a key's default is worked out. Sizes that follow the main window are kept as
// formulas because the main window can be resized between two reads.
enum class DefaultForm {
  kFixed,               // value
  kText,                // a text setting; its integer default is 0
  kThreeQuartersWidth,  // 3W/4 + value
  kQuarterWidth,        // W/4 + value
  kHeight,              // H + value
  kScreenWidth,         // four fifths of the screen's width
  kScreenHeight,        // four fifths of the screen's height
};

struct SettingKey {
  const char* name;
  DefaultForm form;
  int value;
};

using F = DefaultForm;
constexpr SettingKey kKeys[kSettingCount] = {
    {"SourceWindow-X", F::kFixed, 1},
    {"SourceWindow-Y", F::kFixed, 1},
    {"SourceWindow-W", F::kThreeQuartersWidth, -8},
    {"SourceWindow-H", F::kHeight, -3},
    {"StackWindow-X", F::kThreeQuartersWidth, -1},
    {"StackWindow-Y", F::kFixed, 1},
    {"StackWindow-W", F::kQuarterWidth, -2},
    {"StackWindow-H", F::kFixed, 8},
    {"VariablesWindow-X", F::kThreeQuartersWidth, -1},
    {"VariablesWindow-Y", F::kFixed, 13},
    {"VariablesWindow-W", F::kQuarterWidth, -2},
    {"VariablesWindow-H", F::kHeight, -15},
    {"AsmWindow-X", F::kFixed, 5},
    {"AsmWindow-Y", F::kFixed, 2},
    {"AsmWindow-W", F::kFixed, 70},
    {"AsmWindow-H", F::kHeight, -4},
    {"FindWindow-X", F::kFixed, 5},
    {"FindWindow-Y", F::kFixed, 5},
    {"FindWindow-W", F::kFixed, 32},
    {"FindWindow-H", F::kFixed, 8},
    {"BreakpointsWindow-X", F::kFixed, 5},
    {"BreakpointsWindow-Y", F::kHeight, -10},
    {"BreakpointsWindow-W", F::kFixed, 85},
    {"BreakpointsWindow-H", F::kFixed, 7},
    {"MemDumpWindow-X", F::kFixed, 2},
    {"MemDumpWindow-Y", F::kFixed, 2},
    {"MemDumpWindow-BytesWide", F::kFixed, 16},
    {"RegsWindow-X", F::kFixed, 25},
    {"RegsWindow-Y", F::kFixed, 7},
    {"Desktop-X", F::kFixed, 20},
    {"Desktop-Y", F::kFixed, 20},
    {"Desktop-W", F::kScreenWidth, 0},
    {"Desktop-H", F::kScreenHeight, 0},
    {"MDIContainer", F::kFixed, 1},
    {"BubbleHelp", F::kFixed, 1},
    {"AlwaysOpenVarList", F::kFixed, 1},
    {"ExpressionWindow-X", F::kFixed, 1},
    {"ExpressionWindow-Y", F::kFixed, 1},
    {"ExpressionWindow-W", F::kFixed, 30},
    {"ExpressionWindow-H", F::kFixed, 1},
    {"StructureWindow-X", F::kFixed, 1},
    {"StructureWindow-Y", F::kFixed, 1},
    {"StructureWindow-W", F::kFixed, 30},
    {"StructureWindow-H", F::kFixed, 12},
    {"ArrayWindow-X", F::kFixed, 1},
    {"ArrayWindow-Y", F::kFixed, 1},
    {"ArrayWindow-W", F::kFixed, 30},
    {"ArrayWindow-H", F::kFixed, 12},
    {"SortVarList", F::kFixed, 1},
    {"ShowParametersInVarList", F::kFixed, 1},
    {"StreamWindow-X", F::kFixed, 8},
    {"StreamWindow-Y", F::kFixed, 9},
    {"StreamWindow-W", F::kFixed, 60},
    {"StreamWindow-H", F::kFixed, 7},
    {"UseOneSourceFile", F::kFixed, 0},
    {"LastCommandLine", F::kText, 0},
    {"ShowTips", F::kFixed, 1},
    {"NextTip", F::kFixed, 0},
    {"DesktopMaximised", F::kFixed, 0},
    {"StreamsWindow-X", F::kFixed, 7},
    {"StreamsWindow-Y", F::kFixed, 6},
    {"StreamsWindow-W", F::kFixed, 60},
    {"StreamsWindow-H", F::kFixed, 7},
    {"VariableTips", F::kFixed, 1},
    {"RecordEvents", F::kFixed, 1},
    {"HideTornlibC", F::kFixed, 1},
    {"Font", F::kText, 0},
    {"FontSize", F::kFixed, 12},
    {"FontBold", F::kFixed, 0},
    {"FontItalic", F::kFixed, 0},
    {"StringWindow-X", F::kFixed, 1},
    {"StringWindow-Y", F::kFixed, 1},
    {"StringWindow-W", F::kFixed, 30},
    {"StringWindow-H", F::kFixed, 5},
    {"WatchWindow-X", F::kFixed, 7},
    {"WatchWindow-Y", F::kFixed, 6},
    {"WatchWindow-W", F::kFixed, 60},
    {"WatchWindow-H", F::kFixed, 7},
    {"OldColours", F::kFixed, 0},
    {"SavePositionOnExit", F::kFixed, 0},
    {"DesktopPlacement", F::kText, 0},
    {"TextTabSize", F::kFixed, 8},
    {"LastTypedCmd", F::kText, 0},
};

bool in_table(int number) { return number >= 0 && number < kSettingCount; }

int default_value(const SettingKey& key) {
  switch (key.form) {
    case F::kFixed:
      return key.value;
    case F::kText:
      return 0;
    case F::kThreeQuartersWidth:
      return 3 * main_window_units().width / 4 + key.value;
    case F::kQuarterWidth:
      return main_window_units().width / 4 + key.value;
    case F::kHeight:
      return main_window_units().height + key.value;
    case F::kScreenWidth:
      return winlib::window_library().screen_size().width * 4 / 5;
    case F::kScreenHeight:
      return winlib::window_library().screen_size().height * 4 / 5;
  }
  return 0;
}

void report_bad_number(int number) {
#ifndef NDEBUG
  report_debugger_failure("setting number " + std::to_string(number) + " is not in the table");
#else
  (void)number;
#endif
}

std::optional<std::string> cached_path;
bool write_failed = false;

void write_setting(int number, const std::string& text) {
  if (!in_table(number)) {
    report_bad_number(number);
    return;
  }
  write_failed = !os::system().write_profile_string(kSettingsSection, kKeys[number].name, text, settings_file_path());
}

}  // namespace

std::string setting_key_name(int number) { return in_table(number) ? kKeys[number].name : ""; }

bool is_text_setting(int number) { return in_table(number) && kKeys[number].form == F::kText; }

MainWindowUnits main_window_units() {
  auto& library = winlib::window_library();
  std::int64_t per_h = library.info("PIXELS_PER_H_UNIT");
  std::int64_t per_v = library.info("PIXELS_PER_V_UNIT");
  winlib::PixelSize client = library.main_client_size();
  if (per_h <= 0 || per_v <= 0) {
    // A library that cannot say how big a character is has no main window yet: measure
    // as a headless session does rather than divide by nothing.
    per_h = winlib::HeadlessLibrary::kPixelsPerHUnit;
    per_v = winlib::HeadlessLibrary::kPixelsPerVUnit;
  }
  return {static_cast<int>(client.width / per_h - 1), static_cast<int>(client.height / per_v - 4)};
}

int get_setting_int(int number) {
  if (!in_table(number)) {
    report_bad_number(number);
    return 0;
  }
  const SettingKey& key = kKeys[number];
  auto fallback = static_cast<std::uint32_t>(default_value(key));
  return static_cast<int>(os::system().profile_int(kSettingsSection, key.name, fallback, settings_file_path()));
}

std::string get_setting_text(int number) {
  if (!in_table(number)) {
    report_bad_number(number);
    return {};
  }
  std::string fallback = number == kFont ? "Courier New" : "";
  return os::system().profile_string(kSettingsSection, kKeys[number].name, fallback, kSettingTextLimit + 1,
                                     settings_file_path());
}

void set_setting_int(int number, int value) { write_setting(number, std::to_string(value)); }

void set_setting_text(int number, const std::string& text) { write_setting(number, text); }

bool last_setting_write_failed() { return write_failed; }

const std::string& settings_file_path() {
  if (!cached_path) {
    auto& system = os::system();
    std::wstring folder = system.environment(L"APPDATA").value_or(system.current_directory());
    cached_path = system.oem_from_wide(folder) + "\\vantor64.ini";
  }
  return *cached_path;
}

void forget_settings_file_path() { cached_path.reset(); }

}  // namespace vantor::ui
