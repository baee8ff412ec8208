// The commands whose argument is an expression: print, printmem, plot, stream, dstream,
// watch and dprint.
#include <cstring>

#include "commands/command_handlers.h"
#include "commands/command_host.h"
#include "commands/data_views.h"
#include "common/console.h"
#include "common/messages.h"
#include "ui/settings.h"
#include "ui/window_list.h"
#include "values/error_codes.h"
#include "values/eval.h"

namespace vantor {

namespace {

// Message boxes take the evaluator's message up to this length.
constexpr std::size_t kMessageLimit = 256;
// The off-screen expression window of "dprint" sits here; nothing ever shows it.
constexpr int kDPrintWindowX = 1;
constexpr int kDPrintWindowY = 1;

// The address a memory dump starts at: the number an integer or address constant holds
// (what loc() gives), the address a pointer holds, else where the value itself lives.
Address dump_address(const element& value) {
  bool number = value.type == kTypePointer8 || (is_integer_type(value.type) && value.is_constant());
  if (!number) return value.address;
  return static_cast<Address>(value_int64(value, command_host().memory()));
}

}  // namespace

std::string evaluation_message(std::int32_t error_code) {
  std::string text = error_text(error_code);
  if (text.size() > kMessageLimit) text.resize(kMessageLimit);
  return text;
}

std::unique_ptr<element> evaluate_argument(std::string_view text, StackFrame* frame, bool on_console) {
  CommandHost& host = command_host();
  EvalResult result = evaluate(text, scope_of_frame(frame, host.memory(), host.registers()));
  if (result.value->error_code == 0) return std::move(result.value);
  std::string message = evaluation_message(result.value->error_code);
  if (on_console)
    console_print("%s\n", message.c_str());
  else
    ShowErrorMessage(message);
  return nullptr;
}

std::uint32_t print_command(const command_call& call) {
  auto value = evaluate_argument(call.argument, call.frame);
  if (!value) return kCommandFailed;
  std::string expression(call.argument);
  open_window_at(make_value_window(expression, *value, frame_index_of(call.frame)), call.x, call.y);
  return kCommandDone;
}

std::uint32_t print_memory_command(const command_call& call) {
  auto value = evaluate_argument(call.argument, call.frame);
  if (!value) return kCommandFailed;
  auto window = make_dump_window(dump_address(*value), std::string(call.argument), frame_index_of(call.frame));
  open_window_at(std::move(window), ui::get_setting_int(ui::kSourceWindowX), ui::get_setting_int(ui::kSourceWindowY));
  return kCommandDone;
}

// Plotting and the Fortran units have nothing to show in this debugger: the commands check
// their expression and stop there.
std::uint32_t evaluate_only_command(const command_call& call) {
  bool on_console = call.code == kCmdDStream;
  return evaluate_argument(call.argument, call.frame, on_console) ? kCommandDone : kCommandFailed;
}

std::uint32_t watch_command(const command_call& call) {
  show_watch_window().add_watch(std::string(call.argument));
  return kCommandDone;
}

std::uint32_t dprint_command(const command_call& call) {
  {
    auto window = make_expression_window(std::string(call.argument), frame_index_of(call.frame));
    winlib::WindowLocation place = window->location();
    place.x = kDPrintWindowX;
    place.y = kDPrintWindowY;
    window->set_location(place);
    window->refresh();
    window->dump_to_console();
    window->after_console_dump();
  }
  ui::OpenWindows.refresh_all();
  return kCommandDone;
}

}  // namespace vantor
