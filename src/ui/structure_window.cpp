#include "ui/structure_window.h"

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

std::string member_expression(const std::string& structure, const std::string& member, bool fortran) {
  return "(" + structure + ")" + (fortran ? "%" : ".") + member;
}

std::string pointer_target_expression(const std::string& pointer) { return "*(" + pointer + ")"; }

structure_window::structure_window(producer produce, std::string expression, int frame_index)
    : frame_window(kStructureKind, "Structure View", layout_settings::consecutive(kStructureWindowX), frame_index,
                   std::move(expression)),
      produce_(std::move(produce)) {}

void structure_window::fill_rows(window_rows& rows) {
  contents_ = {};
  if (produce_) produce_(frame_index(), expression(), contents_);
  set_status(expression());
  if (!contents_.error.empty()) {
    contents_.members.clear();
    rows.add(contents_.error);
    return;
  }
  for (const auto& member : contents_.members)
    rows.add(member_expression(expression(), member.name, contents_.fortran) + " = " + member.value);
}

std::string structure_window::selected_member_expression() const {
  int row = selected_row();
  if (row < 0 || row >= static_cast<int>(contents_.members.size())) return {};
  return member_expression(expression(), contents_.members[static_cast<std::size_t>(row)].name, contents_.fortran);
}

}  // namespace vantor::ui
