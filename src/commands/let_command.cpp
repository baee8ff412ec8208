// "let": assignment to a variable of the program.
#include <cctype>

#include "commands/command_handlers.h"
#include "commands/command_host.h"
#include "common/messages.h"
#include "ui/window_list.h"
#include "values/assignment.h"
#include "values/error_codes.h"
#include "values/eval.h"

namespace vantor {

std::uint32_t let_command(const command_call& call) {
  CommandHost& host = command_host();
  EvalScope scope = scope_of_frame(call.frame, host.memory(), host.registers());
  std::string_view text = call.argument;

  // The left side is read up to its "=": without the compare flag "=" ends an expression.
  EvalResult left = evaluate(text, scope);
  std::size_t at = left.stop;
  while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at]))) ++at;
  if (at >= text.size() || text[at] != '=') {
    ShowErrorMessage("Expected '=' after let command.");
    return kCommandFailed;
  }
  EvalResult right = evaluate(text.substr(at + 1), scope);
  for (const EvalResult* side : {&left, &right})
    if (side->value->error_code != 0) {
      ShowErrorMessage(evaluation_message(side->value->error_code));
      return kCommandFailed;
    }
  if (left.value->is_constant()) {
    ShowErrorMessage("Cannot assign to a constant.");
    return kCommandFailed;
  }
  if (std::int32_t error = assign(*left.value, *right.value, host.memory())) {
    ShowErrorMessage(error_text(error));
    return kCommandFailed;
  }
  ui::OpenWindows.refresh_all();
  return kCommandDone;
}

}  // namespace vantor
