#include "commands/typed_command.h"

#include <cctype>
#include <cstdlib>

#include "commands/command_host.h"
#include "commands/execute_command.h"
#include "common/messages.h"
#include "ui/assembler_window.h"
#include "ui/settings.h"
#include "ui/source_window.h"
#include "ui/stack_window.h"
#include "ui/window_kinds.h"
#include "ui/window_list.h"
#include "winlib/window_library.h"

namespace vantor {

namespace {

// Where a window that a typed "print" opens is placed.
constexpr int kTypedWindowX = 4;
constexpr int kTypedWindowY = 4;

std::vector<std::string> History;

bool letter_is(char c, char letter) { return std::tolower(static_cast<unsigned char>(c)) == letter; }

bool starts_with_ignoring_case(const std::string& text, const char* prefix) {
  std::size_t i = 0;
  for (; prefix[i] != '\0'; ++i)
    if (i >= text.size() || !letter_is(text[i], prefix[i])) return false;
  return true;
}

void remember(const std::string& text) {
  if (History.empty() || History.front() != text) {
    History.insert(History.begin(), text);
    if (History.size() > kCommandHistorySize) History.pop_back();
  }
  ui::set_setting_text(ui::kLastTypedCmd, text);
}

// The forms that search and move the source window in front. False when the text is
// none of them.
bool source_window_form(const std::string& text) {
  auto* source = ui::OpenWindows.find_first_of<ui::source_window>(ui::kSourceKind);
  if (!source) return false;
  if (text.size() >= 2 && letter_is(text[0], 'l') && text[1] == '/') {
    source->set_search_text(text.substr(2));
    source->search(false);
    return true;
  }
  if (text.size() >= 3 && letter_is(text[0], 'b') && letter_is(text[1], 'l') && text[2] == '/') {
    source->set_search_text(text.substr(3));
    source->search(true);
    return true;
  }
  if (starts_with_ignoring_case(text, "moveto ")) {
    source->move_to_line(std::atoi(text.c_str() + 7));
    return true;
  }
  return false;
}

}  // namespace

const std::vector<std::string>& command_history() { return History; }
void clear_command_history() { History.clear(); }

bool open_command_dialog(std::string& text) {
  winlib::ModalDialogActive = true;
  auto entered = winlib::window_library().command_dialog(text, History);
  winlib::ModalDialogActive = false;
  if (!entered || entered->empty()) return false;
  text = *entered;
  return true;
}

void typed_command(char first_char) {
  std::string text = first_char ? std::string(1, first_char) : ui::get_setting_text(ui::kLastTypedCmd);
  if (!open_command_dialog(text)) return;
  remember(text);
  run_typed_line(text);
}

void run_typed_line(const std::string& text) {
  StackFrame* name_space = current_name_space();
  if (source_window_form(text)) return;
  if (starts_with_ignoring_case(text, "profile")) {
    ShowInformationMessage("profile is not available");
    return;
  }
  if (execute_command(text, name_space, kTypedWindowX, kTypedWindowY) == kCommandNotKnown)
    ShowErrorMessage("Command not known");
}

StackFrame* current_name_space() {
  for (ui::text_window* window : ui::OpenWindows.from_front()) {
    switch (window->kind()) {
      case ui::kSourceKind:
        if (auto* source = dynamic_cast<ui::source_window*>(window)) return frame_at(source->frame_index());
        break;
      case ui::kStackKind:
        if (auto* stack = dynamic_cast<ui::stack_window*>(window)) return frame_at(stack->selected_frame());
        break;
      case ui::kAssemblerKind:
        if (auto* code = dynamic_cast<ui::assembler_window*>(window); code && code->shows_current_frame())
          return frame_at(code->frame_index());
        break;
      default: break;
    }
  }
  return nullptr;
}

}  // namespace vantor
