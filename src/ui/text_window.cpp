#include "ui/text_window.h"

#include <algorithm>
#include <cctype>

#include "common/console.h"
#include "os/os.h"
#include "ui/settings.h"

namespace vantor::ui {

text_window::text_window(int kind, std::string title, layout_settings settings, LayoutKind layout)
    : kind_(kind), title_(std::move(title)), settings_(settings), layout_kind_(layout) {}

text_window::~text_window() = default;

void text_window::set_location(const winlib::WindowLocation& location) {
  location_ = location;
  set_visible_size(location.height, location.width);
}

void text_window::place_from_settings() {
  winlib::WindowLocation place = location_;
  if (settings_.x != kNoSetting) place.x = get_setting_int(settings_.x);
  if (settings_.y != kNoSetting) place.y = get_setting_int(settings_.y);
  if (settings_.width != kNoSetting) place.width = get_setting_int(settings_.width);
  if (settings_.height != kNoSetting) place.height = get_setting_int(settings_.height);
  set_location(place);
}

int text_window::row_attribute(int row) const {
  if (row < 0 || row >= static_cast<int>(rows_.attributes.size())) return kRowPlain;
  return rows_.attributes[static_cast<std::size_t>(row)];
}

void text_window::set_visible_size(int rows, int columns) {
  visible_rows_ = std::max(rows, 1);
  visible_columns_ = std::max(columns, 1);
  scroll_to(first_visible_row_);
}

void text_window::scroll_to(int first_row) {
  int last_first = std::max(row_count() - visible_rows_, 0);
  first_visible_row_ = std::clamp(first_row, 0, last_first);
}

void text_window::select_row(int row) {
  if (row < 0 || row_count() == 0) {
    selected_row_ = -1;
    return;
  }
  selected_row_ = std::min(row, row_count() - 1);
  if (selected_row_ < first_visible_row_)
    scroll_to(selected_row_);
  else if (selected_row_ >= first_visible_row_ + visible_rows_)
    scroll_to(selected_row_ - visible_rows_ + 1);
}

void text_window::move_selection(int delta) {
  if (row_count() == 0) return;
  int from = selected_row_ < 0 ? (delta > 0 ? -1 : row_count()) : selected_row_;
  select_row(std::clamp(from + delta, 0, row_count() - 1));
}

void text_window::build() {
  view_ = winlib::window_library().open_view(*this);
  refresh();
}

void text_window::raise() {
  if (view_) view_->bring_to_front();
}

bool text_window::update_location_from_view() {
  if (!view_) return false;
  auto where = view_->location();
  if (!where) return false;
  location_ = *where;
  return true;
}

void text_window::refresh() {
  rows_.clear();
  fill_rows(rows_);
  rows_.attributes.resize(rows_.text.size(), kRowPlain);
  keep_selection_in_rows();
  redraw();
}

void text_window::keep_selection_in_rows() {
  if (selected_row_ >= row_count()) selected_row_ = row_count() - 1;
  scroll_to(first_visible_row_);
}

void text_window::redraw() {
  if (view_) view_->redraw();
}

bool text_window::handle_popup_choice(int) { return false; }

std::string text_window::tip_text(int, int) { return {}; }

bool text_window::handle_command(int) { return false; }

std::string text_window::contents_text() const {
  std::string text = title_ + "\n";
  if (!status_.empty()) text += status_ + "\n";
  for (const auto& row : rows_.text) text += row + "\n";
  return text;
}

void text_window::dump_to_console() const { console_write(contents_text().c_str()); }

std::string text_window::contents_file_name() const {
  std::string name;
  for (char c : title_)
    if (std::isalnum(static_cast<unsigned char>(c))) name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return (name.empty() ? "window" : name) + ".txt";
}

bool text_window::save_contents(const std::wstring& path) const {
  std::string text;
  for (const auto& line : saved_lines()) text += line + "\n";
  return os::system().write_file(path, text);
}

}  // namespace vantor::ui
