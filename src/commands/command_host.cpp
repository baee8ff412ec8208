#include "commands/command_host.h"

#include <algorithm>

#include "debuginfo/module.h"
#include "debuginfo/source_file.h"
#include "debuginfo/source_files.h"
#include "debuginfo/source_locator.h"
#include "process/debugged_process.h"
#include "session/startup_globals.h"
#include "stack/call_stack.h"
#include "stack/stack_window_text.h"

namespace vantor {

namespace {

// Memory of a session with no program: nothing can be read or written.
class NoProgramMemory : public TargetMemory {
 public:
  std::size_t read(Address, void*, std::size_t) override { return 0; }
  std::size_t write(Address, const void*, std::size_t) override { return 0; }
};

std::wstring lower_case(std::wstring text) {
  std::transform(text.begin(), text.end(), text.begin(), [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
  return text;
}

// The host over the session's one debugged process, which a restart replaces: every
// answer is asked of CurrentProcess afresh.
class ProcessCommandHost : public CommandHost {
 public:
  bool has_process() override { return CurrentProcess != nullptr; }
  // A program just launched is paused too, but has not reached its first line: a stop
  // comes only after the loader's breakpoint.
  bool program_stopped() override {
    if (!CurrentProcess) return false;
    std::int32_t state = CurrentProcess->state();
    return state == psStopped || (state == psPaused && CurrentProcess->loader_breakpoint_seen());
  }
  bool program_ended() override { return CurrentProcess && CurrentProcess->state() == psEnded; }
  TargetMemory& memory() override {
    if (CurrentProcess) return *CurrentProcess;
    return no_program_;
  }
  const os::ThreadContext* registers() override {
    return program_stopped() ? &CurrentProcess->context() : nullptr;
  }
  std::int32_t stack_depth() override {
    CallStack* stack = CurrentProcess ? CurrentProcess->current_stack() : nullptr;
    return stack ? stack->depth() : 0;
  }
  StackFrame* stack_frame(std::int32_t index) override {
    CallStack* stack = CurrentProcess ? CurrentProcess->current_stack() : nullptr;
    return stack ? stack->frame(index) : nullptr;
  }
  void fill_stack_rows(ui::window_rows& rows, std::string& status) override {
    if (CurrentProcess)
      fill_stack_window(*CurrentProcess, rows, status);
    else
      status.clear();
  }
  BreakpointList* breakpoints() override { return CurrentProcess ? &CurrentProcess->breakpoints() : nullptr; }
  void set_run_to_breakpoint(std::int32_t id) override {
    if (CurrentProcess) CurrentProcess->stepping().set_run_to_breakpoint(id);
  }

  std::vector<ui::found_routine> find_routines(std::string_view fragment) override {
    std::vector<ui::found_routine> found;
    if (!CurrentProcess) return found;
    std::string lower(fragment);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    for (const auto& module : CurrentProcess->modules()) {
      std::vector<routine_match> matches;
      module->collect_routines(lower, matches);
      for (const auto& match : matches) {
        ui::found_routine routine;
        routine.routine = match.name;
        if (match.has_lines) {
          routine.file = std::string(bare_file_name(match.file_name));
          routine.line = match.first_line.line;
        }
        routine.module = os::system().oem_from_wide(module->display_name());
        found.push_back(std::move(routine));
      }
    }
    return found;
  }

  source_file* program_source_file(const std::wstring& path) override {
    if (!CurrentProcess) return nullptr;
    std::wstring wanted = lower_case(path);
    for (const auto& file : CurrentProcess->source_files())
      if (lower_case(file->full_path) == wanted || lower_case(file->recorded_name) == wanted) return file.get();
    return nullptr;
  }

  bool frame_source(StackFrame& frame, source_file*& file, std::int32_t& line) override {
    MapEntry* routine = frame.map_entry();
    if (!CurrentProcess || !routine || !routine->has_lines()) return false;
    line = line_of_address(*routine, frame.pc);
    if (line <= 0) return false;
    for (const auto& candidate : CurrentProcess->source_files())
      if (std::find(candidate->routines.begin(), candidate->routines.end(), routine) != candidate->routines.end()) {
        file = candidate.get();
        locate_source_file(*file, SourceSearch{ProgramDirectory, SourcePath});
        return true;
      }
    return false;
  }

 private:
  NoProgramMemory no_program_;
};

ProcessCommandHost SessionHost;
CommandHost* InstalledHost = nullptr;

}  // namespace

CommandHost& command_host() { return InstalledHost ? *InstalledHost : SessionHost; }

void set_command_host(CommandHost* host) { InstalledHost = host; }

std::int32_t frame_index_of(const StackFrame* frame) {
  CommandHost& host = command_host();
  if (!frame) return -1;
  for (std::int32_t i = 0; i < host.stack_depth(); ++i)
    if (host.stack_frame(i) == frame) return i;
  return -1;
}

StackFrame* frame_at(std::int32_t index) {
  CommandHost& host = command_host();
  return index >= 0 && index < host.stack_depth() ? host.stack_frame(index) : nullptr;
}

}  // namespace vantor
