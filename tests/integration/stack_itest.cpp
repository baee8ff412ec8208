// The call-stack walk and variable addresses against real programs under Wine: programs
// of the test compiler (tests/integration/programs), a C library between Fortran frames,
// and C programs whose callers are the system's. Lines are found by the "! stop: ..."
// markers of the sources.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "debuginfo/module.h"
#include "program_test.h"
#include "stack/f95_stack_frame.h"
#include "stack/microsoft_stack_frame.h"
#include "values/error_codes.h"

namespace vantor {
namespace {

using testing::line_of;

bool same_name(const std::string& a, const std::string& b) { return _stricmp(a.c_str(), b.c_str()) == 0; }

std::string module_name(const Module* module) {
  return module ? narrow_from_wide(module->display_name()) : std::string("(none)");
}

class StackUnderWineTest : public testing::ProgramTest {
 protected:
  F95StackFrame* f95_frame(std::int32_t index) { return dynamic_cast<F95StackFrame*>(stack().frame(index)); }

  // The value at the address the frame computes for its variable `name`.
  template <typename T>
  T value_of(std::int32_t frame_index, const std::string& name) {
    T value{};
    F95StackFrame* frame = f95_frame(frame_index);
    const VariableRecord* record = nullptr;
    for (int i = 0; frame && i < frame->variable_count() && !record; ++i)
      if (same_name(frame->variable_record(i)->name, name)) record = frame->variable_record(i);
    if (!record) {
      ADD_FAILURE() << "no variable " << name << " in our compiler's frame " << frame_index;
      return value;
    }
    address_types_seen.insert(record->address_type());
    VariableAddress where = frame->variable_address(record->address_type(), record->address_value, record, 0);
    EXPECT_EQ(where.error, 0) << name;
    EXPECT_EQ(process.read(where.address, &value, sizeof value), sizeof value) << name;
    last_address = where.address;
    return value;
  }

  std::set<std::uint32_t> address_types_seen;
  Address last_address = 0;
};

// ---- the walk ----------------------------------------------------------------------------

TEST_F(StackUnderWineTest, RecursionFiftyDeepListsExactlyForty) {
  start(L"stack_shapes");
  // The run-time library answered at the first stop that there is no COMMON list: asking
  // for a block reads nothing.
  EXPECT_EQ(process.common_info_address(), 0u);
  const std::size_t reads = system.counts.reads;
  EXPECT_EQ(process.common_block_address("/SHARED/"), 0u);
  EXPECT_TRUE(process.common_blocks().empty());
  EXPECT_EQ(system.counts.reads, reads);

  run_to("stack_shapes.f95", "stop: deepest");
  ASSERT_EQ(stack().depth(), 40);
  const std::int32_t call_line = line_of("stack_shapes.f95", "stop: recursive call");
  for (std::int32_t i = 0; i < 40; ++i) {
    frame_information info = stack().information(i);
    EXPECT_TRUE(same_name(info.routine_name, "descend")) << i << " " << info.routine_name;
    EXPECT_EQ(info.line, i == 0 ? line_of("stack_shapes.f95", "stop: deepest") : call_line) << i;
    EXPECT_EQ(stack().frame(i)->index, i + 1);
    if (i > 0) {
      EXPECT_GT(stack().items()[i].sp, stack().items()[i - 1].sp);
    }
  }
  EXPECT_EQ(value_of<std::int32_t>(0, "n"), 1);
  EXPECT_EQ(value_of<std::int32_t>(39, "n"), 40);
}

TEST_F(StackUnderWineTest, AStopOnARoutinesFirstByteFindsItsCaller) {
  start(L"stack_shapes");
  run_to("stack_shapes.f95", "stop: leaf entry");
  ASSERT_GE(stack().depth(), 2);
  EXPECT_TRUE(same_name(stack().information(0).routine_name, "leaf"));
  EXPECT_EQ(stack().information(0).offset, 1u);  // just after the line trap at its first byte
  EXPECT_EQ(stack().items()[0].return_slot, process.context().rsp);
  frame_information caller = stack().information(1);
  EXPECT_TRUE(same_name(caller.routine_name, "stack_shapes"));
  EXPECT_EQ(caller.line, line_of("stack_shapes.f95", "stop: call leaf"));
}

TEST_F(StackUnderWineTest, ALargeFrameUnwindsThroughTheProbeFormAtEveryLine) {
  start(L"stack_shapes");
  run_to("stack_shapes.f95", "stop: call big frame");
  const std::int32_t call_line = line_of("stack_shapes.f95", "stop: call big frame");
  std::set<std::int32_t> lines;
  std::int32_t previous_line = call_line;
  while (command(kModeStepInto) == psStopped) {
    // Every stop keeps the stack of the stop before it.
    ASSERT_NE(process.previous_stack(), nullptr);
    EXPECT_EQ(process.previous_stack()->information(0).line, previous_line);
    frame_information inner = stack().information(0);
    if (!same_name(inner.routine_name, "big_frame")) break;
    lines.insert(inner.line);
    previous_line = inner.line;
    ASSERT_GE(stack().depth(), 2) << "at line " << inner.line;
    frame_information caller = stack().information(1);
    EXPECT_TRUE(same_name(caller.routine_name, "stack_shapes")) << "at line " << inner.line;
    EXPECT_EQ(caller.line, call_line) << "at line " << inner.line;
    if (inner.line > line_of("stack_shapes.f95", "stop: big frame first line")) {
      EXPECT_EQ(value_of<std::int32_t>(0, "k"), 3) << "at line " << inner.line;
    }
  }
  // The subroutine line (its first byte, before the probe), three statements and the end.
  EXPECT_GE(lines.size(), 5u);
}

TEST_F(StackUnderWineTest, FortranThroughCBackIntoFortranListsAllThreeInOrder) {
  start(L"callback");
  run_to("callback.f95", "stop: visit");
  ASSERT_GE(stack().depth(), 3);
  EXPECT_NE(f95_frame(0), nullptr);
  EXPECT_TRUE(same_name(stack().information(0).routine_name, "visit"));

  auto* c_frame = dynamic_cast<MicrosoftStackFrame*>(stack().frame(1));
  ASSERT_NE(c_frame, nullptr);
  EXPECT_EQ(c_frame->routine_name(), "APPLY_EACH");
  EXPECT_GT(c_frame->displacement(), 0u);
  EXPECT_EQ(module_name(c_frame->module), "callback_lib.dll");
  EXPECT_EQ(c_frame->index, 1);

  ASSERT_NE(f95_frame(2), nullptr);
  frame_information main_program = stack().information(2);
  EXPECT_TRUE(same_name(main_program.routine_name, "callback"));
  EXPECT_EQ(main_program.line, line_of("callback.f95", "stop: call C"));
  EXPECT_EQ(f95_frame(2)->index, 3);
  EXPECT_EQ(value_of<std::int32_t>(0, "v"), 1);
  const Address argument = last_address;
  // Past the C frame the walk resumes at the main program's own stack pointer: its array
  // is where the callback's argument points.
  EXPECT_EQ(value_of<std::int32_t>(2, "values"), 1);
  EXPECT_EQ(last_address, argument);

  // A name no routine map holds is found through the system's symbol handler: the C
  // library's counter, as the library stored it before its first call back.
  VariableRecord visits;
  visits.name = "VISITS";
  visits.descriptor = 10;
  VariableAddress where = f95_frame(0)->variable_address(10, 0, &visits, 0);
  EXPECT_EQ(where.error, 0);
  EXPECT_EQ(where.base, where.address);
  EXPECT_GE(where.address, c_frame->module->load_base());
  EXPECT_LT(where.address, c_frame->module->end_address());
  std::int32_t count = 0;
  EXPECT_EQ(process.read(where.address, &count, sizeof count), sizeof count);
  EXPECT_EQ(count, 1000);
  visits.name = "NO_SUCH_NAME_ANYWHERE";
  EXPECT_EQ(f95_frame(0)->variable_address(10, 0, &visits, 0).error, kErrorOutOfScope);
}

TEST_F(StackUnderWineTest, ALibraryLoadedAfterTheSymbolHandlerStartedIsUnwoundAndNamed) {
  start(L"callback");
  run_to("callback.f95", "stop: visit");  // the C frame below starts the symbol handler
  ASSERT_NE(dynamic_cast<MicrosoftStackFrame*>(stack().frame(1)), nullptr);
  for (int hit = 2; hit <= 4; ++hit) ASSERT_EQ(command(kModeGo), psStopped) << hit;

  // The fourth visit: the first from the library loaded just now, which goes backwards.
  ASSERT_GE(stack().depth(), 4);
  EXPECT_TRUE(same_name(stack().information(0).routine_name, "visit"));
  EXPECT_EQ(value_of<std::int32_t>(0, "v"), 11);
  const Address argument = last_address;
  auto* late = dynamic_cast<MicrosoftStackFrame*>(stack().frame(1));
  ASSERT_NE(late, nullptr);
  EXPECT_EQ(module_name(late->module), "late_callback_lib.dll");
  EXPECT_EQ(late->routine_name(), "APPLY_EACH_LATE");
  EXPECT_GT(late->displacement(), 0u);
  auto* loader = dynamic_cast<MicrosoftStackFrame*>(stack().frame(2));
  ASSERT_NE(loader, nullptr);
  EXPECT_EQ(loader->routine_name(), "LOAD_AND_APPLY");

  ASSERT_NE(f95_frame(3), nullptr);
  frame_information main_program = stack().information(3);
  EXPECT_TRUE(same_name(main_program.routine_name, "callback"));
  EXPECT_EQ(main_program.line, line_of("callback.f95", "stop: call late C"));
  EXPECT_EQ(value_of<std::int32_t>(3, "values"), 11);
  EXPECT_EQ(last_address + 8, argument);  // values(3)
}

TEST_F(StackUnderWineTest, PausedInsideTheSystemTheWalkHandsOverToFortranAtTheEnd) {
  start(L"waiting");
  windows.pause_on_yield = 1;
  ASSERT_EQ(command(kModeGo), psPaused) << process.status_text();
  ASSERT_GE(stack().depth(), 3);
  const std::int32_t last = stack().depth() - 1;
  for (std::int32_t i = 0; i < last; ++i) {
    auto* frame = dynamic_cast<MicrosoftStackFrame*>(stack().frame(i));
    ASSERT_NE(frame, nullptr) << i;
    EXPECT_EQ(frame->index, i);
  }
  EXPECT_NE(module_name(stack().items()[0].module), "callback_lib.dll");  // asleep in the system
  EXPECT_EQ(stack().frame(last - 1)->routine_name(), "WAIT_IN_C");
  EXPECT_EQ(module_name(stack().items()[static_cast<std::size_t>(last - 1)].module), "callback_lib.dll");

  ASSERT_NE(f95_frame(last), nullptr);
  frame_information main_program = stack().information(last);
  EXPECT_TRUE(same_name(main_program.routine_name, "waiting"));
  EXPECT_EQ(main_program.line, line_of("waiting.f95", "stop: call wait"));
  EXPECT_EQ(f95_frame(last)->index, last + 1);
  EXPECT_EQ(value_of<std::int32_t>(last, "seconds"), 30);
}

TEST_F(StackUnderWineTest, AStopInsideALibraryRoutineFindsItsStaticData) {
  start(L"dll_data");
  run_to("dll_data_lib.f95", "stop: tally");
  ASSERT_GE(stack().depth(), 2);
  F95StackFrame* tally = f95_frame(0);
  ASSERT_NE(tally, nullptr);
  EXPECT_EQ(module_name(tally->module), "dll_data_lib.dll");
  EXPECT_FALSE(tally->module->main_image());
  EXPECT_TRUE(same_name(stack().information(1).routine_name, "dll_data"));

  EXPECT_EQ(value_of<std::int32_t>(0, "total"), 555001);
  const Address statics = tally->module->load_base() + tally->lead_word();
  EXPECT_GE(last_address, statics - 0x10000);
  EXPECT_LT(last_address, tally->module->end_address());
  EXPECT_EQ(value_of<double>(0, "scale"), 555001.5);
  EXPECT_EQ(value_of<std::int32_t>(0, "n"), 1);
}

TEST_F(StackUnderWineTest, BelowALibraryRoutineTheCProgramsCallersAreNamedThroughTheSymbolHandler) {
  start(L"c_calls_fortran");
  run_to("dll_data_lib.f95", "stop: tally");
  ASSERT_GE(stack().depth(), 4);
  ASSERT_NE(f95_frame(0), nullptr);
  EXPECT_TRUE(same_name(stack().information(0).routine_name, "tally"));
  EXPECT_EQ(f95_frame(0)->index, 1);
  EXPECT_EQ(value_of<std::int32_t>(0, "n"), 1);

  auto* main_frame = dynamic_cast<MicrosoftStackFrame*>(stack().frame(1));
  ASSERT_NE(main_frame, nullptr);
  EXPECT_EQ(main_frame->routine_name(), "main");
  EXPECT_GT(main_frame->displacement(), 0u);
  EXPECT_EQ(main_frame->index, 1);
  EXPECT_EQ(module_name(main_frame->module), "c_calls_fortran.exe");
  EXPECT_EQ(stack().items()[1].pc, process.read_u64(stack().items()[0].return_slot));

  // The C start-up calls main, kernel32 starts the thread, ntdll calls kernel32.
  std::vector<std::string> modules;
  for (std::int32_t i = 1; i < stack().depth(); ++i) {
    auto* frame = dynamic_cast<MicrosoftStackFrame*>(stack().frame(i));
    ASSERT_NE(frame, nullptr) << i;
    EXPECT_EQ(frame->index, i);
    modules.push_back(module_name(frame->module));
    if (modules.back() != "c_calls_fortran.exe") {  // a symbol's name
      EXPECT_EQ(frame->routine_name().find('!'), std::string::npos) << frame->routine_name();
    }
  }
  EXPECT_EQ(modules[1], "c_calls_fortran.exe");  // the start-up routine that called main
  auto kernel32 = std::find(modules.begin(), modules.end(), "kernel32.dll");
  auto ntdll = std::find(modules.begin(), modules.end(), "ntdll.dll");
  ASSERT_NE(kernel32, modules.end());
  ASSERT_NE(ntdll, modules.end());
  EXPECT_LT(kernel32, ntdll);
}

// ---- variables of every address type ------------------------------------------------------

TEST_F(StackUnderWineTest, EveryAddressTypeFindsTheValueTheProgramStored) {
  start(L"address_types");
  // The first stop asked the run-time library where its COMMON list starts.
  ASSERT_NE(process.common_info_address(), ~Address{0});
  ASSERT_NE(process.common_info_address(), 0u);

  run_to("address_types.f95", "stop: inside");
  // In the internal procedure: its argument, and its host's local and allocatable.
  EXPECT_EQ(value_of<std::int32_t>(0, "k"), 111008);
  EXPECT_EQ(value_of<std::int32_t>(0, "host_local"), 111001);
  EXPECT_EQ(value_of<std::int32_t>(0, "host_list"), 111002);
  // In the host, the main program: its own local, allocatable, COMMON members, structure.
  EXPECT_EQ(value_of<std::int32_t>(1, "host_local"), 111001);
  EXPECT_EQ(value_of<std::int32_t>(1, "host_list"), 111002);
  EXPECT_EQ(value_of<std::int32_t>(1, "first"), 111004);
  const Address first_in_main = last_address;
  EXPECT_EQ(value_of<double>(1, "second"), 111005.5);
  EXPECT_EQ(value_of<std::int32_t>(1, "spot"), 111006);  // the first component lies at offset 0
  const Address spot = last_address;
  F95StackFrame* main_program = f95_frame(1);
  const DerivedTypeRecord* point = nullptr;
  for (int i = 0; i < main_program->variable_count(); ++i)
    if (same_name(main_program->variable_record(i)->name, "spot")) point = main_program->variable_record(i)->structure;
  ASSERT_NE(point, nullptr);
  ASSERT_EQ(point->components.size(), 2u);
  const VariableRecord& y = *point->components[1];
  VariableAddress component = main_program->variable_address(y.address_type(), y.address_value, &y, spot);
  address_types_seen.insert(y.address_type());
  double y_value = 0;
  process.read(component.address, &y_value, 8);
  EXPECT_EQ(y_value, 111007.5);

  // The constant has no address; its value comes with its record.
  auto answer = main_program->find_variable("ANSWER");
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(answer->error_code, 0);
  EXPECT_EQ(value_int32(*answer, process), 4242);
  EXPECT_EQ(main_program->variable_address(4, 0, nullptr, 0).error, kErrorOutOfScope);

  run_to("address_types.f95", "stop: nested");
  EXPECT_EQ(value_of<std::int32_t>(0, "arg"), 222001);
  EXPECT_EQ(value_of<std::int32_t>(0, "mine"), 222002);
  EXPECT_EQ(value_of<std::int32_t>(0, "view"), 222003);
  EXPECT_EQ(value_of<std::int32_t>(1, "arg"), 222001);
  EXPECT_EQ(value_of<std::int32_t>(1, "view"), 222003);

  run_to("address_types.f95", "stop: keeper");
  EXPECT_EQ(value_of<std::int32_t>(0, "kept"), 333001);
  EXPECT_EQ(value_of<double>(0, "also_kept"), 333002.5);

  run_to("address_types.f95", "stop: common_reader");
  EXPECT_EQ(value_of<std::int32_t>(0, "first"), 111004);
  EXPECT_EQ(last_address, first_in_main);  // one block for both routines

  EXPECT_EQ(address_types_seen, (std::set<std::uint32_t>{0, 1, 3, 5, 7, 8, 9, 11, 12}));

  // Both routines' block records are resolved now: asking again reads nothing.
  const std::size_t reads = system.counts.reads;
  EXPECT_EQ(process.common_block_address("/SHARED/"), first_in_main);
  EXPECT_EQ(system.counts.reads, reads);

  bool found_common = false;
  for (const CommonBlock& block : process.common_blocks())
    if (block.name == "/SHARED/") {
      found_common = true;
      EXPECT_EQ(block.address, first_in_main);
      EXPECT_EQ(block.size, 16u);
    }
  EXPECT_TRUE(found_common);
}

}  // namespace
}  // namespace vantor
