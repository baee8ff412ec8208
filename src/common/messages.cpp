#include "common/messages.h"

#include <cstdio>

#include "common/console.h"
#include "os/os.h"

namespace vantor {

bool ConsoleMode = false;
bool MessageBoxShowing = false;

namespace {

std::wstring widen(const std::string& text) { return os::system().wide_from_oem(text); }
std::string narrow(const std::wstring& text) { return os::system().oem_from_wide(text); }

int show_box(const std::wstring& text, const std::wstring& title, std::uint32_t flags) {
  MessageBoxShowing = true;
  int answer = os::system().message_box(text, title, flags);
  MessageBoxShowing = false;
  return answer;
}

}  // namespace

void ShowErrorMessage(const std::string& text, const std::string& title) {
  if (ConsoleMode) {
    console_print("%s: %s\n", title.c_str(), text.c_str());
    return;
  }
  show_box(widen(text), widen(title), os::kMbIconError | os::kMbTopmost);
}

void ShowErrorMessage(const std::wstring& text, const std::wstring& title) {
  if (ConsoleMode) {
    ShowErrorMessage(narrow(text), narrow(title));
    return;
  }
  show_box(text, title, os::kMbIconError | os::kMbTopmost);
}

void ShowInformationMessage(const std::string& text, const std::string& title) {
  if (ConsoleMode) {
    console_print("%s: %s\n", title.c_str(), text.c_str());
    return;
  }
  show_box(widen(text), widen(title), os::kMbIconInformation | os::kMbTopmost);
}

void ShowInformationMessage(const std::wstring& text, const std::wstring& title) {
  if (ConsoleMode) {
    ShowInformationMessage(narrow(text), narrow(title));
    return;
  }
  show_box(text, title, os::kMbIconInformation | os::kMbTopmost);
}

void report_assertion(const char* expression, const char* source_name, int line) {
  char text[1024];
  std::snprintf(text, sizeof text, "Assert failure: expr = %s\nfile = %s\nline = %d", expression, source_name, line);
  if (ConsoleMode) {
    console_print("Error: %s\n", text);
    return;
  }
  if (show_box(widen(text), L"Error", os::kMbOkCancel | os::kMbIconError | os::kMbTopmost) == os::kIdOk)
    os::system().end_debugger(1);
}

void report_debugger_failure(const std::string& what) { ShowErrorMessage("Debugger failure: " + what); }

}  // namespace vantor
