#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "common/messages.h"
#include "debuginfo/module.h"
#include "process/debugged_process.h"
#include "support/debug_image_builder.h"
#include "support/fake_target.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

using os::InMemorySystem;

constexpr Address kImageBase = 0x140000000;

// Records what the event loop asked of the window library; can press Pause on a chosen
// yield, as a user would while the program runs.
class RecordingLibrary : public winlib::HeadlessLibrary {
 public:
  RecordingLibrary() : previous_(&winlib::window_library()) { winlib::set_window_library(this); }
  ~RecordingLibrary() override { winlib::set_window_library(previous_ == this ? nullptr : previous_); }
  void yield_program_control() override {
    ++yields;
    if (yields == pause_on_yield && on_pause) on_pause();
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

  static os::DebugEvent event(std::uint32_t kind) {
    os::DebugEvent e;
    e.kind = kind;
    e.process_id = InMemorySystem::kProcessId;
    e.thread_id = InMemorySystem::kThreadId;
    return e;
  }
  static os::DebugEvent create_process() {
    auto e = event(os::kCreateProcessEvent);
    e.image_base = kImageBase;
    e.process = InMemorySystem::kProcessHandle;
    e.thread = InMemorySystem::kThreadHandle;
    return e;
  }
  static os::DebugEvent exception(std::uint32_t code, Address address, std::uint64_t p0 = 0, std::uint64_t p1 = 0) {
    auto e = event(os::kExceptionEvent);
    e.exception_code = code;
    e.exception_address = address;
    e.first_chance = true;
    e.parameter_count = 2;
    e.parameters[0] = p0;
    e.parameters[1] = p1;
    return e;
  }
  static os::DebugEvent exit_process(std::uint32_t code) {
    auto e = event(os::kExitProcessEvent);
    e.exit_code = code;
    return e;
  }

  // The program's image in memory and on file; the handle a creation event carries.
  os::Handle image_file(InMemorySystem& into) {
    image.install(into, L"C:\\work\\prog.exe");
    std::uint32_t error = 0;
    return into.open_file_for_reading(L"C:\\work\\prog.exe", error);
  }
  os::Handle image_file() { return image_file(system()); }
  // The start every program makes, queued in `into`: its creation and the loader's breakpoint.
  void queue_start(InMemorySystem& into) {
    auto creation = create_process();
    creation.file = image_file(into);
    into.queue_event(creation);
    into.queue_event(exception(0x80000003, 0x7FF000001000));
  }

  // The stop message of a program of its own (in a fresh target, which `prepare` may set
  // up) that fails with `failing` after it has started.
  std::string failure_text(const os::DebugEvent& failing,
                           const std::function<void(InMemorySystem&)>& prepare = nullptr) {
    testing::FakeTarget fresh;
    if (prepare) prepare(fresh.system);
    DebuggedProcess program;
    EXPECT_TRUE(program.launch(L"prog.exe"));
    queue_start(fresh.system);
    fresh.system.queue_event(failing);
    EXPECT_EQ(program.run(4), psFailed);
    return program.status_text();
  }

  // Launches and queues the start every program makes: its creation and the loader's
  // breakpoint; then the given events.
  void start(std::initializer_list<os::DebugEvent> events) {
    ASSERT_TRUE(process.launch(L"prog.exe"));
    auto creation = create_process();
    creation.file = image_file();
    system().queue_event(creation);
    system().queue_event(exception(0x80000003, 0x7FF000001000));
    for (const auto& e : events) system().queue_event(e);
  }

  testing::FakeTarget target;
  testing::DebugImageBuilder image{kImageBase};
  RecordingLibrary windows;
  DebuggedProcess process;
};

// ---- launching -----------------------------------------------------------------------------

TEST_F(DebugEventsTest, FailedLaunchSaysWhy) {
  const std::pair<std::uint32_t, const char*> cases[] = {
      {2, "File not found"}, {5, "Could not open executable, error 5"}, {0xC1, "Could not open executable, error c1"}};
  for (auto [error, text] : cases) {
    DebuggedProcess failing;
    system().set_create_process_error(error);
    EXPECT_FALSE(failing.launch(L"missing.exe"));
    EXPECT_EQ(failing.state(), psFailed);
    EXPECT_EQ(failing.status_text(), text);
    EXPECT_FALSE(failing.can_run());
    EXPECT_EQ(failing.run(4), psFailed);  // nothing to run
  }
}

TEST_F(DebugEventsTest, LaunchLeavesTheProgramSuspendedUntilTheFirstRun) {
  ASSERT_TRUE(process.launch(L"\"C:\\my dir\\prog.exe\" a b"));
  EXPECT_EQ(system().created_command_lines.back(), L"\"C:\\my dir\\prog.exe\" a b");
  EXPECT_EQ(process.state(), psPaused);
  EXPECT_TRUE(process.can_run());
  EXPECT_EQ(system().suspend_count, 1);
  auto creation = create_process();
  creation.file = image_file();
  system().queue_event(creation);
  system().queue_event(exception(0x80000003, 0x7FF000001000));
  system().queue_event(exit_process(3));
  EXPECT_EQ(process.run(4), psEnded);
  EXPECT_EQ(process.exit_code(), 3u);
  EXPECT_EQ(system().suspend_count, 0);
  EXPECT_TRUE(process.loader_breakpoint_seen());
  EXPECT_TRUE(process.line_traps_armed());
  ASSERT_EQ(process.modules().size(), 1u);
  EXPECT_EQ(process.modules()[0]->load_base(), kImageBase);
  EXPECT_TRUE(process.modules()[0]->main_image());
  EXPECT_TRUE(process.modules()[0]->has_routine_map());
  // The creation and the loader's breakpoint were continued; the end was not.
  EXPECT_EQ(system().continue_statuses, (std::vector<std::uint32_t>{os::kContinue, os::kContinue}));
}

// ---- traps ---------------------------------------------------------------------------------

TEST_F(DebugEventsTest, TrapsAfterTheLoaderBreakpointStopAndTheNextRunContinuesThem) {
  start({exception(0x80000003, kImageBase + 0x1010), exception(0x80000004, kImageBase + 0x1020)});
  system().context().rip = kImageBase + 0x1011;
  EXPECT_EQ(process.run(4), psStopped);
  EXPECT_EQ(process.stop_reason(), kStopCodeTrap);
  EXPECT_EQ(process.context().rip, kImageBase + 0x1011);  // registers read at the stop
  EXPECT_EQ(system().continue_statuses.size(), 2u);
  EXPECT_EQ(process.run(3), psStopped);  // the single step
  EXPECT_EQ(system().continue_statuses.size(), 3u);
  system().queue_event(exit_process(0));
  EXPECT_EQ(process.run(4), psEnded);
  EXPECT_EQ(system().continue_statuses.size(), 4u);
}

TEST_F(DebugEventsTest, SilentSessionPassesOverTheFirstStopOnly) {
  process.set_silent(true);
  start({exception(0x80000003, kImageBase + 0x1010), exception(0x80000003, kImageBase + 0x1020)});
  system().context().rip = kImageBase + 0x1021;
  EXPECT_EQ(process.run(4), psStopped);
  EXPECT_EQ(process.context().rip, kImageBase + 0x1021);
  EXPECT_FALSE(process.line_traps_armed());
  EXPECT_EQ(system().continue_statuses.size(), 3u);
}

TEST_F(DebugEventsTest, OneInstructionSetsTheTrapFlagAndOtherModesClearIt) {
  start({exception(0x80000004, kImageBase + 0x1001)});
  EXPECT_EQ(process.run(6), psStopped);
  EXPECT_NE(system().context().eflags & os::kTrapFlag, 0u);
  system().queue_event(exit_process(0));
  process.run(4);
  EXPECT_EQ(system().context().eflags & os::kTrapFlag, 0u);
}

TEST_F(DebugEventsTest, TheLoaderBreakpointArmsTheLineTrapsAndGoDisarmsThem) {
  start({exception(0x80000003, kImageBase + 0x1009)});
  const Address main = image.address_of("main");
  EXPECT_EQ(process.run(3), psStopped);
  EXPECT_EQ(system().peek(main, 1)[0], 0xCC);
  EXPECT_EQ(system().peek(main + 9, 1)[0], 0xCC);
  EXPECT_EQ(system().peek(main + 1, 1)[0], system().peek(main + 2, 1)[0]);  // code between lines untouched
  system().queue_event(exit_process(0));
  process.disarm_line_traps();
  EXPECT_EQ(system().peek(main, 1)[0], 0x90);
  EXPECT_EQ(system().peek(main + 9, 1)[0], 0x90);
  EXPECT_EQ(process.run(4), psEnded);
}

// ---- access violations and run-time errors ---------------------------------------------------

TEST_F(DebugEventsTest, AccessViolationsNameTheAccessAndTheAddress) {
  struct Case {
    std::uint64_t access;
    Address address;
    const char* text;
  };
  const Case cases[] = {
      {0, 0, "Access Violation reading address 0x0000000000000000"},
      {1, 0x10, "Access Violation writing address 0x0000000000000010"},
      {8, 0x7FFE12345670, "Access Violation executing address 0x00007FFE12345670"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(failure_text(exception(0xC0000005, kImageBase + 0x1234, c.access, c.address)), c.text);
  }
}

TEST_F(DebugEventsTest, TheLibrarysErrorTrapIsReadFromTheRegisters) {
  struct Case {
    std::int64_t number;
    const char* text_in_program;
    std::string message;
  };
  const Case cases[] = {
      {29, "LAPACK_SOLVE", "Call to missing routine: LAPACK_SOLVE"},
      {345, "Bad input on unit 5", "Bad input on unit 5"},
      {11, "", "Run-time error 11: Array subscript out of bounds"},
      {0, "", "Run-time error 0"},
      {-1, "", "Run-time error -1"},
      {448, "", "Run-time error 448"},
  };
  const Address trap = kImageBase + 0x8000;
  const Address text = 0x500000;
  for (const auto& c : cases) {
    auto registers_and_text = [&](InMemorySystem& fresh) {
      const std::uint8_t int9[] = {0xCD, 0x09};
      fresh.poke(trap, int9, 2);
      fresh.poke(text, c.text_in_program, std::strlen(c.text_in_program) + 1);
      fresh.context().rcx = static_cast<std::uint64_t>(c.number);
      fresh.context().rdx = text;
    };
    EXPECT_EQ(failure_text(exception(0xC0000005, trap, 0, 0xFFFFFFFFFFFFFFFF), registers_and_text), c.message);
  }
}

TEST_F(DebugEventsTest, OtherInterruptBytesAreAnOrdinaryAccessViolation) {
  const std::uint8_t int3_form[] = {0xCD, 0x03};
  system().poke(kImageBase + 0x8000, int3_form, 2);
  system().context().rcx = 40;
  start({exception(0xC0000005, kImageBase + 0x8000, 0, 0xFFFFFFFFFFFFFFFF)});
  EXPECT_EQ(process.run(4), psFailed);
  EXPECT_EQ(process.status_text(), "Access Violation reading address 0xFFFFFFFFFFFFFFFF");
}

// ---- other exceptions ----------------------------------------------------------------------

TEST_F(DebugEventsTest, UnhandledExceptionsStopWithTheirNameOrCode) {
  const std::pair<std::uint32_t, const char*> cases[] = {{0xC0000094, "Integer Division by zero"},
                                                         {0xC00000FD, "Stack overflow"},
                                                         {0x80000002, "Datatype misalignment"},
                                                         {0xE0001234, "Exception 0xE0001234"}};
  for (auto [code, text] : cases) {
    EXPECT_EQ(failure_text(exception(code, kImageBase + 0x1000)), text);
  }
}

TEST_F(DebugEventsTest, IgnoredCodesAndCodesWithoutTheHighBitGoBackToTheProgram) {
  process.add_ignored_exception(0xE0005678);
  start({exception(0xE0005678, kImageBase + 0x1000), exception(0x406D1388, kImageBase + 0x1000),
         exception(0x40010005, kImageBase + 0x1000), exit_process(7)});
  EXPECT_EQ(process.run(4), psEnded);
  EXPECT_EQ(process.exit_code(), 7u);
  EXPECT_EQ(system().continue_statuses,
            (std::vector<std::uint32_t>{os::kContinue, os::kContinue, os::kExceptionNotHandled,
                                        os::kExceptionNotHandled, os::kExceptionNotHandled}));
}

TEST_F(DebugEventsTest, ANamedAccessViolationReachesTheProgramFirstAndStopsItUnhandled) {
  process.add_ignored_exception(0xC0000005);
  auto second_chance = exception(0xC0000005, kImageBase + 0x1234, 1, 0x10);
  second_chance.first_chance = false;
  start({exception(0xC0000005, kImageBase + 0x1234, 1, 0x10), second_chance});
  EXPECT_EQ(process.run(4), psFailed);
  EXPECT_EQ(process.status_text(), "Access Violation writing address 0x0000000000000010");
  EXPECT_EQ(system().continue_statuses,
            (std::vector<std::uint32_t>{os::kContinue, os::kContinue, os::kExceptionNotHandled}));
}

TEST_F(DebugEventsTest, TheLibrarysErrorTrapStopsEvenWhenAccessViolationsAreNamed) {
  process.add_ignored_exception(0xC0000005);
  const std::uint8_t int9[] = {0xCD, 0x09};
  system().poke(kImageBase + 0x8000, int9, 2);
  system().context().rcx = 11;
  start({exception(0xC0000005, kImageBase + 0x8000, 0, 0xFFFFFFFFFFFFFFFF)});
  EXPECT_EQ(process.run(4), psFailed);
  EXPECT_EQ(process.status_text(), "Run-time error 11: Array subscript out of bounds");
}

// ---- the process, its threads and libraries ------------------------------------------------

TEST_F(DebugEventsTest, AThirtyTwoBitProgramIsRefused) {
  system().set_32bit(true);
  ASSERT_TRUE(process.launch(L"prog32.exe"));
  system().queue_event(create_process());
  EXPECT_EQ(process.run(4), psFailed);
  EXPECT_EQ(process.status_text(), "Not a 64-bit program");
  EXPECT_TRUE(process.modules().empty());
}

TEST_F(DebugEventsTest, LibrariesComeAndGoNewestFirst) {
  auto load = [this](Address base) {
    auto e = event(os::kLoadDllEvent);
    e.image_base = base;
    e.file = image_file();
    return e;
  };
  auto unload = event(os::kUnloadDllEvent);
  unload.image_base = 0x7FF100000000;
  start({load(0x7FF100000000), load(0x7FF200000000), unload, exception(0x80000003, kImageBase + 0x10)});
  EXPECT_EQ(process.run(4), psStopped);
  ASSERT_EQ(process.modules().size(), 2u);
  EXPECT_EQ(process.modules()[0]->load_base(), 0x7FF200000000u);
  EXPECT_FALSE(process.modules()[0]->main_image());
  EXPECT_EQ(process.modules()[1]->load_base(), kImageBase);
}

TEST_F(DebugEventsTest, ThreadAndStringEventsRunOnAndUnknownKindsAreNamed) {
  auto thread = event(os::kCreateThreadEvent);
  thread.thread_id = 0x30;
  thread.thread = 0x300;
  auto thread_exit = event(os::kExitThreadEvent);
  thread_exit.thread_id = 0x30;
  auto other_process = exception(0xC0000005, 0x10);
  other_process.process_id = 0x99;
  start({thread, event(os::kOutputDebugStringEvent), event(os::kRipEvent), thread_exit, other_process,
         exit_process(0)});
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(process.run(4), psEnded);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Event 9\n");
  EXPECT_EQ(system().continue_statuses.size(), 7u);
}

TEST_F(DebugEventsTest, AStopInAnotherThreadReadsThatThreadsRegisters) {
  auto thread = event(os::kCreateThreadEvent);
  thread.thread_id = 0x30;
  thread.thread = 0x300;
  auto trap = exception(0x80000003, kImageBase + 0x50);
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
  auto odd = create_process();
  odd.file = image_file();
  odd.thread_id = 0x77;
  system().queue_event(odd);
  system().queue_event(exit_process(0));
  ::testing::internal::CaptureStdout();
  process.run(4);
  EXPECT_NE(::testing::internal::GetCapturedStdout().find(
                "Error: Assert failure: expr = event.dwThreadId == process_info.dwThreadId\nfile = DebuggedProcess\n"),
            std::string::npos);
}

// ---- waiting and pausing -------------------------------------------------------------------

TEST_F(DebugEventsTest, PauseStopsTheRunningProgramAndTheNextRunResumesIt) {
  start({});
  windows.pause_on_yield = 9;  // each quiet wait is 500 ms: the waiting window is up by then
  EXPECT_EQ(process.run(4), psPaused);
  EXPECT_EQ(process.status_text(), "Program Paused");
  EXPECT_EQ(windows.waiting_windows_shown, 1);
  EXPECT_EQ(windows.waiting_windows_closed, 1);
  EXPECT_EQ(system().suspend_count, 1);
  system().queue_event(exit_process(0));
  EXPECT_EQ(process.run(4), psEnded);
  EXPECT_EQ(system().suspend_count, 0);
}

TEST_F(DebugEventsTest, TheWaitingWindowWaitsThreeSecondsAndNeverComesInASilentSession) {
  start({});
  int waits = 0;
  system().on_wait = [&](InMemorySystem& s) {
    if (++waits == 6) s.queue_event(exit_process(0));
  };
  process.run(4);  // 2.5 s of waiting
  EXPECT_EQ(windows.waiting_windows_shown, 0);

  testing::FakeTarget fresh;
  DebuggedProcess silent;
  silent.set_silent(true);
  ASSERT_TRUE(silent.launch(L"prog.exe"));
  waits = 0;
  fresh.system.on_wait = [&](InMemorySystem& s) {
    if (++waits == 20) s.queue_event(exit_process(0));
  };
  EXPECT_EQ(silent.run(4), psEnded);
  EXPECT_EQ(windows.waiting_windows_shown, 0);
}

TEST_F(DebugEventsTest, PausingAProgramThatIsNotRunningBreaksAnInvariant) {
  ASSERT_TRUE(process.launch(L"prog.exe"));
  ::testing::internal::CaptureStdout();
  process.pause();
  EXPECT_NE(::testing::internal::GetCapturedStdout().find(
                "Error: Assert failure: expr = state == psRunning\nfile = DebuggedProcess\nline = "),
            std::string::npos);
}

// ---- ending --------------------------------------------------------------------------------

TEST_F(DebugEventsTest, EndTerminatesAndDetaches) {
  start({exception(0xC0000005, kImageBase + 0x10, 0, 0)});
  EXPECT_EQ(process.run(4), psFailed);
  std::size_t continues = system().continue_statuses.size();
  process.end();
  EXPECT_TRUE(system().terminated);
  EXPECT_EQ(system().process_exit_code, 0u);
  EXPECT_FALSE(process.launched());
  // The failing event twice, then the final round.
  EXPECT_GE(system().continue_statuses.size(), continues + 2 + 50);
  process.end();  // a second end has nothing left to do
  EXPECT_GE(system().continue_statuses.size(), continues + 52);
}

TEST_F(DebugEventsTest, EndLeavesThroughTheProgramsExitRoutine) {
  start({exception(0x80000003, kImageBase + 0x1010)});
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

TEST_F(DebugEventsTest, EndBeforeAnyRunStillTerminates) {
  ASSERT_TRUE(process.launch(L"prog.exe"));
  process.end();
  EXPECT_TRUE(system().terminated);
  DebuggedProcess never_launched;
  system().terminated = false;
  never_launched.end();
  EXPECT_FALSE(system().terminated);
}

// ---- deferred work -------------------------------------------------------------------------

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
