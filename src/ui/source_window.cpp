#include "ui/source_window.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "common/messages.h"
#include "os/os.h"
#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

namespace {
std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}
}  // namespace

std::string expand_tabs(const std::string& text, int tab_size) {
  if (tab_size < 1) tab_size = 8;
  std::string out;
  for (char c : text) {
    if (c != '\t') {
      out += c;
      continue;
    }
    do out += ' ';
    while (out.size() % static_cast<std::size_t>(tab_size) != 0);
  }
  return out;
}

source_window::source_window(source_file* file, frame_locator locate, breakpoint_test has_breakpoint)
    : source_base_window(kSourceKind, "", layout_settings::consecutive(kSourceWindowX)),
      file_(file),
      locate_(std::move(locate)),
      has_breakpoint_(std::move(has_breakpoint)) {
  update_title();
}

void source_window::update_title() {
  if (!file_) {
    set_title("Source");
    return;
  }
  const std::wstring& path = file_->full_path.empty() ? file_->recorded_name : file_->full_path;
  std::wstring name = path.substr(path.find_last_of(L"\\/") == std::wstring::npos ? 0 : path.find_last_of(L"\\/") + 1);
  set_title(os::system().oem_from_wide(name));
}

void source_window::update_status() {
  if (current_line() < 0) {
    set_status("");
    return;
  }
  char text[64];
  std::snprintf(text, sizeof text, "Line: %d, Col: %d", current_line() + 1, column_);
  set_status(text);
}

bool source_window::show_frame(int frame_index) {
  source_file* file = nullptr;
  int line = -1;
  if (!locate_ || !locate_(frame_index, file, line) || !file) return false;
  frame_index_ = frame_index;
  if (file != file_) {
    file_ = file;
    update_title();
  }
  execution_line_ = line;
  refresh();
  move_to_line(line + 1);
  return true;
}

void source_window::fill_rows(window_rows& rows) {
  if (file_) {
    int tab_size = get_setting_int(kTextTabSize);
    int number = 0;
    for (const auto& line : file_->lines) {
      ++number;
      bool breakpoint = has_breakpoint_ && has_breakpoint_(*file_, number);
      bool stopped = number - 1 == execution_line_;
      char gutter[16];
      std::snprintf(gutter, sizeof gutter, "%5d%c%c ", number, breakpoint ? '*' : ' ', stopped ? '>' : ' ');
      rows.add(gutter + expand_tabs(line.text, tab_size),
               stopped ? kRowCurrent : breakpoint ? kRowBreakpoint : kRowPlain);
    }
  }
  update_status();
}

bool source_window::move_to_line(int line_number) {
  if (line_number < 1 || line_number > row_count()) return false;
  select_row(line_number - 1);
  update_status();
  redraw();
  return true;
}

bool source_window::search(bool backwards) {
  if (!file_ || search_text_.empty()) return false;
  std::string wanted = lower(search_text_);
  int count = static_cast<int>(file_->lines.size());
  int step = backwards ? -1 : 1;
  for (int line = current_line() + step; line >= 0 && line < count; line += step) {
    if (lower(file_->lines[static_cast<std::size_t>(line)].text).find(wanted) != std::string::npos)
      return move_to_line(line + 1);
  }
  ShowInformationMessage("Search string not found");
  return false;
}

bool source_window::handle_command(int code) {
  switch (code) {
    case kCommandLineUp:
      move_selection(-1);
      break;
    case kCommandLineDown:
      move_selection(1);
      break;
    case kCommandPageUp:
      move_selection(-visible_rows());
      break;
    case kCommandPageDown:
      move_selection(visible_rows());
      break;
    case kCommandFirstRow:
      move_selection(-row_count());
      break;
    case kCommandLastRow:
      move_selection(row_count());
      break;
    case kCommandSearchForward:
      return search(false);
    case kCommandSearchBackward:
      return search(true);
    default:
      return false;
  }
  update_status();
  redraw();
  return true;
}

bool source_window::handle_popup_choice(int choice) {
  auto& library = winlib::window_library();
  switch (choice) {
    case kPopupGotoOrigin:
      if (execution_line_ >= 0) move_to_line(execution_line_ + 1);
      return true;
    case kPopupGotoLine:
      if (auto line = library.prompt_number("Goto", "Goto line:", location().x, location().y, 20))
        if (*line >= 1 && *line <= row_count()) move_to_line(static_cast<int>(*line));
      return true;
    case kPopupSearch:
      if (auto text = library.prompt_text("Search", "Search for:", location().x, location().y, 30)) {
        search_text_ = *text;
        search(false);
      }
      return true;
    case kPopupSearchAgain:
      search(false);
      return true;
    default:
      return false;
  }
}

}  // namespace vantor::ui
