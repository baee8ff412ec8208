// The debugger's message boxes, and their one-line console form.
#pragma once

#include <string>

namespace vantor {

// Error and information messages go to standard output as "%s: %s\n" instead of boxes.
extern bool ConsoleMode;
// True while a message box is up.
extern bool MessageBoxShowing;

void ShowErrorMessage(const std::string& text, const std::string& title = "Error");
void ShowErrorMessage(const std::wstring& text, const std::wstring& title = L"Error");
void ShowInformationMessage(const std::string& text, const std::string& title = "Information");
void ShowInformationMessage(const std::wstring& text, const std::wstring& title = L"Information");

// Broken internal invariant: "Assert failure: expr = %s\nfile = %s\nline = %d" in a box
// titled "Error" with OK and Cancel. OK ends the debugger; Cancel carries on. In console
// mode the text is printed and the session carries on, so a batch run is never left
// waiting for a button nobody can press.
void report_assertion(const char* expression, const char* source_name, int line);

// Any other internal failure: "Debugger failure: %s".
void report_debugger_failure(const std::string& what);

}  // namespace vantor

// Checks an invariant; `source_name` is the owning class's name (e.g. "UserSpaceBuffer").
#define VANTOR_ASSERT(condition, text, source_name) \
  do {                                              \
    if (!(condition)) ::vantor::report_assertion(text, source_name, __LINE__); \
  } while (0)
