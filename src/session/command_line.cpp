#include "session/command_line.h"

#include <cstdlib>
#include <initializer_list>

#include "common/console.h"
#include "common/messages.h"
#include "process/user_space_buffer.h"
#include "session/startup_globals.h"

namespace vantor {

namespace {

constexpr int kStatusBadPathOrVersion = 1;
constexpr int kStatusBadRunToOrScript = 2;
constexpr int kStatusUnexpectedSwitch = 3;
constexpr int kStatusTwoProgramNames = 4;

bool is_digit(wchar_t c) { return c >= L'0' && c <= L'9'; }
bool is_letter(wchar_t c) { return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z'); }
wchar_t lower(wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c; }

bool same_ignoring_case(const std::wstring& argument, const wchar_t* name) {
  std::size_t i = 0;
  for (; i < argument.size() && name[i] != L'\0'; ++i)
    if (lower(argument[i]) != name[i]) return false;
  return i == argument.size() && name[i] == L'\0';
}

bool is_switch(const std::wstring& argument, std::initializer_list<const wchar_t*> names) {
  for (const wchar_t* name : names)
    if (same_ignoring_case(argument, name)) return true;
  return false;
}

// Leading decimal digits, as atoi reads them.
std::int32_t integer_value(const std::wstring& text) { return std::atoi(narrow_from_wide(text).c_str()); }

class Parser {
 public:
  explicit Parser(const std::vector<std::wstring>& arguments) : args_(arguments) {}

  std::optional<int> parse() {
    while (next_ < args_.size()) {
      const std::wstring& argument = args_[next_++];
      std::optional<int> status;
      if (is_switch(argument, {L"/params", L"/p"})) {
        take_program_arguments();
        return std::nullopt;
      }
      if (is_switch(argument, {L"/sourcepath", L"/sp"}))
        status = take_source_path();
      else if (is_switch(argument, {L"/rdc_dump"}))
        RdcDumpMode = true;
      else if (is_switch(argument, {L"/rdc_debug"}))
        RdcDebugMode = true;
      else if (is_switch(argument, {L"/show_ods"}))
        ShowOdsMode = true;
      else if (is_switch(argument, {L"/showall"}))
        ShowAllMode = true;
      else if (is_switch(argument, {L"/no_hide_tornlibc", L"/nhs"}))
        HideTornlibC = false;
      else if (is_switch(argument, {L"/silent"}))
        SilentMode = true;
      else if (is_switch(argument, {L"/runto"}))
        status = take_run_to();
      else if (is_switch(argument, {L"/testsuite"}))
        take_test_suite();
      else if (is_switch(argument, {L"/version", L"/ver", L"/v"})) {
        console_print("%s\n%s\n", kVersionBanner, kVersionSecondLine);
        status = kStatusBadPathOrVersion;
      } else if (is_switch(argument, {L"/console"}))
        ConsoleMode = true;
      else if (is_switch(argument, {L"/dump_lines"}))
        DumpLinesMode = true;
      else if (is_switch(argument, {L"/script"}))
        status = take_script();
      else if (!argument.empty() && argument[0] == L'/') {
        ShowErrorMessage(L"VANTOR64 version 8.50: Unexpected switch " + argument);
        status = kStatusUnexpectedSwitch;
      } else if (!ProgramName.empty()) {
        ShowErrorMessage("Multiple program names given");
        status = kStatusTwoProgramNames;
      } else {
        ProgramName = argument;
      }
      if (status) return status;
    }
    return std::nullopt;
  }

 private:
  bool more() const { return next_ < args_.size(); }

  void take_program_arguments() {
    std::wstring joined;
    for (; next_ < args_.size(); ++next_) {
      if (!joined.empty()) joined += L' ';
      joined += quoted_argument(args_[next_]);
    }
    ProgramArguments = joined;
  }

  std::optional<int> take_source_path() {
    if (!more()) {
      ShowErrorMessage("Expected a path after /sourcepath.");
      return kStatusBadPathOrVersion;
    }
    SourcePath = args_[next_++];
    return std::nullopt;
  }

  std::optional<int> take_run_to() {
    if (!more()) {
      ShowErrorMessage("No information after /runto. Expected a filename and line_number");
      return kStatusBadRunToOrScript;
    }
    const std::wstring& file = args_[next_++];
    if (!file.empty() && is_digit(file[0])) {
      ShowErrorMessage("Syntax is /runto sourcefile linenumber");
      return kStatusBadRunToOrScript;
    }
    RunToFile = narrow_from_wide(file);
    if (!more()) {
      ShowErrorMessage("You must give a filename and a line_number after /runto");
      return kStatusBadRunToOrScript;
    }
    RunToLine = integer_value(args_[next_++]);
    // A run-to session never opens the main window.
    SilentMode = true;
    return std::nullopt;
  }

  void take_test_suite() {
    TestSuiteMode = true;
    while (more() && !(args_[next_].size() > 0 && args_[next_][0] == L'/')) {
      const std::wstring& item = args_[next_++];
      if (item.empty()) continue;
      if (is_digit(item[0])) {
        // The table holds 50 entries; lines beyond that are not watched.
        if (TestSuiteEntries.size() < kMaxTestSuiteEntries)
          TestSuiteEntries.push_back({integer_value(item), {}});
        else
          dropping_entry_ = true;
        continue;
      }
      if (is_letter(item[0]) && !TestSuiteEntries.empty() && !dropping_entry_)
        TestSuiteEntries.back().items.push_back(narrow_from_wide(item));
    }
  }

  std::optional<int> take_script() {
    if (!more()) {
      ShowErrorMessage("No file after /script. Expected a filename");
      return kStatusBadRunToOrScript;
    }
    ScriptFile = args_[next_++];
    return std::nullopt;
  }

  const std::vector<std::wstring>& args_;
  std::size_t next_ = 0;
  bool dropping_entry_ = false;
};

}  // namespace

std::optional<int> parse_command_line(const std::vector<std::wstring>& arguments) {
  return Parser(arguments).parse();
}

std::wstring quoted_argument(const std::wstring& argument) {
  return argument.find(L' ') == std::wstring::npos ? argument : L"\"" + argument + L"\"";
}

}  // namespace vantor
