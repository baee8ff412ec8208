#include "ui/streams_window.h"

#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

streams_window::streams_window(row_producer producer)
    : produced_list_window(kStreamsKind, "Streams", layout_settings::consecutive(kStreamsWindowX), std::move(producer)) {}

}  // namespace vantor::ui
