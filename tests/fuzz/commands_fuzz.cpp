// Fuzz target for what the user types: the command interpreter and the start-up switches.
// The first byte picks the mode, the rest is split at line ends (and, for switches, at
// zero bytes too):
//   mode 0: each line goes through the interpreter in the name space of the stopped
//           program's innermost frame, as the Command dialog hands it over;
//   mode 1: the lines are a script file that the "script" command opens and the session
//           then steps through one line per stop;
//   mode 2: the parts are the arguments after the debugger's name on its command line.
// The program is stopped in MAIN of C:\src\prog.f95 with a scalar, an array, a string and
// a structure in memory, a breakpoint line, and windows opened through a fake library.
// No input may crash, leak, hang or trip an internal assertion.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "commands/execute_command.h"
#include "commands/script_runner.h"
#include "commands/view_producers.h"
#include "common/messages.h"
#include "fuzz/fuzz_target.h"
#include "process/user_space_buffer.h"
#include "session/command_line.h"
#include "session/pending_command.h"
#include "session/startup_globals.h"
#include "support/fake_command_host.h"
#include "support/fake_target.h"
#include "support/fake_window_library.h"
#include "ui/settings.h"
#include "ui/window_list.h"

namespace {

using namespace vantor;

constexpr Address kCount = 0x2000;   // INTEGER*4 COUNT = 3
constexpr Address kTable = 0x2100;   // REAL*8 TABLE(0:3)
constexpr Address kTitle = 0x2200;   // CHARACTER*12 TITLE
constexpr Address kPair = 0x2300;    // TYPE(PAIR) PR = (1, 2)
constexpr const char* kSource = "C:\\src\\prog.f95";
constexpr const wchar_t* kScript = L"C:\\work\\fuzz.script";
constexpr std::size_t kMostLines = 64;

std::unique_ptr<VariableRecord> member(const char* name, std::uint64_t offset) {
  auto record = std::make_unique<VariableRecord>();
  record->name = name;
  record->descriptor = kDebugInteger4 << 4;
  record->address_value = offset;
  record->size = 4;
  return record;
}

// A stopped program, its windows and the session's state, set up fresh for each input
// and put back afterwards so that one input cannot change what the next one meets.
class StoppedProgram {
 public:
  StoppedProgram() {
    target.system.set_environment(L"APPDATA", L"C:\\AppData");
    target.system.set_message_box_answer(os::kIdCancel);
    ui::forget_settings_file_path();
    ConsoleMode = false;
    PendingCommand = 0;
    set_current_frame_index(0);

    target.system.poke_value<std::int32_t>(kCount, 3);
    for (int i = 0; i < 4; ++i) target.system.poke_value<double>(kTable + 8 * i, 0.5 * i);
    target.system.poke(kTitle, "fuzz program", 12);
    target.system.poke_value<std::int32_t>(kPair, 1);
    target.system.poke_value<std::int32_t>(kPair + 4, 2);
    pair.name = "PAIR";
    pair.components.push_back(member("FIRST", 0));
    pair.components.push_back(member("SECOND", 4));

    testing::FakeFrame& main = host.add_frame("MAIN", kSource);
    main.add_variable("COUNT", kDebugInteger4, kCount, 4);
    VariableRecord& table = main.add_variable("TABLE", kDebugReal8, kTable, 8);
    table.descriptor |= 1u << 9;
    table.array = std::make_unique<ArrayDescriptorRecord>();
    table.array->rank = 1;
    table.array->dimensions[0].bounds = {ArrayBound{kBoundConstant, 0}, ArrayBound{kBoundConstant, 4}, ArrayBound{}};
    main.add_variable("TITLE", kDebugCharacter, kTitle, 12);
    main.add_variable("PR", kDebugDerivedType, kPair, 8).structure = &pair;
    main.add_parameter("LIMIT", kDebugInteger4, {100, 0, 0, 0});
    host.add_frame("caller", "C:\\src\\lib.c", kLangC);
    host.routines.push_back({"MAIN", kSource, 12, "prog.exe"});
    host.breakpoint_host.add_line(kSource, 12, 0x401010);
    host.breakpoint_host.add_line("prog.f95", 12, 0x401010);
  }
  ~StoppedProgram() {
    close_script();
    ui::OpenWindows.close_all();
    ui::forget_settings_file_path();
    ConsoleMode = false;
    PendingCommand = 0;
    set_current_frame_index(-1);
    reset_startup_globals();
  }

  testing::FakeTarget target;
  testing::FakeWindowLibrary library;
  DerivedTypeRecord pair;
  testing::FakeCommandHost host{target};
};

std::vector<std::string> parts(std::string_view text, bool at_zero_bytes) {
  std::vector<std::string> out;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= text.size() && out.size() < kMostLines; ++i)
    if (i == text.size() || text[i] == '\n' || (at_zero_bytes && text[i] == '\0')) {
      out.emplace_back(text.substr(start, i - start));
      start = i + 1;
    }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 4096) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  StoppedProgram program;
  switch (data[0] % 3) {
    case 0:
      for (const std::string& line : parts(text, false)) {
        execute_command(line, program.host.stack_frame(0), 5, 5);
        PendingCommand = 0;  // the main loop would have taken a run request
      }
      break;
    case 1: {
      program.target.system.add_text_file(kScript, std::string(text));
      execute_command("script C:\\work\\fuzz.script", program.host.stack_frame(0), 5, 5);
      for (std::size_t i = 0; i < kMostLines && script_running(); ++i) {
        run_script_line();
        PendingCommand = 0;
      }
      break;
    }
    default: {
      std::vector<std::wstring> arguments;
      for (const std::string& part : parts(text, true)) arguments.push_back(wide_from_narrow(part));
      parse_command_line(arguments);
      break;
    }
  }
  // An internal assertion is shown in a box (answered Cancel here): never for any input.
  if (fuzz::assertion_shown(program.target.system)) fuzz::fail("command", "an internal assertion was shown");
  return 0;
}
