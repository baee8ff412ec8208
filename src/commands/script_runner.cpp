#include "commands/script_runner.h"

#include <cctype>
#include <vector>

#include "commands/command_host.h"
#include "commands/command_table.h"
#include "commands/execute_command.h"
#include "common/console.h"
#include "common/messages.h"
#include "os/os.h"
#include "session/startup_globals.h"
#include "stack/stack_frame.h"

namespace vantor {

bool ScriptEcho = true;

namespace {

// A line is read into 512 characters at most, its end included; the rest of a longer
// line comes back as the next line.
constexpr std::size_t kScriptLineLimit = 511;
// Where the script runner puts a window that "print" opens.
constexpr int kScriptWindowX = 5;
constexpr int kScriptWindowY = 5;

struct running_script {
  bool running = false;
  std::string name;
  std::vector<std::uint8_t> text;
  std::size_t position = 0;
};

running_script Script;

std::wstring wide(const std::string& text) { return os::system().wide_from_oem(text); }

// The next line without its end; false at the end of the text.
bool read_line(std::string& line) {
  if (Script.position >= Script.text.size()) return false;
  line.clear();
  while (Script.position < Script.text.size() && line.size() < kScriptLineLimit) {
    char c = static_cast<char>(Script.text[Script.position++]);
    line += c;
    if (c == '\n') break;
  }
  while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back()))) line.pop_back();
  return true;
}

// Lines run in the first frame that has debug information: a stop inside the run-time
// library should still see the program's own variables.
StackFrame* script_name_space() {
  for (std::int32_t i = 0; i < command_host().stack_depth(); ++i)
    if (StackFrame* frame = frame_at(i); frame && frame->has_lines()) return frame;
  return frame_at(0);
}

}  // namespace

bool script_running() { return Script.running; }

const std::string& running_script_name() { return Script.name; }

bool open_script(const std::string& name) {
  auto text = os::system().read_file(wide(name));
  if (!text) text = os::system().read_file(wide(name + ".script"));
  if (!text) {
    ShowErrorMessage("Could not open script");
    return false;
  }
  Script.text = std::move(*text);
  Script.position = 0;
  Script.name = name;
  Script.running = true;
  return true;
}

void close_script() {
  if (!Script.running) return;
  Script.running = false;
  Script.text.clear();
  Script.position = 0;
  if (!ScriptFile.empty() && Script.name == os::system().oem_from_wide(ScriptFile))
    os::system().delete_file(wide(Script.name));
}

void run_script_line() {
  if (!Script.running) return;
  CommandHost& host = command_host();
  if (!host.has_process() || host.program_ended()) {
    close_script();
    return;
  }
  if (!host.program_stopped()) return;

  std::string line;
  if (!read_line(line)) {
    close_script();
    return;
  }
  if (ScriptEcho) console_print("> %s\n", line.c_str());
  std::uint32_t result = execute_command(line, script_name_space(), kScriptWindowX, kScriptWindowY);
  switch (result) {
    case kCommandDone: return;
    case kCommandNotKnown:
    case kCommandNeedsArgument: console_print("%s\n", command_result_text(result)); [[fallthrough]];
    default:
      console_print("script terminated\n");
      close_script();
      return;
  }
}

std::uint32_t script_command(const std::string& name) {
  if (Script.running) {
    ShowErrorMessage("Scripts cannot be nested.", "script error");
    return kCommandFailed;
  }
  return open_script(name) ? kCommandDone : kCommandFailed;
}

void start_startup_script() {
  if (!ScriptFile.empty()) open_script(os::system().oem_from_wide(ScriptFile));
}

}  // namespace vantor
