// Test support: a stopped program for the command language. Its call stack is a list of
// frames whose variables are debug records at fixed addresses of fake memory, made into
// elements by the values layer as real frames do; its breakpoints are a real breakpoint
// list over a scripted process. Installs itself as the session's command host.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "commands/command_host.h"
#include "debuginfo/debug_type_codes.h"
#include "debuginfo/source_file.h"
#include "debuginfo/variable_record.h"
#include "process/breakpoint_list.h"
#include "process/hardware_slots.h"
#include "stack/stack_frame.h"
#include "support/fake_breakpoint_host.h"
#include "support/fake_target.h"

namespace vantor::testing {

// A frame whose variables live at the addresses their records give.
class FakeFrame : public StackFrame {
 public:
  FakeFrame(TargetMemory& memory, std::string routine, std::string file = "", int lang_code = kLangFortran95)
      : StackFrame(nullptr, 0x401000, 0, 0, 0, nullptr),
        memory_(memory),
        routine_(std::move(routine)),
        file_(std::move(file)),
        lang_code_(lang_code) {}

  // A variable of a debug type at an address; returns its record for further shaping.
  VariableRecord& add_variable(const std::string& name, std::uint32_t debug_type, Address address,
                               std::uint32_t size);
  // A named constant (a PARAMETER) holding `bytes`.
  VariableRecord& add_parameter(const std::string& name, std::uint32_t debug_type, std::vector<std::uint8_t> bytes);

  std::string routine_name() const override { return routine_; }
  bool has_lines() const override { return !file_.empty(); }
  std::string source_file_name() const override { return file_; }
  int language_code() const override { return lang_code_; }
  char member_separator() const override { return is_fortran_language(lang_code_) ? '%' : '.'; }
  int variable_count() override { return static_cast<int>(records_.size()); }
  const VariableRecord* variable_record(int index) override;
  std::unique_ptr<element> variable_element(int index) override;
  std::unique_ptr<element> find_variable(std::string_view name) override;

 private:
  TargetMemory& memory_;
  std::string routine_;
  std::string file_;
  int lang_code_;
  std::vector<std::unique_ptr<VariableRecord>> records_;
};

class FakeCommandHost : public CommandHost {
 public:
  explicit FakeCommandHost(FakeTarget& target);
  ~FakeCommandHost() override;
  FakeCommandHost(const FakeCommandHost&) = delete;
  FakeCommandHost& operator=(const FakeCommandHost&) = delete;

  FakeFrame& add_frame(const std::string& routine, const std::string& file = "", int lang_code = kLangFortran95);

  bool has_process() override { return process; }
  bool program_stopped() override { return process && stopped; }
  bool program_ended() override { return process && ended; }
  TargetMemory& memory() override { return target_.memory; }
  const os::ThreadContext* registers() override { return program_stopped() ? &context : nullptr; }
  std::int32_t stack_depth() override { return static_cast<std::int32_t>(frames.size()); }
  StackFrame* stack_frame(std::int32_t index) override;
  void fill_stack_rows(ui::window_rows& rows, std::string& status) override;
  BreakpointList* breakpoints() override { return process ? &list : nullptr; }
  void set_run_to_breakpoint(std::int32_t id) override { run_to_breakpoint = id; }
  std::vector<ui::found_routine> find_routines(std::string_view fragment) override;
  source_file* program_source_file(const std::wstring& path) override;
  bool frame_source(StackFrame& frame, source_file*& file, std::int32_t& line) override;

  bool process = true;
  bool stopped = true;
  bool ended = false;
  os::ThreadContext context;
  std::vector<std::unique_ptr<FakeFrame>> frames;
  FakeBreakpointHost breakpoint_host;
  HardwareSlots slots;
  BreakpointList list{breakpoint_host, slots};
  std::int32_t run_to_breakpoint = -1;
  std::vector<ui::found_routine> routines;
  // The program's own source files, and the line each frame stopped at (by frame index).
  std::vector<std::unique_ptr<source_file>> sources;
  std::vector<std::pair<source_file*, std::int32_t>> frame_lines;

 private:
  FakeTarget& target_;
  CommandHost* previous_;
};

}  // namespace vantor::testing
