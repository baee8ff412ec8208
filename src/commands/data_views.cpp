#include "commands/data_views.h"

#include <cstring>

#include "commands/command_host.h"
#include "commands/view_producers.h"
#include "ui/array_window.h"
#include "ui/structure_window.h"
#include "ui/window_kinds.h"
#include "ui/window_list.h"
#include "values/element.h"

namespace vantor {

namespace {

// The window of that kind brought forward, or the one `make` gives, placed from its
// settings and opened.
template <typename Window, typename Make>
Window& show_window(int kind, Make make) {
  if (auto* open = ui::OpenWindows.find_first_of<Window>(kind)) {
    ui::OpenWindows.bring_forward(open);
    return *open;
  }
  std::unique_ptr<Window> window = make();
  window->place_from_settings();
  return *ui::OpenWindows.open(std::move(window));
}

bool points_at(const element& value, std::int32_t type) {
  return value.type == kTypePointer8 && value.next && value.next->type == type;
}

// The address a pointer value holds.
Address pointer_value(const element& value) {
  if (value.is_constant()) {
    std::uint64_t held = 0;
    std::memcpy(&held, constant_bytes(value), sizeof held);
    return held;
  }
  return command_host().memory().read_u64(value.address);
}

}  // namespace

ui::breakpoints_window& show_breakpoints_window() {
  return show_window<ui::breakpoints_window>(ui::kBreakpointsKind, [] {
    return std::make_unique<ui::breakpoints_window>(breakpoint_lister(), breakpoint_deleter());
  });
}

ui::regs_window& show_registers_window() {
  return show_window<ui::regs_window>(ui::kRegistersKind,
                                      [] { return std::make_unique<ui::regs_window>(registers_producer()); });
}

ui::streams_window& show_streams_window() {
  return show_window<ui::streams_window>(ui::kStreamsKind, [] { return std::make_unique<ui::streams_window>(); });
}

ui::watch_window& show_watch_window() {
  return show_window<ui::watch_window>(ui::kWatchesKind,
                                       [] { return std::make_unique<ui::watch_window>(watch_evaluator()); });
}

ui::vars_window& show_variables_window(std::int32_t frame_index) {
  return show_window<ui::vars_window>(ui::kVariablesKind, [&] {
    return std::make_unique<ui::vars_window>(variables_producer(), frame_index);
  });
}

ui::stack_window& show_stack_window() {
  return show_window<ui::stack_window>(ui::kStackKind, [] {
    return std::make_unique<ui::stack_window>(
        [](ui::window_rows& rows, std::string& status) { command_host().fill_stack_rows(rows, status); });
  });
}

std::unique_ptr<ui::text_window> make_value_window(const std::string& expression, const element& value,
                                                   std::int32_t frame_index) {
  if (value.type == kTypeStructure)
    return std::make_unique<ui::structure_window>(structure_producer(), expression, frame_index);
  if (points_at(value, kTypeStructure))
    return std::make_unique<ui::structure_window>(structure_producer(), ui::pointer_target_expression(expression),
                                                  frame_index);
  if (value.type == kTypeArray) return std::make_unique<ui::array_window>(array_producer(), expression, frame_index);
  if (points_at(value, kTypeVoid)) return make_dump_window(pointer_value(value), expression, frame_index);
  return make_expression_window(expression, frame_index);
}

std::unique_ptr<ui::value_window> make_expression_window(const std::string& expression, std::int32_t frame_index) {
  return std::make_unique<ui::value_window>(expression_producer(), expression, frame_index);
}

std::unique_ptr<ui::dump_window> make_dump_window(Address address, const std::string& expression,
                                                  std::int32_t frame_index) {
  return std::make_unique<ui::dump_window>(command_host().memory(), address, expression, frame_index,
                                           dump_break_setter());
}

ui::text_window& open_window_at(std::unique_ptr<ui::text_window> window, int x, int y) {
  window->place_from_settings();
  winlib::WindowLocation place = window->location();
  place.x = x;
  place.y = y;
  window->set_location(place);
  return *ui::OpenWindows.open(std::move(window));
}

}  // namespace vantor
