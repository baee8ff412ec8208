// Breakpoints from the command language: code breakpoints by file and line ("breakpoint",
// "getto"), hardware data breakpoints on a value ("write_break", "use_break"), and the
// breakpoints window.
#include <cstdlib>
#include <sstream>
#include <vector>

#include "commands/command_handlers.h"
#include "commands/command_host.h"
#include "commands/data_views.h"
#include "common/console.h"
#include "common/messages.h"
#include "process/breakpoint_list.h"
#include "process/data_breakpoints.h"
#include "session/pending_command.h"
#include "stack/stack_frame.h"
#include "ui/window_kinds.h"
#include "ui/window_list.h"

namespace vantor {

namespace {

// The counts of a breakpoint the user did not give counts for: every hit stops.
constexpr std::int32_t kDefaultCount = 1;

std::vector<std::string> tokens_of(std::string_view text) {
  std::vector<std::string> tokens;
  std::istringstream in{std::string(text)};
  for (std::string token; in >> token;) tokens.push_back(token);
  return tokens;
}

bool has_debug_information(StackFrame* frame) { return frame && frame->has_lines(); }

void refresh_breakpoints_windows() { ui::OpenWindows.refresh_kind(ui::kBreakpointsKind); }

}  // namespace

std::uint32_t breakpoint_command(const command_call& call) {
  std::vector<std::string> tokens = tokens_of(call.argument);
  if (tokens.empty()) {
    console_print("Expeceted: [file] line\n");
    return kCommandFailed;
  }
  std::string file = tokens[0];
  if (file == "." && has_debug_information(call.frame)) file = call.frame->source_file_name();

  std::int32_t line = 0, after = kDefaultCount, every = kDefaultCount;
  if (tokens.size() > 1) {
    line = std::atoi(tokens[1].c_str());
    if (tokens.size() > 2) after = std::atoi(tokens[2].c_str());
    if (tokens.size() > 3) every = std::atoi(tokens[3].c_str());
  } else {
    // A line alone is a line of the name space's own source file.
    line = std::atoi(tokens[0].c_str());
    if (!call.frame) {
      console_print("Unable to get namespace\n");
      return kCommandFailed;
    }
    if (!has_debug_information(call.frame)) {
      console_print("No debug information for %s\n", call.frame->routine_name().c_str());
      return kCommandFailed;
    }
    file = call.frame->source_file_name();
  }

  BreakpointList* breakpoints = command_host().breakpoints();
  std::int64_t id = breakpoints ? breakpoints->set_breakpoint(file, line, after, every, "") : -1;
  if (id < 1) {
    console_print("Could not set breakpoint at line %d in %s\n", line, file.c_str());
    return kCommandFailed;
  }
  refresh_breakpoints_windows();
  if (call.code == kCmdGetTo) {
    command_host().set_run_to_breakpoint(static_cast<std::int32_t>(id));
    SetPendingCommand(kGoCommand, kStartFlag);
  }
  return kCommandDone;
}

std::uint32_t data_break_command(const command_call& call) {
  if (call.argument.empty()) return kCommandDone;
  auto value = evaluate_argument(call.argument, call.frame);
  if (!value) return kCommandFailed;
  BreakpointList* breakpoints = command_host().breakpoints();
  if (!breakpoints) {
    ShowInformationMessage("This value cannot be breakpointed");
    return kCommandFailed;
  }
  // The data-breakpoint requests refresh the breakpoints window through this hook.
  if (!BreakpointsChanged) BreakpointsChanged = refresh_breakpoints_windows;
  std::uint32_t access = call.code == kCmdUseBreak ? kAccessUse : kAccessWrite;
  return set_data_breakpoint_on_value(*breakpoints, *value, access) ? kCommandDone : kCommandFailed;
}

std::uint32_t breakpoints_window_command(const command_call&) {
  show_breakpoints_window();
  return kCommandDone;
}

}  // namespace vantor
