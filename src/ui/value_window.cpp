#include "ui/value_window.h"

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

// Its size is its inside: a one-line window with no frame.
value_window::value_window(producer produce, std::string expression, int frame_index)
    : frame_window(kInspectorKind, expression, layout_settings::consecutive(kExpressionWindowX), frame_index,
                   expression, LayoutKind::kPlain),
      produce_(std::move(produce)) {}

void value_window::fill_rows(window_rows& rows) {
  if (produce_) produce_(frame_index(), expression(), rows);
}

}  // namespace vantor::ui
