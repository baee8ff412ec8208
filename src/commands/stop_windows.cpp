#include "commands/stop_windows.h"

#include "commands/command_host.h"
#include "commands/data_views.h"
#include "commands/view_producers.h"
#include "ui/source_window.h"
#include "ui/window_kinds.h"
#include "ui/window_list.h"

namespace vantor {

std::int32_t first_frame_with_source() {
  CommandHost& host = command_host();
  for (std::int32_t i = 0; i < host.stack_depth(); ++i) {
    StackFrame* frame = host.stack_frame(i);
    source_file* file = nullptr;
    std::int32_t line = 0;
    if (frame && host.frame_source(*frame, file, line) && line > 0) return i;
  }
  return -1;
}

void show_stop_in_windows(bool instruction_level) {
  std::int32_t frame = first_frame_with_source();
  set_current_frame_index(frame < 0 ? 0 : frame);
  std::vector<ui::text_window*> shown;
  ui::stack_window& stack = show_stack_window();
  stack.refresh();
  stack.select_row(frame);
  shown.push_back(&stack);
  if (frame >= 0) {
    auto* source = ui::OpenWindows.find_first_of<ui::source_window>(ui::kSourceKind);
    if (!source && !instruction_level) {
      auto window = std::make_unique<ui::source_window>(nullptr, source_locator(), breakpoint_marks());
      window->place_from_settings();
      source = ui::OpenWindows.open(std::move(window));
    }
    if (source) {
      source->show_frame(frame);
      shown.push_back(source);
    }
    ui::vars_window& variables = show_variables_window(frame);
    variables.show_frame(frame);
    shown.push_back(&variables);
  }
  for (ui::text_window* window : ui::OpenWindows.from_front())
    if (std::find(shown.begin(), shown.end(), window) == shown.end() && ui::OpenWindows.contains(window))
      window->refresh();
}

}  // namespace vantor
