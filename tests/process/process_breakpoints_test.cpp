// Breakpoints through the debugged process and its event loop, over scripted debug events
// and images built in fake memory: deferred requests resolved by module loads, counted
// hits that run on inside one run, and data breakpoints reported by the debug status
// register.
#include <gtest/gtest.h>

#include "common/messages.h"
#include "process/debugged_process.h"
#include "support/debug_image_builder.h"
#include "support/fake_target.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

using os::InMemorySystem;

constexpr Address kImageBase = 0x140000000;
constexpr Address kLibraryBase = 0x7FF100000000;

class ProcessBreakpointsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ConsoleMode = true;
    winlib::set_window_library(&windows);
    image.routine("MAIN", 0x1000, 0x40).source("C:\\src\\prog.f95").line(3, 0).line(4, 9).line(5, 0x14);
    library.routine("LIB_WORK", 0x1000, 0x20).source("C:\\src\\lib.f95").line(7, 0).line(8, 6);
  }
  void TearDown() override {
    ConsoleMode = false;
    winlib::set_window_library(nullptr);
  }

  static os::DebugEvent event(std::uint32_t kind) {
    os::DebugEvent e;
    e.kind = kind;
    e.process_id = InMemorySystem::kProcessId;
    e.thread_id = InMemorySystem::kThreadId;
    return e;
  }
  static os::DebugEvent trap(Address address, std::uint32_t code = kBreakpointException) {
    auto e = event(os::kExceptionEvent);
    e.exception_code = code;
    e.exception_address = address;
    e.first_chance = true;
    return e;
  }
  os::DebugEvent load_library() {
    library.install(target.system, L"C:\\src\\lib.dll");
    auto e = event(os::kLoadDllEvent);
    e.image_base = kLibraryBase;
    std::uint32_t error = 0;
    e.file = target.system.open_file_for_reading(L"C:\\src\\lib.dll", error);
    return e;
  }
  // Launches, queues the program's creation and the loader's breakpoint, and steps into
  // its first line as a session begins.
  void start() {
    ASSERT_TRUE(process.launch(L"prog.exe"));
    image.install(target.system, L"C:\\src\\prog.exe");
    auto creation = event(os::kCreateProcessEvent);
    creation.image_base = kImageBase;
    creation.process = InMemorySystem::kProcessHandle;
    creation.thread = InMemorySystem::kThreadHandle;
    std::uint32_t error = 0;
    creation.file = target.system.open_file_for_reading(L"C:\\src\\prog.exe", error);
    target.system.queue_event(creation);
    target.system.queue_event(trap(0x7FF000001000));  // the loader's
    target.system.queue_event(trap(line(3)));
    ASSERT_EQ(command(kModeStepInto), psStopped);
  }
  std::int32_t command(std::int32_t mode) {
    if (mode == kModeStepInto || mode == kModeStepOver || mode == kModeStepOut)
      process.arm_line_traps();
    else
      process.disarm_line_traps();
    return process.run(mode);
  }
  Address line(std::int32_t number) const {
    const Address main = kImageBase + 0x1000;
    return number == 3 ? main : number == 4 ? main + 9 : main + 0x14;
  }
  std::uint8_t byte_at(Address address) { return target.system.peek(address, 1)[0]; }

  testing::FakeTarget target;
  testing::DebugImageBuilder image{kImageBase};
  testing::DebugImageBuilder library{kLibraryBase};
  winlib::HeadlessLibrary windows;
  DebuggedProcess process;
};

TEST_F(ProcessBreakpointsTest, ARunToRequestResolvesWhenTheProgramLoadsAndStopsOnce) {
  process.add_deferred_breakpoint({"prog.f95", "", 4, 1, 1});
  start();
  EXPECT_TRUE(process.deferred_breakpoints().empty());
  ASSERT_EQ(process.breakpoints().count(), 1);
  EXPECT_EQ(process.breakpoints().breakpoint(0)->address, line(4));

  target.system.queue_event(trap(line(4)));
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(process.breakpoints().breakpoint(0)->hits, 1u);
  EXPECT_EQ(byte_at(line(4)), 0x90);  // lifted at the stop
  EXPECT_EQ(byte_at(line(5)), 0x90);  // and the line traps are off under go
}

TEST_F(ProcessBreakpointsTest, CountedHitsRunOnWithinOneRun) {
  start();
  ASSERT_EQ(process.breakpoints().set_breakpoint("prog.f95", 4, 3, 2, ""), 1);
  for (int hit = 0; hit < 5; ++hit) target.system.queue_event(trap(line(4)));
  target.system.queue_event(event(os::kExitProcessEvent));
  const std::size_t continues = target.system.continue_statuses.size();

  ASSERT_EQ(command(kModeGo), psStopped);  // hits 1 and 2 ran on, 3 stops
  EXPECT_EQ(process.breakpoints().breakpoint(0)->hits, 3u);
  EXPECT_EQ(target.system.continue_statuses.size(), continues + 3);
  EXPECT_EQ(byte_at(line(4)), 0x90);
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(process.breakpoints().breakpoint(0)->hits, 5u);
  EXPECT_EQ(command(kModeGo), psEnded);
}

TEST_F(ProcessBreakpointsTest, ABreakpointInALibraryLoadedWhileRunningIsPlantedAtOnce) {
  process.add_deferred_breakpoint({"lib.f95", "", 8, 1, 1});
  start();
  ASSERT_EQ(process.deferred_breakpoints().size(), 1u);
  const Address lib_line = kLibraryBase + 0x1000 + 6;
  target.system.queue_event(load_library());
  target.system.queue_event(trap(lib_line));
  // Look at the code as the program would meet it, after the load and before the trap.
  int waits = 0;
  std::uint8_t byte_when_running = 0;
  target.system.on_wait = [&](InMemorySystem& system) {
    if (++waits == 2) byte_when_running = system.peek(lib_line, 1)[0];
  };
  ASSERT_EQ(command(kModeGo), psStopped);
  target.system.on_wait = nullptr;
  EXPECT_EQ(byte_when_running, 0xCC);
  EXPECT_TRUE(process.deferred_breakpoints().empty());
  EXPECT_EQ(process.breakpoints().breakpoint(0)->hits, 1u);
}

// A library loaded while a step is under way takes part in it: the step stops in its
// routines. Under go its line starts are left as they are.
TEST_F(ProcessBreakpointsTest, ALibraryLoadedDuringAStepGetsItsLineTraps) {
  start();
  const Address lib_first = kLibraryBase + 0x1000, lib_line = lib_first + 6;
  target.system.queue_event(load_library());
  target.system.queue_event(trap(lib_first));
  ASSERT_EQ(command(kModeStepInto), psStopped);
  EXPECT_EQ(byte_at(lib_line), 0xCC);
  ASSERT_EQ(process.breakpoints().set_breakpoint("lib.f95", 8, 1, 1, ""), 1);
  EXPECT_EQ(process.breakpoints().breakpoint(0)->saved_byte, 0x90);  // not the trap it found
  target.system.queue_event(event(os::kExitProcessEvent));
  EXPECT_EQ(command(kModeGo), psEnded);
}

TEST_F(ProcessBreakpointsTest, ALibraryLoadedUnderGoKeepsItsCode) {
  start();
  ASSERT_EQ(process.breakpoints().set_breakpoint("prog.f95", 5, 1, 1, ""), 1);
  target.system.queue_event(load_library());
  target.system.queue_event(trap(line(5)));
  ASSERT_EQ(command(kModeGo), psStopped);
  EXPECT_EQ(byte_at(kLibraryBase + 0x1000), 0x90);
  EXPECT_EQ(byte_at(kLibraryBase + 0x1000 + 6), 0x90);
}

TEST_F(ProcessBreakpointsTest, ADataBreakpointIsKnownByTheDebugStatusRegister) {
  start();
  ASSERT_EQ(process.breakpoints().set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, 0x5000, 4), 0);
  ASSERT_EQ(process.breakpoints().set_hardware_slot(kAccessUse, kSlotDataBreakpoint, 0x5008, 8), 1);
  target.system.queue_event(trap(line(4) + 3, kSingleStepException));
  // The processor reports the hit on slot 1 once the program runs.
  target.system.on_wait = [](InMemorySystem& system) { system.context().dr6 = 0xFFFF0FF2; };
  ASSERT_EQ(command(kModeGo), psStopped);
  target.system.on_wait = nullptr;
  EXPECT_EQ(process.stop_reason(), kStopUseDataBreakpoint);
  EXPECT_EQ(process.breakpoints().find(2)->hits, 1u);
  // What the run programmed: both slots, write then use.
  EXPECT_EQ(process.context().dr0, 0x5000u);
  EXPECT_EQ(process.context().dr1, 0x5008u);
  EXPECT_EQ(process.context().dr7 & 0xFF000Fu, 0xBD0005u);

  target.system.queue_event(event(os::kExitProcessEvent));
  EXPECT_EQ(command(kModeGo), psEnded);
  EXPECT_EQ(target.system.context().dr6 & 0xF, 0u);  // the hit bit was cleared for the next run
}

}  // namespace
}  // namespace vantor
