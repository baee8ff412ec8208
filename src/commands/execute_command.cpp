#include "commands/execute_command.h"

#include <cctype>

#include "commands/command_handlers.h"
#include "commands/script_runner.h"
#include "common/messages.h"
#include "session/pending_command.h"

namespace vantor {

namespace {

bool is_space(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool is_word_char(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
  return text;
}

std::uint32_t post_run_request(std::uint32_t command) {
  SetPendingCommand(command, kStartFlag);
  return kCommandDone;
}

std::uint32_t dispatch(const command_call& call) {
  switch (call.code) {
    case kCmdPrint: return print_command(call);
    case kCmdPrintMemory: return print_memory_command(call);
    case kCmdView: return view_command(call);
    case kCmdFind: return find_routines_command(call);
    case kCmdWriteBreak:
    case kCmdUseBreak: return data_break_command(call);
    case kCmdRegisters: return registers_command(call);
    case kCmdLet: return let_command(call);
    case kCmdPlot:
    case kCmdStream:
    case kCmdDStream: return evaluate_only_command(call);
    case kCmdBreakpoints: return breakpoints_window_command(call);
    case kCmdStreams:
      ShowInformationMessage("streams command is not currently available");
      return kCommandDone;
    case kCmdWatch: return watch_command(call);
    case kCmdExit: return post_run_request(kQuitCommand);
    case kCmdStopScript: return kCommandNeedsArgument;
    case kCmdDumpInfo: return dumpinfo_command(call);
    case kCmdDPrint: return dprint_command(call);
    case kCmdStep: return post_run_request(kStepIntoCommand);
    case kCmdStepOver: return post_run_request(kStepOverCommand);
    case kCmdGetTo:
    case kCmdBreakpoint: return breakpoint_command(call);
    case kCmdGo: return post_run_request(kGoCommand);
    case kCmdScript: return script_command(std::string(call.argument));
    default: return kCommandDone;
  }
}

}  // namespace

command_words split_command_line(std::string_view line) {
  line = trimmed(line);
  std::size_t end = 0;
  while (end < line.size() && is_word_char(line[end])) ++end;
  return {line.substr(0, end), trimmed(line.substr(end))};
}

std::uint32_t execute_command(std::string_view line, StackFrame* frame, int x, int y) {
  line = trimmed(line);
  if (line.empty() || line.front() == '#') return kCommandDone;
  command_words words = split_command_line(line);
  const command_row* row = find_command(words.word);
  if (!row) return kCommandNotKnown;
  if (row->needs_argument && words.argument.empty()) return kCommandNeedsArgument;
  command_call call;
  call.code = row->code;
  call.argument = words.argument;
  call.frame = frame;
  call.x = x;
  call.y = y;
  return dispatch(call);
}

}  // namespace vantor
