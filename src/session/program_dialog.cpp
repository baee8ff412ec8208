#include "session/program_dialog.h"

#include <cwctype>

#include "common/messages.h"
#include "process/user_space_buffer.h"
#include "session/startup_globals.h"
#include "ui/settings.h"
#include "winlib/window_library.h"

namespace vantor {

namespace {

constexpr std::size_t kEditBufferSize = 1024;

bool is_white(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n' || c == L'\v' || c == L'\f'; }

// The setting is stored with its double quotes as written; a "*" in it stands for one.
std::string edit_text_from_setting(std::string text) {
  for (char& c : text)
    if (c == '*') c = '"';
  return text;
}

}  // namespace

program_text split_program_text(const std::wstring& text) {
  program_text out;
  std::size_t i = 0;
  while (i < text.size() && text[i] == L' ') ++i;
  if (i < text.size() && text[i] == L'"') {
    std::size_t close = text.find(L'"', i + 1);
    if (close == std::wstring::npos) {
      out.name = text.substr(i + 1);
      i = text.size();
    } else {
      out.name = text.substr(i + 1, close - i - 1);
      i = close + 1;
    }
  } else {
    std::size_t start = i;
    while (i < text.size() && !is_white(text[i])) ++i;
    out.name = text.substr(start, i - start);
  }
  while (i < text.size() && text[i] == L' ') ++i;
  out.arguments = text.substr(i);
  return out;
}

bool ask_for_program() {
  // A console session has nobody at a dialog: it says how to name the program instead.
  if (ConsoleMode) {
    ShowErrorMessage(kConsoleUsage);
    return false;
  }
  auto& windows = winlib::window_library();
  std::string edit_text = edit_text_from_setting(ui::get_setting_text(ui::kLastCommandLine));
  for (;;) {
    if (edit_text.size() >= kEditBufferSize) edit_text.resize(kEditBufferSize - 1);
    int button = windows.program_dialog(edit_text);
    if (button == winlib::kDialogBrowse) {
      if (auto chosen = windows.browse_for_program(ProgramName)) {
        ProgramName = *chosen;
        edit_text = narrow_from_wide(*chosen);
      }
      continue;
    }
    if (button != winlib::kDialogOk) return false;
    program_text typed = split_program_text(wide_from_narrow(edit_text));
    if (typed.name.empty()) continue;
    ProgramName = typed.name;
    ProgramArguments = typed.arguments;
    return true;
  }
}

}  // namespace vantor
