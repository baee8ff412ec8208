// The process's call stacks and COMMON blocks.
#include "process/common_probe.h"
#include "stack/stack_test_support.h"

namespace vantor {
namespace {

class ProcessSymbolsTest : public testing::StackTest {};

TEST_F(ProcessSymbolsTest, EachRefreshKeepsTheStackItReplaces) {
  image.routine("MAIN", 0x1000, 0x40).line(1, 0);
  image.routine("SUB", 0x1100, 0x40).line(2, 0);
  load(image, L"C:\\build\\prog.exe", true);
  code(image, "MAIN", small_frame_code(0x28));
  code(image, "SUB", small_frame_code(0x28));
  put(0x30000 + 0x28, image.address_of("MAIN") + 0x10);

  EXPECT_EQ(process.current_stack(), nullptr);
  stop_at(image.address_of("MAIN") + 6, 0x30030);
  CallStack* first = process.current_stack();
  ASSERT_EQ(first->depth(), 1);

  stop_at(image.address_of("SUB") + 6, 0x30000);
  EXPECT_EQ(process.previous_stack(), first);
  EXPECT_EQ(process.current_stack()->depth(), 2);
  EXPECT_EQ(process.context().rip, image.address_of("SUB") + 6);

  process.restore_previous_call_stack();
  EXPECT_EQ(process.current_stack(), first);
}

TEST_F(ProcessSymbolsTest, NoListMeansAddressZero) {
  EXPECT_EQ(process.common_block_address("/A/"), 0u);  // the run-time library has not answered
  EXPECT_EQ(target.system.counters.reads, 0u);
  process.set_common_info_address(0);  // the run-time library has no COMMON list
  EXPECT_EQ(process.common_block_address("/A/"), 0u);
  EXPECT_TRUE(process.common_blocks().empty());
}

TEST_F(ProcessSymbolsTest, ModulesLoadedAfterTheSymbolHandlerStartedAreToldToIt) {
  constexpr Address kEarly = 0x7FF800000000, kLate = 0x7FF900000000;
  load(image, L"C:\\build\\prog.exe", true);
  testing::DebugImageBuilder early(kEarly), late(kLate);
  early.no_debug_info();
  late.no_debug_info();
  load(early, L"C:\\windows\\system32\\early.dll", false);
  process.remove_module_at(kBase);
  EXPECT_TRUE(target.system.symbol_modules.empty());  // it finds what is loaded when it starts

  ASSERT_TRUE(process.ensure_symbol_handler());
  Module& added = load(late, L"C:\\lib\\late.dll", false);
  ASSERT_EQ(target.system.symbol_modules.size(), 1u);
  EXPECT_EQ(target.system.symbol_modules.at(kLate), added.path());
  process.remove_module_at(kLate);
  EXPECT_TRUE(target.system.symbol_modules.empty());
}

// The process asking its run-time library where the COMMON list starts, at a stop.
class CommonProbeAtStopTest : public testing::StackTest {
 protected:
  CommonProbeAtStopTest() {
    target.system.context(process.thread_handle()).rsp = 0x30000;
    target.system.context(process.thread_handle()).rip = 0x1234;
  }
  // The fake thread runs the routine at `routine` by answering `rax` and returning.
  void routine_answers(Address routine, std::uint64_t rax) {
    target.system.on_wait = [this, routine, rax](os::InMemorySystem& system) {
      os::ThreadContext& cpu = system.context(process.thread_handle());
      if (cpu.rip != routine) return;
      ++calls;
      cpu.rax = rax;
      cpu.rip = kProbeReturnTrap;
      os::DebugEvent back;  // from the thread the stop came from, as the debugger saw it
      back.kind = os::kExceptionEvent;
      back.exception_code = kAccessViolation;
      back.exception_address = kProbeReturnTrap;
      system.queue_event(back);
    };
  }
  int calls = 0;
};

TEST_F(CommonProbeAtStopTest, TheMainProgramsRoutineAnswersOnceForTheSession) {
  testing::DebugImageBuilder dll(0x180000000);
  dll.routine("__get_common_info", 0x1000, 0x10);
  load(dll, L"C:\\build\\lib.dll", false);
  image.routine("__get_common_info", 0x1000, 0x10);
  load(image, L"C:\\build\\prog.exe", true);
  routine_answers(image.address_of("__get_common_info"), 0x140005000);

  EXPECT_TRUE(process.probe_common_info());
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(process.common_info_address(), 0x140005000u);
  EXPECT_EQ(process.common_probe_attempts(), 1u);
  EXPECT_EQ(target.system.context(process.thread_handle()).rip, 0x1234u);  // put back

  EXPECT_TRUE(process.probe_common_info());
  EXPECT_EQ(calls, 1);
}

TEST_F(CommonProbeAtStopTest, AProgramWithoutTheRoutineCostsThreeLookUpsAndNoCall) {
  image.routine("MAIN", 0x1000, 0x10);
  load(image, L"C:\\build\\prog.exe", true);
  EXPECT_TRUE(process.probe_common_info());
  EXPECT_TRUE(process.probe_common_info());
  EXPECT_EQ(process.common_probe_attempts(), 3u);
  EXPECT_EQ(process.common_info_address(), ~Address{0});
  EXPECT_EQ(target.system.counters.continues, 0u);
  EXPECT_EQ(process.common_block_address("/A/"), 0u);
}

}  // namespace
}  // namespace vantor
