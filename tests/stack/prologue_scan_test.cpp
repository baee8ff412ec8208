// Prologue scans over real instruction bytes: each case is the code of a routine placed
// at kStart in fake memory, decoded by the debugger's own decoder. The expected frame
// size is stated before the assertions.
#include "stack/prologue_scan.h"

#include <gtest/gtest.h>

#include "support/fake_target.h"

namespace vantor {
namespace {

constexpr Address kStart = 0x140001000;
constexpr std::uint32_t kLeadWord = 0x3000;

class PrologueScanTest : public ::testing::Test {
 protected:
  PrologueScan scan(const std::vector<std::uint8_t>& code, Address pc) {
    target.system.poke(kStart, code);
    ProgramCode program(target.memory);
    return scan_prologue(program, kStart, pc, kLeadWord);
  }
  testing::FakeTarget target;
};

TEST_F(PrologueScanTest, SmallFrameCountsOnlyOnceThePcIsStrictlyAboveTheAllocation) {
  const std::vector<std::uint8_t> code = {
      0x90,                    // +0  nop                  (line start)
      0x48, 0x83, 0xEC, 0x28,  // +1  sub_q       RSP,28
      0x90,                    // +5  nop                  (first body line)
      0xC3,                    // +6  ret
  };
  // Frame size 0x28 from +6 on; at +5, the first instruction after the allocation, none.
  PrologueScan after = scan(code, kStart + 6);
  EXPECT_TRUE(after.ended);
  EXPECT_EQ(after.allocation, 0x28u);
  EXPECT_FALSE(after.reached_limit);

  PrologueScan exactly_after = scan(code, kStart + 5);
  EXPECT_TRUE(exactly_after.ended);
  EXPECT_EQ(exactly_after.allocation, 0u);

  PrologueScan at_first_byte = scan(code, kStart);
  EXPECT_TRUE(at_first_byte.ended);
  EXPECT_EQ(at_first_byte.allocation, 0u);
}

TEST_F(PrologueScanTest, ArmedLineTrapAndWideImmediateAreScannedPast) {
  const std::vector<std::uint8_t> code = {
      0xCC,                                      // +0  int   3           (line trap armed)
      0x48, 0x81, 0xEC, 0x00, 0x02, 0x00, 0x00,  // +1  sub_q       RSP,200
      0x90,                                      // +8  nop
  };
  // Frame size 0x200 once past +8.
  PrologueScan result = scan(code, kStart + 9);
  EXPECT_TRUE(result.ended);
  EXPECT_EQ(result.allocation, 0x200u);
}

TEST_F(PrologueScanTest, LargeFrameThroughTheProbeCall) {
  const std::vector<std::uint8_t> code = {
      0x90,                                                        // +0   nop
      0x48, 0xB8, 0x00, 0x20, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // +1   mov_q       RAX,2000
      0xFF, 0x15, 0x40, 0x00, 0x00, 0x00,                          // +11  call       [40+RIP]
      0x90,                                                        // +17  nop  (first body line)
      0xC3,                                                        // +18  ret
  };
  // Frame size 0x2000 from +18 on: the probe has lowered the stack pointer once the call
  // returns, but the strict rule leaves +17 itself unwound without it.
  PrologueScan body = scan(code, kStart + 18);
  EXPECT_TRUE(body.ended);
  EXPECT_EQ(body.allocation, 0x2000u);

  PrologueScan on_return = scan(code, kStart + 17);
  EXPECT_TRUE(on_return.ended);
  EXPECT_EQ(on_return.allocation, 0u);

  PrologueScan before_call = scan(code, kStart + 11);
  EXPECT_EQ(before_call.allocation, 0u);
}

TEST_F(PrologueScanTest, SizeLoadNotFollowedByACallIsScannedOnFromTheNextInstruction) {
  const std::vector<std::uint8_t> code = {
      0x48, 0xB8, 0x10, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // +0   mov_q       RAX,10
      0x48, 0x83, 0xEC, 0x38,                                      // +10  sub_q       RSP,38
      0x90,                                                        // +14  nop
  };
  // Frame size 0x38 (the sub after the mov), not the mov's 0x10.
  PrologueScan result = scan(code, kStart + 15);
  EXPECT_TRUE(result.ended);
  EXPECT_EQ(result.allocation, 0x38u);
}

TEST_F(PrologueScanTest, AnythingElseFallsBackOnTheLeadWord) {
  const std::vector<std::uint8_t> push_first = {
      0x90,                    // +0  nop
      0x53,                    // +1  push       RBX
      0x48, 0x83, 0xEC, 0x20,  // +2  sub_q       RSP,20
  };
  // Frame size kLeadWord: the push is neither prologue form.
  EXPECT_EQ(scan(push_first, kStart + 6).allocation, kLeadWord);

  const std::vector<std::uint8_t> short_mov = {
      0xB8, 0x00, 0x20, 0x00, 0x00,        // +0  mov       RAX,2000   (32-bit form)
      0xFF, 0x15, 0x40, 0x00, 0x00, 0x00,  // +5  call       [40+RIP]
  };
  // Frame size kLeadWord: the 32-bit load's text has one space too few to match.
  PrologueScan result = scan(short_mov, kStart + 12);
  EXPECT_TRUE(result.ended);
  EXPECT_EQ(result.allocation, kLeadWord);
}

TEST_F(PrologueScanTest, TwentyInstructionsAtMost) {
  auto nops_then_sub = [](int nops) {
    std::vector<std::uint8_t> code(static_cast<std::size_t>(nops), 0x90);  // +0 .. nop
    for (std::uint8_t b : {0x48, 0x83, 0xEC, 0x28}) code.push_back(b);    // +nops  sub_q       RSP,28
    return code;
  };
  // 18 nops: the sub is the 19th instruction; frame size 0x28, the walk may go on.
  PrologueScan nineteenth = scan(nops_then_sub(18), kStart + 0x40);
  EXPECT_TRUE(nineteenth.ended);
  EXPECT_EQ(nineteenth.allocation, 0x28u);
  EXPECT_FALSE(nineteenth.reached_limit);

  // 19 nops: the sub is the 20th; frame size 0x28, and the walk ends after this frame.
  PrologueScan twentieth = scan(nops_then_sub(19), kStart + 0x40);
  EXPECT_TRUE(twentieth.ended);
  EXPECT_EQ(twentieth.allocation, 0x28u);
  EXPECT_TRUE(twentieth.reached_limit);

  // 20 nops: the sub is never decoded; no frame size, no return slot.
  PrologueScan beyond = scan(nops_then_sub(20), kStart + 0x40);
  EXPECT_FALSE(beyond.ended);
  EXPECT_TRUE(beyond.reached_limit);
}

}  // namespace
}  // namespace vantor
