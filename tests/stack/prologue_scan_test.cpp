// Prologue scans over real instruction bytes: each case is the code of a routine placed
// at kStart in fake memory, decoded by the debugger's own decoder, and scanned up to a pc.
#include "stack/prologue_scan.h"

#include <gtest/gtest.h>

#include "support/fake_target.h"

namespace vantor {
namespace {

constexpr Address kStart = 0x140001000;
constexpr std::uint32_t kLeadWord = 0x3000;

class PrologueScanTest : public ::testing::Test {
 protected:
  // The scan of `code` up to kStart + `pc`: whether it ended, the frame size it found and
  // whether it used up its twenty instructions.
  void expect_scan(const std::vector<std::uint8_t>& code, Address pc, bool ended, std::uint32_t allocation,
                   bool reached_limit = false) {
    SCOPED_TRACE(::testing::Message() << "pc +" << pc);
    target.system.poke(kStart, code);
    ProgramCode program(target.memory);
    PrologueScan scan = scan_prologue(program, kStart, kStart + pc, kLeadWord);
    EXPECT_EQ(scan.ended, ended);
    EXPECT_EQ(scan.allocation, allocation);
    EXPECT_EQ(scan.reached_limit, reached_limit);
  }
  testing::FakeTarget target;
};

// The frame size counts only once the pc is strictly above the allocation.
TEST_F(PrologueScanTest, SmallFrame) {
  const std::vector<std::uint8_t> code = {
      0x90,                    // +0  nop                  (line start)
      0x48, 0x83, 0xEC, 0x28,  // +1  sub_q       RSP,28
      0x90,                    // +5  nop                  (first body line)
      0xC3,                    // +6  ret
  };
  expect_scan(code, 6, true, 0x28);
  expect_scan(code, 5, true, 0);
  expect_scan(code, 0, true, 0);
}

TEST_F(PrologueScanTest, ArmedLineTrapAndWideImmediateAreScannedPast) {
  const std::vector<std::uint8_t> code = {
      0xCC,                                      // +0  int   3           (line trap armed)
      0x48, 0x81, 0xEC, 0x00, 0x02, 0x00, 0x00,  // +1  sub_q       RSP,200
      0x90,                                      // +8  nop
  };
  expect_scan(code, 9, true, 0x200);
}

// The probe has lowered the stack pointer once the call returns, but the strict rule
// leaves the instruction after the call itself unwound without it.
TEST_F(PrologueScanTest, LargeFrameThroughTheProbeCall) {
  const std::vector<std::uint8_t> code = {
      0x90,                                                        // +0   nop
      0x48, 0xB8, 0x00, 0x20, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // +1   mov_q       RAX,2000
      0xFF, 0x15, 0x40, 0x00, 0x00, 0x00,                          // +11  call       [40+RIP]
      0x90,                                                        // +17  nop  (first body line)
      0xC3,                                                        // +18  ret
  };
  expect_scan(code, 18, true, 0x2000);
  expect_scan(code, 17, true, 0);
  expect_scan(code, 11, true, 0);
}

TEST_F(PrologueScanTest, SizeLoadNotFollowedByACallIsScannedOnFromTheNextInstruction) {
  const std::vector<std::uint8_t> code = {
      0x48, 0xB8, 0x10, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // +0   mov_q       RAX,10
      0x48, 0x83, 0xEC, 0x38,                                      // +10  sub_q       RSP,38
      0x90,                                                        // +14  nop
  };
  expect_scan(code, 15, true, 0x38);
}

TEST_F(PrologueScanTest, AnythingElseFallsBackOnTheLeadWord) {
  // The push is neither prologue form.
  expect_scan({0x90,                      // +0  nop
               0x53,                      // +1  push       RBX
               0x48, 0x83, 0xEC, 0x20},   // +2  sub_q       RSP,20
              6, true, kLeadWord);
  // The 32-bit load's text has one space too few to match.
  expect_scan({0xB8, 0x00, 0x20, 0x00, 0x00,         // +0  mov       RAX,2000   (32-bit form)
               0xFF, 0x15, 0x40, 0x00, 0x00, 0x00},  // +5  call       [40+RIP]
              12, true, kLeadWord);
}

TEST_F(PrologueScanTest, TwentyInstructionsAtMost) {
  auto nops_then_sub = [](int nops) {
    std::vector<std::uint8_t> code(static_cast<std::size_t>(nops), 0x90);  // +0 .. nop
    for (std::uint8_t b : {0x48, 0x83, 0xEC, 0x28}) code.push_back(b);    // +nops  sub_q       RSP,28
    return code;
  };
  expect_scan(nops_then_sub(18), 0x40, true, 0x28);        // the 19th: the walk may go on
  expect_scan(nops_then_sub(19), 0x40, true, 0x28, true);  // the 20th: the walk ends after this frame
  expect_scan(nops_then_sub(20), 0x40, false, 0, true);    // never decoded: no frame size, no return slot
}

}  // namespace
}  // namespace vantor
