#include "ui/vars_window.h"

#include <algorithm>
#include <cctype>

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

namespace {
bool name_before(const variable_row& a, const variable_row& b) {
  return std::lexicographical_compare(a.name.begin(), a.name.end(), b.name.begin(), b.name.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) < std::tolower(static_cast<unsigned char>(y));
  });
}
}  // namespace

vars_window::vars_window(producer produce, int frame_index)
    : scrolling_window(kVariablesKind, "Variables", layout_settings::consecutive(kVariablesWindowX)),
      produce_(std::move(produce)),
      frame_index_(frame_index) {}

void vars_window::show_frame(int frame_index) {
  frame_index_ = frame_index;
  select_row(-1);
  scroll_to(0);
  refresh();
}

void vars_window::fill_rows(window_rows& rows) {
  shown_.clear();
  std::string routine;
  std::vector<variable_row> variables;
  bool have_frame = produce_ && produce_(frame_index_, routine, variables);
  set_status(have_frame ? "Variables: " + routine : "");
  bool show_parameters = get_setting_int(kShowParametersInVarList) != 0;
  for (auto& variable : variables)
    if (show_parameters || !variable.is_parameter) shown_.push_back(std::move(variable));
  // Stable, so that equal names (a Fortran name in two cases) keep the frame's order.
  if (get_setting_int(kSortVarList)) std::stable_sort(shown_.begin(), shown_.end(), name_before);
  if (shown_.empty()) {
    rows.add("No Variables");
    return;
  }
  for (const auto& variable : shown_) rows.add(variable.name + " = " + variable.value);
}

const variable_row* vars_window::selected_variable() const {
  int row = selected_row();
  return row >= 0 && row < static_cast<int>(shown_.size()) ? &shown_[static_cast<std::size_t>(row)] : nullptr;
}

std::vector<std::string> vars_window::saved_lines() const {
  std::vector<std::string> lines;
  for (const auto& variable : shown_) lines.push_back(variable.name + " = " + variable.value);
  return lines;
}

}  // namespace vantor::ui
