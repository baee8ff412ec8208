// What the command language needs from the session around it: the debugged program (its
// state, memory, registers, call stack and breakpoints) and the look-ups made over its
// modules. The session installs the host that answers from the one debugged process;
// native tests install one of their own, so that every command can be tried without a
// program.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "os/os.h"
#include "process/target_memory.h"
#include "ui/find_window.h"
#include "ui/text_window.h"

namespace vantor {

class BreakpointList;
class StackFrame;
struct source_file;

class CommandHost {
 public:
  virtual ~CommandHost() = default;

  // Whether there is a debugged program at all.
  virtual bool has_process() = 0;
  // Stopped at a trap, a breakpoint or the end of a step (or paused): the only time a
  // script line may run.
  virtual bool program_stopped() = 0;
  // The program has run to its end.
  virtual bool program_ended() = 0;
  // The program's memory; with no program, memory that reads nothing.
  virtual TargetMemory& memory() = 0;
  // The stopped thread's registers; null when there are none.
  virtual const os::ThreadContext* registers() = 0;
  // The call stack of the last stop, innermost frame first: its depth (0 when there is
  // none) and its frames (null outside it).
  virtual std::int32_t stack_depth() = 0;
  virtual StackFrame* stack_frame(std::int32_t index) = 0;
  // The call-stack window's status line and one row per frame.
  virtual void fill_stack_rows(ui::window_rows& rows, std::string& status) = 0;
  // The program's breakpoint list; null with no program.
  virtual BreakpointList* breakpoints() = 0;
  // The breakpoint that "getto" made, removed at the next stop.
  virtual void set_run_to_breakpoint(std::int32_t id) = 0;
  // Every routine of every module whose name holds the fragment (letter case ignored).
  virtual std::vector<ui::found_routine> find_routines(std::string_view fragment) = 0;
  // The program's record of a source file that the user named, when it is one of the
  // program's own; null otherwise.
  virtual source_file* program_source_file(const std::wstring& path) = 0;
  // The source file (its text looked for and loaded) and the 1-based line of a frame;
  // false when the frame has no source position.
  virtual bool frame_source(StackFrame& frame, source_file*& file, std::int32_t& line) = 0;
};

// The host of the session: the one installed, or the one over the session's debugged
// process when none is.
CommandHost& command_host();
void set_command_host(CommandHost* host);

// The index of `frame` in the host's call stack; -1 when it is not there (or null).
std::int32_t frame_index_of(const StackFrame* frame);
// The frame with that index of the host's call stack; null when there is none.
StackFrame* frame_at(std::int32_t index);

}  // namespace vantor
