#include "ui/array_window.h"

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

std::string subscripts_text(const std::vector<long long>& subscripts, bool fortran) {
  std::string text = fortran ? "(" : "";
  for (long long s : subscripts) {
    if (!fortran) text += '[';
    text += std::to_string(s);
    text += fortran ? ',' : ']';
  }
  if (fortran) {
    if (!subscripts.empty()) text.pop_back();
    text += ')';
  }
  return text;
}

array_window::array_window(producer produce, std::string expression, int frame_index)
    : frame_window(kArrayKind, "Array View", layout_settings::consecutive(kArrayWindowX), frame_index,
                   std::move(expression)),
      produce_(std::move(produce)) {}

void array_window::fill_rows(window_rows& rows) {
  contents_ = {};
  if (produce_) produce_(frame_index(), expression(), contents_);
  set_status(expression());
  if (!contents_.error.empty()) {
    contents_.elements.clear();
    rows.add(contents_.error);
    return;
  }
  if (contents_.elements.empty()) {
    rows.add("Empty");
    return;
  }
  for (const auto& element : contents_.elements)
    rows.add(subscripts_text(element.subscripts, contents_.fortran) + " = " + element.value);
}

const array_element_row* array_window::selected_element() const {
  int row = selected_row();
  return row >= 0 && row < static_cast<int>(contents_.elements.size())
             ? &contents_.elements[static_cast<std::size_t>(row)]
             : nullptr;
}

}  // namespace vantor::ui
