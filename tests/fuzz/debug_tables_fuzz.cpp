// Fuzz target for the readers of our compiler's debug tables: any bytes are the memory of
// a loaded image, from its load base on (the PE headers come from a well-formed file of
// that image size, so the reader always gets as far as the routine map). Then every
// question the debugger asks of the tables is asked: routines by address and name, lines
// and files, the line dump and the line traps, and for every routine its symbol stream,
// each variable made into a value in a frame of that routine (whose stack holds bytes of
// the input too) and formatted.
//
// An unknown record tag ends the debugger with status 1 by design: the target lets the
// OS layer's end throw and takes that status as an outcome. Assertion boxes are answered
// Cancel, as a user carrying on would; only the chunked buffer's must never show, since
// every debug-table read goes through the reader that pads a short read with zeros.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "debuginfo/line_dump.h"
#include "debuginfo/module.h"
#include "debuginfo/source_files.h"
#include "fuzz/fuzz_target.h"
#include "process/debugged_process.h"
#include "stack/f95_stack_frame.h"
#include "support/debug_image_builder.h"
#include "support/fake_target.h"
#include "values/value_format.h"

namespace {

using namespace vantor;
using fuzz::kImageBase;
using fuzz::kImagePath;

constexpr Address kStackPointer = 0x30000;

struct DebuggerEnded {
  int status;
};

[[noreturn]] void fail(const char* what) { fuzz::fail("debug table", what); }

void ask_about_lines(const DebuggedProcess& process, const Module& module, const MapEntry& routine) {
  if (!routine.lines) return;
  const LineTable& table = *routine.lines;
  if (routine.has_lines() && !module.has_source_file(table.file_name, true)) fail("a routine's file is unknown");
  module.has_source_file(bare_file_name(table.file_name), false);
  for (const LineRecord& record : table.records) {
    const Address at = routine.start + static_cast<Address>(static_cast<std::int64_t>(record.offset));
    line_of_address(routine, at);
    line_of_address(routine, at + 1);
    module.line_address(table.file_name, record.line);
    module.line_address_by_bare_name(bare_file_name(table.file_name), record.line);
    address_of_line(process, table.file_name, record.line);
  }
}

void ask_about_symbols(DebuggedProcess& process, Module& module, MapEntry& routine) {
  F95StackFrame frame(&process, routine.start, kStackPointer, kStackPointer + 0x28, &routine, &module, 1);
  const int count = frame.variable_count();
  for (int i = 0; i < count; ++i) {
    const VariableRecord* record = frame.variable_record(i);
    if (!record) fail("a counted variable has no record");
    std::unique_ptr<element> value = frame.variable_element(i);
    if (!value) fail("a counted variable has no value");
    value_text_or_error(*value, process, 256);
    frame.find_variable(record->name);
  }
  if (!routine.symbols) return;
  for (const auto& type : routine.symbols->derived_types())
    for (const auto& component : type->components)
      if (component->structure) (void)component->structure->name.size();
  for (const auto& variable : routine.symbols->variables()) {
    if (variable->structure) (void)variable->structure->components.size();
    if (variable->common) (void)variable->common->name.size();
  }
}

void ask_everything(DebuggedProcess& process, Module& module) {
  std::vector<routine_match> matches;
  module.collect_routines("", matches);
  if (matches.size() != module.routines().size()) fail("the chooser does not list every routine");
  for (const auto& routine : module.routines()) {
    if (routine->start <= routine->end && !module.routine_at(routine->start)) fail("a routine is not at its start");
    module.routine_at(routine->end);
    module.routine_start(routine->name);
    ask_about_lines(process, module, *routine);
  }
  dump_process_lines(process);
  module.set_line_traps(true);
  module.set_line_traps(false);
  for (const auto& routine : module.routines()) ask_about_symbols(process, module, *routine);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > fuzz::kLargestImage) return 0;
  testing::FakeTarget target;
  target.system.set_message_box_answer(os::kIdCancel);
  target.system.on_end_debugger = [](int status) { throw DebuggerEnded{status}; };
  const std::uint32_t size_of_image = static_cast<std::uint32_t>((size + 0xFFF) / 0x1000 * 0x1000) + 0x1000;
  testing::DebugImageBuilder headers(kImageBase, size_of_image);
  headers.no_debug_info();
  headers.install(target.system, kImagePath);
  target.system.poke(kImageBase, data, size);
  // The frame's stack holds the input's first bytes, so that locals, arguments and the
  // bounds and pointers they lead to read as something.
  target.system.map(kStackPointer - 0x1000, 0x2000);
  target.system.poke(kStackPointer - 0x1000, data, std::min<std::size_t>(size, 0x2000));

  DebuggedProcess process;
  try {
    Module& module = *process.add_module(std::make_unique<Module>(process, 0, kImagePath, kImageBase, true));
    ask_everything(process, module);
  } catch (const DebuggerEnded& ended) {
    if (ended.status != 1) fail("the debugger ended with a status other than 1");
  }
  if (fuzz::assertion_shown(target.system, L"UserSpaceBuffer")) fail("a debug-table read came back short");
  return 0;
}
