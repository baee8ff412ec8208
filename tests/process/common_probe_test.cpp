#include "process/common_probe.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/fake_target.h"
#include "support/scripted_events.h"

namespace vantor {
namespace {

using os::InMemorySystem;
using testing::exception_event;

constexpr Address kRoutine = 0x140001000;
constexpr Address kStack = 0x22F000;

class CommonProbeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    target.system.map(kStack - 0x1000, 0x2000);
    stopped.rip = 0x140002345;
    stopped.rsp = kStack + 0x13;  // deliberately misaligned: a stop can come anywhere
    stopped.rax = 0x1111;
    stopped.rcx = 0x2222;
    stopped.eflags = 0x346;  // trap flag and direction flag set
    stopped.dr7 = 0x1;
    stopped.r15 = 0x9999;
    target.system.context() = stopped;
  }

  TargetCall call() const {
    return {InMemorySystem::kProcessHandle, InMemorySystem::kThreadHandle, InMemorySystem::kProcessId,
            InMemorySystem::kThreadId, kRoutine, 2000};
  }

  // Runs the routine in the fake: when the thread stands at its entry, it answers `rax` and
  // returns through the address on its stack.
  void routine_answers(std::uint64_t rax) {
    target.system.on_wait = [this, rax](InMemorySystem& system) {
      os::ThreadContext& cpu = system.context();
      if (cpu.rip != kRoutine) return;
      entry = cpu;
      std::uint64_t return_address = 0;
      std::vector<std::uint8_t> slot = system.peek(cpu.rsp, 8);
      std::memcpy(&return_address, slot.data(), 8);
      cpu.rax = rax;
      cpu.rip = return_address;
      cpu.rsp += 8;
      system.queue_event(exception_event(kAccessViolation, return_address));
    };
  }

  testing::FakeTarget target;
  os::ThreadContext stopped;
  os::ThreadContext entry;
};

TEST_F(CommonProbeTest, CallsLikeACallerWouldAndPutsTheThreadBack) {
  routine_answers(0x140009000);
  TargetCallOutcome outcome = call_in_stopped_thread(target.memory, call());

  EXPECT_TRUE(outcome.returned);
  EXPECT_EQ(outcome.rax, 0x140009000u);
  EXPECT_EQ(outcome.after, TargetCallOutcome::kEventPending);

  // At entry: a return address on top, 16-byte alignment after it, shadow area and red
  // zone clear of the stopped stack, nothing that could trap inside the routine.
  EXPECT_EQ((entry.rsp + 8) % 16, 0u);
  EXPECT_LE(entry.rsp + 8 + 32, stopped.rsp - 128);
  EXPECT_EQ(entry.rsp, probe_entry_stack_pointer(stopped.rsp));
  EXPECT_EQ(entry.eflags & 0x500u, 0u);
  EXPECT_EQ(entry.eflags & 0x46u, 0x46u);
  EXPECT_EQ(entry.dr7, 0u);
  EXPECT_EQ(entry.rcx, 0u);
  EXPECT_EQ(entry.r15, 0x9999u);

  const os::ThreadContext& after = target.system.context();
  EXPECT_EQ(after.rip, stopped.rip);
  EXPECT_EQ(after.rsp, stopped.rsp);
  EXPECT_EQ(after.rax, stopped.rax);
  EXPECT_EQ(after.eflags, stopped.eflags);
  EXPECT_EQ(after.dr7, stopped.dr7);
  // Only the stop's event was continued; the probe's own fault is left pending.
  EXPECT_EQ(target.system.continue_statuses, std::vector<std::uint32_t>{os::kContinue});
}

TEST_F(CommonProbeTest, LineTrapsOnTheWayAreRunThroughAndOtherThreadsFaultsPassedBack) {
  bool first = true;
  target.system.on_wait = [&](InMemorySystem& system) {
    if (!first) return;
    first = false;
    system.queue_event(exception_event(kBreakpointException, kRoutine));
    os::DebugEvent other_thread = exception_event(0xC0000094, 0x140003000);
    other_thread.thread_id = InMemorySystem::kThreadId + 4;
    system.queue_event(other_thread);
    os::ThreadContext& cpu = system.context();
    cpu.rax = 7;
    cpu.rip = kProbeReturnTrap;
    system.queue_event(exception_event(kAccessViolation, kProbeReturnTrap));
  };
  TargetCallOutcome outcome = call_in_stopped_thread(target.memory, call());
  EXPECT_TRUE(outcome.returned);
  EXPECT_EQ(outcome.rax, 7u);
  EXPECT_EQ(target.system.continue_statuses,
            (std::vector<std::uint32_t>{os::kContinue, os::kContinue, os::kExceptionNotHandled}));
}

TEST_F(CommonProbeTest, AFaultInsideTheRoutineAbandonsTheCall) {
  target.system.on_wait = [](InMemorySystem& system) {
    if (system.queued_events() == 0 && system.context().rip == kRoutine) {
      system.context().rip = kRoutine + 0x10;
      system.queue_event(exception_event(kAccessViolation, kRoutine + 0x10));
    }
  };
  TargetCallOutcome outcome = call_in_stopped_thread(target.memory, call());
  EXPECT_FALSE(outcome.returned);
  EXPECT_EQ(outcome.after, TargetCallOutcome::kEventPending);
  EXPECT_EQ(target.system.context().rip, stopped.rip);
  EXPECT_EQ(target.system.context().rsp, stopped.rsp);
}

TEST_F(CommonProbeTest, ARoutineThatNeverReturnsLeavesTheThreadSuspendedAsItWas) {
  int suspended_before = target.system.suspend_count;
  TargetCallOutcome outcome = call_in_stopped_thread(target.memory, call());
  EXPECT_FALSE(outcome.returned);
  EXPECT_EQ(outcome.after, TargetCallOutcome::kThreadSuspended);
  EXPECT_EQ(target.system.suspend_count, suspended_before + 1);
  EXPECT_EQ(target.system.context().rip, stopped.rip);
  EXPECT_EQ(target.system.counters.waits, 4u);  // 500 ms slices up to the 2 s limit
}

TEST_F(CommonProbeTest, TheProgramEndingDuringTheCallIsReported) {
  target.system.on_wait = [](InMemorySystem& system) {
    if (system.queued_events() > 0) return;
    system.queue_event(testing::exit_process_event(3));
  };
  TargetCallOutcome outcome = call_in_stopped_thread(target.memory, call());
  EXPECT_EQ(outcome.after, TargetCallOutcome::kProcessEnded);
  EXPECT_EQ(outcome.exit_code, 3u);
}

TEST_F(CommonProbeTest, AnUnwritableStackChangesNothing) {
  target.system.unmap(kStack - 0x1000, 0x2000);
  TargetCallOutcome outcome = call_in_stopped_thread(target.memory, call());
  EXPECT_FALSE(outcome.returned);
  EXPECT_EQ(outcome.after, TargetCallOutcome::kEventPending);
  EXPECT_EQ(target.system.counters.set_contexts, 0u);
  EXPECT_EQ(target.system.counters.continues, 0u);
}

}  // namespace
}  // namespace vantor
