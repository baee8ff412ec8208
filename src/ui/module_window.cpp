#include "ui/module_window.h"

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

module_window::module_window(row_producer producer)
    : produced_list_window(kModulesKind, "Modules", layout_settings{}, std::move(producer)) {}

}  // namespace vantor::ui
