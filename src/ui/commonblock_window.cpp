#include "ui/commonblock_window.h"

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

commonblock_window::commonblock_window(row_producer producer)
    : produced_list_window(kCommonBlocksKind, "COMMON", layout_settings{}, std::move(producer)) {}

}  // namespace vantor::ui
