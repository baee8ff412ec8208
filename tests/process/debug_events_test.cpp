// The debug-event loop over scripted events: what the Wine tests cannot make a real program
// do (refusals, odd events, invariants, the end through the exit routine).
#include <gtest/gtest.h>

#include <functional>

#include "common/messages.h"
#include "debuginfo/module.h"
#include "process/debugged_process.h"
#include "support/fake_target.h"
#include "support/scripted_events.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

using os::InMemorySystem;
using testing::debug_event;
using testing::exception_event;
using testing::exit_process_event;

constexpr Address kImageBase = 0x140000000;

// Records what the event loop asked of the window library; can press Pause on a chosen
// yield, as a user would while the program runs.
class RecordingLibrary : public winlib::HeadlessLibrary {
 public:
  RecordingLibrary() : previous_(&winlib::window_library()) { winlib::set_window_library(this); }
  ~RecordingLibrary() override { winlib::set_window_library(previous_ == this ? nullptr : previous_); }
  void yield_program_control() override {
    if (++yields == pause_on_yield && on_pause) on_pause();
  }
  void show_waiting_window(std::function<void()> pause) override {
    ++waiting_windows_shown;
    on_pause = std::move(pause);
  }
  void close_waiting_window() override { ++waiting_windows_closed; }

  int yields = 0;
  int pause_on_yield = -1;
  int waiting_windows_shown = 0;
  int waiting_windows_closed = 0;
  std::function<void()> on_pause;

 private:
  winlib::WindowLibrary* previous_;
};

class DebugEventsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ConsoleMode = true;
    image.routine("main", 0x1000, 0x40).line(3, 0).line(4, 9);
    image.routine("exit", 0x2000, 0x10).line(90, 0);
  }
  void TearDown() override { ConsoleMode = false; }

  InMemorySystem& system() { return target.system; }

  // Launches and queues the start every program makes, then the given events.
  void start(std::initializer_list<os::DebugEvent> events) {
    ASSERT_TRUE(process.launch(L"prog.exe"));
    testing::queue_program_start(system(), image, L"C:\\work\\prog.exe");
    for (const auto& e : events) system().queue_event(e);
  }
  // What a run printed (assertion reports, unknown events).
  std::string printed_by(const std::function<void()>& action) {
    ::testing::internal::CaptureStdout();
    action();
    return ::testing::internal::GetCapturedStdout();
  }

  testing::FakeTarget target;
  testing::DebugImageBuilder image{kImageBase};
  RecordingLibrary windows;
  DebuggedProcess process;
};

TEST_F(DebugEventsTest, FailedLaunchSaysWhy) {
  const std::pair<std::uint32_t, const char*> cases[] = {
      {2, "File not found"}, {5, "Could not open executable, error 5"}, {0xC1, "Could not open executable, error c1"}};
  for (auto [error, text] : cases) {
    SCOPED_TRACE(text);
    DebuggedProcess failing;
    system().set_create_process_error(error);
    EXPECT_FALSE(failing.launch(L"missing.exe"));
    EXPECT_EQ(failing.state(), psFailed);
    EXPECT_EQ(failing.status_text(), text);
    EXPECT_FALSE(failing.can_run());
    EXPECT_EQ(failing.run(4), psFailed);  // nothing to run
    failing.end();                        // nor to end
    EXPECT_FALSE(system().terminated);
  }
}

TEST_F(DebugEventsTest, LaunchLeavesTheProgramSuspendedUntilTheFirstRun) {
  ASSERT_TRUE(process.launch(L"\"C:\\my dir\\prog.exe\" a b"));
  EXPECT_EQ(system().created_command_lines.back(), L"\"C:\\my dir\\prog.exe\" a b");
  EXPECT_EQ(process.state(), psPaused);
  EXPECT_EQ(system().suspend_count, 1);
  testing::queue_program_start(system(), image, L"C:\\work\\prog.exe");
  system().queue_event(exit_process_event(3));
  EXPECT_EQ(process.run(4), psEnded);
  EXPECT_EQ(system().suspend_count, 0);
  EXPECT_TRUE(process.line_traps_armed());
  ASSERT_EQ(process.modules().size(), 1u);
  EXPECT_TRUE(process.modules()[0]->has_routine_map());
  // The creation and the loader's breakpoint were continued; the end was not.
  EXPECT_EQ(system().continue_statuses, (std::vector<std::uint32_t>{os::kContinue, os::kContinue}));
}

TEST_F(DebugEventsTest, SilentSessionPassesOverTheFirstStopOnly) {
  process.set_silent(true);
  start({exception_event(0x80000003, kImageBase + 0x1010), exception_event(0x80000003, kImageBase + 0x1020)});
  system().context().rip = kImageBase + 0x1021;
  EXPECT_EQ(process.run(4), psStopped);
  EXPECT_EQ(process.context().rip, kImageBase + 0x1021);
  EXPECT_FALSE(process.line_traps_armed());
  EXPECT_EQ(system().continue_statuses.size(), 3u);
}

// ---- the library's error trap ----------------------------------------------------------------

TEST_F(DebugEventsTest, OnlyTheInterruptNineBytesAreTheLibrarysErrorTrap) {
  const std::uint8_t int3_form[] = {0xCD, 0x03};
  system().poke(kImageBase + 0x8000, int3_form, 2);
  system().context().rcx = 40;
  start({exception_event(0xC0000005, kImageBase + 0x8000, 0, 0xFFFFFFFFFFFFFFFF)});
  EXPECT_EQ(process.run(4), psFailed);
  EXPECT_EQ(process.status_text(), "Access Violation reading address 0xFFFFFFFFFFFFFFFF");
}

TEST_F(DebugEventsTest, TheLibrarysErrorTrapStopsEvenWhenAccessViolationsAreNamed) {
  process.add_ignored_exception(0xC0000005);
  const std::uint8_t int9[] = {0xCD, 0x09};
  system().poke(kImageBase + 0x8000, int9, 2);
  system().context().rcx = 11;
  start({exception_event(0xC0000005, kImageBase + 0x8000, 0, 0xFFFFFFFFFFFFFFFF)});
  EXPECT_EQ(process.run(4), psFailed);
  EXPECT_EQ(process.status_text(), "Run-time error 11: Array subscript out of bounds");
}

// ---- the process, its threads and libraries ------------------------------------------------

TEST_F(DebugEventsTest, AThirtyTwoBitProgramIsRefused) {
  system().set_32bit(true);
  ASSERT_TRUE(process.launch(L"prog32.exe"));
  auto creation = debug_event(os::kCreateProcessEvent);
  creation.image_base = kImageBase;
  creation.process = InMemorySystem::kProcessHandle;
  creation.thread = InMemorySystem::kThreadHandle;
  system().queue_event(creation);
  EXPECT_EQ(process.run(4), psFailed);
  EXPECT_EQ(process.status_text(), "Not a 64-bit program");
  EXPECT_TRUE(process.modules().empty());
}

TEST_F(DebugEventsTest, LibrariesComeAndGoNewestFirst) {
  auto load = [this](Address base) {
    auto e = testing::image_event(os::kLoadDllEvent, system(), image, L"C:\\work\\lib.dll");
    e.image_base = base;
    return e;
  };
  auto unload = debug_event(os::kUnloadDllEvent);
  unload.image_base = 0x7FF100000000;
  start({load(0x7FF100000000), load(0x7FF200000000), unload, exception_event(0x80000003, kImageBase + 0x10)});
  EXPECT_EQ(process.run(4), psStopped);
  ASSERT_EQ(process.modules().size(), 2u);
  EXPECT_EQ(process.modules()[0]->load_base(), 0x7FF200000000u);
  EXPECT_FALSE(process.modules()[0]->main_image());
  EXPECT_EQ(process.modules()[1]->load_base(), kImageBase);
}

TEST_F(DebugEventsTest, UnknownKindsAreNamedAndOtherProcessesEventsRunOn) {
  auto other_process = exception_event(0xC0000005, 0x10);
  other_process.process_id = 0x99;
  start({debug_event(os::kRipEvent), other_process, exit_process_event()});
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(process.run(4), psEnded); }), "Event 9\n");
  EXPECT_EQ(system().continue_statuses.size(), 4u);
}

TEST_F(DebugEventsTest, AStopInAnotherThreadReadsThatThreadsRegisters) {
  auto thread = debug_event(os::kCreateThreadEvent, 0x30);
  thread.thread = 0x300;
  auto trap = exception_event(0x80000003, kImageBase + 0x50);
  trap.thread_id = 0x30;
  system().context(0x300).rip = kImageBase + 0x51;
  system().context().rip = kImageBase + 0x9999;
  start({thread, trap});
  EXPECT_EQ(process.run(4), psStopped);
  EXPECT_EQ(process.event_thread_handle(), 0x300u);
  EXPECT_EQ(process.context().rip, kImageBase + 0x51);
}

TEST_F(DebugEventsTest, ACreationEventFromAnotherThreadBreaksAnInvariant) {
  ASSERT_TRUE(process.launch(L"prog.exe"));
  auto odd = testing::image_event(os::kCreateProcessEvent, system(), image, L"C:\\work\\prog.exe");
  odd.thread_id = 0x77;
  system().queue_event(odd);
  system().queue_event(exit_process_event());
  EXPECT_NE(printed_by([&] { process.run(4); })
                .find("Error: Assert failure: expr = event.dwThreadId == process_info.dwThreadId\n"
                      "file = DebuggedProcess\n"),
            std::string::npos);
}

// ---- waiting and pausing -------------------------------------------------------------------

TEST_F(DebugEventsTest, PauseFromTheWaitingWindowStopsTheRunningProgram) {
  start({});
  windows.pause_on_yield = 9;  // each quiet wait is 500 ms: the waiting window is up by then
  EXPECT_EQ(process.run(4), psPaused);
  EXPECT_EQ(process.status_text(), "Program Paused");
  EXPECT_EQ(windows.waiting_windows_shown, 1);
  EXPECT_EQ(windows.waiting_windows_closed, 1);
  EXPECT_EQ(system().suspend_count, 1);
}

TEST_F(DebugEventsTest, TheWaitingWindowWaitsThreeSecondsAndNeverComesInASilentSession) {
  start({});
  int waits = 0;
  system().on_wait = [&](InMemorySystem& s) {
    if (++waits == 6) s.queue_event(exit_process_event());
  };
  process.run(4);  // 2.5 s of waiting
  EXPECT_EQ(windows.waiting_windows_shown, 0);

  testing::FakeTarget fresh;
  DebuggedProcess silent;
  silent.set_silent(true);
  ASSERT_TRUE(silent.launch(L"prog.exe"));
  waits = 0;
  fresh.system.on_wait = [&](InMemorySystem& s) {
    if (++waits == 20) s.queue_event(exit_process_event());
  };
  EXPECT_EQ(silent.run(4), psEnded);
  EXPECT_EQ(windows.waiting_windows_shown, 0);
}

TEST_F(DebugEventsTest, PausingAProgramThatIsNotRunningBreaksAnInvariant) {
  ASSERT_TRUE(process.launch(L"prog.exe"));
  EXPECT_NE(printed_by([&] { process.pause(); })
                .find("Error: Assert failure: expr = state == psRunning\nfile = DebuggedProcess\nline = "),
            std::string::npos);
}

// ---- ending and deferred work --------------------------------------------------------------

TEST_F(DebugEventsTest, EndLeavesThroughTheProgramsExitRoutine) {
  start({exception_event(0x80000003, kImageBase + 0x1010)});
  system().context().rsp = 0x7000;
  system().map(0x6000, 0x2000);
  system().poke_value<std::uint64_t>(0x7000 - 8, 0x1234);
  EXPECT_EQ(process.run(4), psStopped);
  process.end();
  EXPECT_EQ(system().context().rip, image.address_of("exit"));
  EXPECT_EQ(system().context().rsp, 0x7000u - 8);
  EXPECT_EQ(system().peek(0x7000 - 8, 8), std::vector<std::uint8_t>(8, 0));  // returns nowhere
  EXPECT_TRUE(system().terminated);
}

TEST_F(DebugEventsTest, DeferredItemsMoveInOrderToTheHandledList) {
  process.defer_item("one");
  process.defer_item("two");
  process.drain_deferred_items();
  process.defer_item("three");
  process.drain_deferred_items();
  EXPECT_TRUE(process.deferred_items().empty());
  EXPECT_EQ(process.handled_items(), (std::vector<std::string>{"one", "two", "three"}));
}

}  // namespace
}  // namespace vantor
