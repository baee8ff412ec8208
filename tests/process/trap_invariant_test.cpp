// Random sessions of breakpoint edits, runs in every mode, trap stops, pauses and exception
// stops over a fake image. Whatever the order, only live traps differ from the image: the
// line starts while the traps are armed, and the breakpoints while they are planted.
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "process/stepping.h"
#include "support/fake_breakpoint_host.h"

namespace vantor {
namespace {

class TrapInvariantTest : public ::testing::TestWithParam<unsigned> {
 protected:
  static constexpr Address kCode = 0x401000;
  static constexpr std::size_t kCodeSize = 0x200;
  static constexpr int kLines = 24;

  void SetUp() override {
    std::mt19937 bytes(7);
    image.resize(kCodeSize);
    for (auto& byte : image) byte = static_cast<std::uint8_t>(bytes() % 0xC0);  // never a trap byte
    target.system.poke(kCode, image);
    for (int line = 1; line <= kLines; ++line) {
      Address address = kCode + static_cast<Address>(line) * 16 + line % 5;
      host.add_line("prog.f95", line, address);
      image[address - kCode] = 0x90;
      line_starts.insert(address);
    }
    host.depth = 2;
    host.return_slots = {0x7ff00100, 0x7ff00200};
  }

  std::set<Address> breakpoint_addresses() const {
    std::set<Address> out;
    for (int i = 0; i < list.count(); ++i)
      if (!list.breakpoint(i)->is_data()) out.insert(list.breakpoint(i)->address);
    return out;
  }

  void expect_only_live_traps(const char* when) {
    auto memory = target.system.peek(kCode, kCodeSize);
    auto breakpoints = breakpoint_addresses();
    for (std::size_t i = 0; i < kCodeSize; ++i) {
      Address address = kCode + i;
      bool live = (list.line_traps_armed() && line_starts.count(address)) ||
                  (list.planted() && breakpoints.count(address));
      if (!live) {
        ASSERT_EQ(memory[i], image[i]) << when << " at +" << std::hex << i;
      } else if (list.planted() && breakpoints.count(address)) {
        ASSERT_EQ(memory[i], 0xCC) << when << ": breakpoint not planted at +" << std::hex << i;
      }
    }
  }

  // While the program runs, every armed line start and every breakpoint must trap.
  void expect_all_traps_in_place() {
    auto memory = target.system.peek(kCode, kCodeSize);
    for (Address address : breakpoint_addresses()) {
      ASSERT_EQ(memory[address - kCode], 0xCC);
    }
    if (list.line_traps_armed()) {
      for (Address address : line_starts) {
        ASSERT_EQ(memory[address - kCode], 0xCC);
      }
    }
  }

  std::vector<std::uint8_t> image;
  std::set<Address> line_starts;
  testing::FakeTarget target;
  testing::FakeBreakpointHost host{target};
  HardwareSlots slots;
  BreakpointList list{host, slots};
  Stepping stepping{host, list, slots};
};

TEST_P(TrapInvariantTest, MemoryOutsideLiveTrapsEqualsTheImage) {
  std::mt19937 random(GetParam());
  auto pick = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  const std::int32_t modes[] = {kModeStepInto, kModeGo, kModeStepOver, kModeOneInstruction, kModeStepOut};
  int stops = 0;

  for (int step = 0; step < 300; ++step) {
    // ---- while stopped: edit the breakpoints
    switch (pick(6)) {
      case 0:
      case 1: list.set_breakpoint("prog.f95", 1 + pick(kLines), pick(3), 1 + pick(2), ""); break;
      case 2:
        if (list.count() > 0) list.remove_breakpoint(list.breakpoint(pick(list.count()))->id);
        break;
      case 3:
        if (pick(8) == 0) list.clear_breakpoints();
        break;
      case 4:
        if (slots.free_hardware_slots() > 0) list.set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, 0x6000, 4);
        break;
      default: break;
    }
    expect_only_live_traps("after an edit");

    // ---- run in some mode until a stop
    std::int32_t mode = modes[pick(5)];
    if (mode == kModeStepInto || mode == kModeStepOver || mode == kModeStepOut)
      list.arm_line_traps();
    else
      list.disarm_line_traps();
    stepping.start_run(mode);
    for (int event = 0;; ++event) {
      expect_all_traps_in_place();
      if (event > 30 || pick(10) == 0) {  // paused: the program is held with its traps in
        if (list.count() > 0 && pick(2)) list.remove_breakpoint(list.breakpoint(0)->id);
        expect_only_live_traps("paused");
        break;
      }
      if (pick(12) == 0) {  // an access violation or a run-time error
        stepping.at_exception_stop();
        expect_only_live_traps("after an exception stop");
        break;
      }
      // A trap can only come from a byte that holds one.
      std::vector<Address> traps;
      auto memory = target.system.peek(kCode, kCodeSize);
      for (Address address : line_starts)
        if (memory[address - kCode] == 0xCC) traps.push_back(address);
      host.context().dr6 = 0;
      host.context().rsp = 0x7ff00000 + static_cast<Address>(pick(3)) * 0x80;
      TrapVerdict verdict = traps.empty()
                                ? stepping.at_trap(mode, kSingleStepException, kCode)
                                : stepping.at_trap(mode, kBreakpointException, traps[static_cast<std::size_t>(pick(static_cast<int>(traps.size())))]);
      if (verdict.stop) {
        ++stops;
        expect_only_live_traps("after a trap stop");
        break;
      }
    }
  }
  EXPECT_GT(stops, 80);
}

INSTANTIATE_TEST_SUITE_P(Seeds, TrapInvariantTest, ::testing::Values(1u, 2u, 3u));

}  // namespace
}  // namespace vantor
