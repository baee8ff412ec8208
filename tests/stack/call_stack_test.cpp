#include "stack/call_stack.h"

#include "stack_test_support.h"

namespace vantor {
namespace {

using testing::DebugImageBuilder;
using testing::StackTest;

constexpr Address kLibBase = 0x7FF800000000;

class CallStackTest : public StackTest {};

TEST_F(CallStackTest, RecursionDeeperThanFortyListsExactlyForty) {
  image.routine("REC", 0x1000, 0x40).source("C:\\src\\rec.f95").line(10, 0).line(11, 5).line(12, 0x12);
  load(image, L"C:\\build\\rec.exe", true);
  code(image, "REC", small_frame_code(0x28));
  Address rec = image.address_of("REC");

  // Fifty activations, each returning into the call at line 11 of the one outside it.
  Address sp = kStackHigh - 0x40 * 60;
  const Address innermost_sp = sp;
  for (int depth = 0; depth < 50; ++depth) {
    put(sp + 0x28, rec + 0x10);
    sp += 0x30;
  }
  std::size_t reads = target.system.counters.reads;
  auto stack = walk(rec + 0x12, innermost_sp);

  ASSERT_EQ(stack->depth(), CallStack::kMaxFrames);
  const call_stack_item& last = stack->items().back();
  EXPECT_EQ(last.sp, innermost_sp + 0x30 * 39);
  EXPECT_EQ(last.return_slot, last.sp + 0x28);
  EXPECT_EQ(last.frame->total_frames, 40);
  // The stack and the code are read a page at a time, not a value at a time.
  EXPECT_EQ(stack->walk_reads(), target.system.counters.reads - reads);
  EXPECT_LE(stack->walk_reads(), 4u);
}

TEST_F(CallStackTest, PrologueScanLimitsAndFallbackShapeTheWalk) {
  // OUTER's frame is found through the lead word (a push is neither prologue form); MID's
  // allocation is its 20th instruction, so the walk ends after MID; DEEP never reaches
  // its allocation within 20 instructions and has no return slot.
  image.routine("OUTER", 0x1000, 0x40).lead_word(0x58).line(1, 0);
  image.routine("MID", 0x1100, 0x40).line(2, 0);
  image.routine("DEEP", 0x1200, 0x40).line(3, 0);
  load(image, L"C:\\build\\prog.exe", true);
  code(image, "OUTER", {0x90, 0x53, 0x48, 0x83, 0xEC, 0x20, 0x90});  // nop; push rbx; sub rsp,20
  std::vector<std::uint8_t> mid(19, 0x90);
  for (std::uint8_t byte : {0x48, 0x83, 0xEC, 0x28}) mid.push_back(byte);
  code(image, "MID", mid);
  code(image, "DEEP", std::vector<std::uint8_t>(20, 0x90));

  // MID, called from OUTER, which was called from MID again.
  const Address sp = 0x30000;
  put(sp + 0x28, image.address_of("OUTER") + 0x10);
  put(sp + 0x30 + 0x58, image.address_of("MID") + 0x30);
  auto from_mid = walk(image.address_of("MID") + 0x30, sp);
  ASSERT_EQ(from_mid->depth(), 1);  // the caller is known but not followed
  EXPECT_EQ(from_mid->items()[0].return_slot, sp + 0x28);

  auto from_outer = walk(image.address_of("OUTER") + 0x10, sp + 0x30);
  ASSERT_EQ(from_outer->depth(), 2);
  EXPECT_EQ(from_outer->items()[0].return_slot, sp + 0x30 + 0x58);
  EXPECT_EQ(from_outer->items()[1].frame->routine_name(), "MID");
  EXPECT_EQ(from_outer->items()[1].sp, sp + 0x30 + 0x58 + 8);

  auto from_deep = walk(image.address_of("DEEP") + 0x30, sp);
  ASSERT_EQ(from_deep->depth(), 1);
  EXPECT_EQ(from_deep->items()[0].return_slot, 0u);
}

TEST_F(CallStackTest, SystemFramesWithoutASymbolAreNamedByModuleAndAddress) {
  image.routine("MAIN", 0x1000, 0x40).line(1, 0);
  load(image, L"C:\\build\\prog.exe", true);
  DebugImageBuilder lib(kLibBase);
  lib.no_debug_info();
  load(lib, L"C:\\windows\\system32\\ntdll.dll", false);

  // Stopped inside the library, three frameless calls deep, with no symbols at all.
  Address sp = 0x30000;
  put(sp, kLibBase + 0x3010);
  put(sp + 8, kLibBase + 0x3020);
  put(sp + 16, 0x7000);  // outside every module: the walk ends after this frame

  auto stack = walk(kLibBase + 0x3000, sp);
  ASSERT_EQ(stack->depth(), 3);
  EXPECT_EQ(stack->items()[0].frame->routine_name(), "ntdll.dll!00007FF800003000");
  EXPECT_EQ(stack->items()[0].frame->index, 0);
  EXPECT_EQ(stack->items()[2].frame->routine_name(), "ntdll.dll!00007FF800003020");
  EXPECT_EQ(stack->items()[2].frame->routine_start(), kLibBase + 0x3020);
}

TEST_F(CallStackTest, WalkEndsQuietlyWhereItCannotGoOn) {
  image.routine("MAIN", 0x1000, 0x40).line(1, 0);
  load(image, L"C:\\build\\prog.exe", true);
  code(image, "MAIN", small_frame_code(0x28));

  EXPECT_EQ(walk(0x1234, 0x30000)->depth(), 0);                 // pc outside every module
  EXPECT_EQ(walk(kBase + 0x3000, 0x30000)->depth(), 0);         // in the image, in no routine
  put(0x30000 + 0x28, image.address_of("MAIN") + 0x1000);       // returns into no routine
  EXPECT_EQ(walk(image.address_of("MAIN") + 6, 0x30000)->depth(), 1);
  EXPECT_EQ(walk(image.address_of("MAIN") + 6, 0x3FFF0)->depth(), 1);  // return slot unreadable
  EXPECT_TRUE(boxes().empty());
}

TEST_F(CallStackTest, FrameInformationGivesOffsetAndLineAndNothingBeyondTheStack) {
  image.routine("MAIN", 0x1000, 0x40).source("C:\\src\\prog.f95").line(1, 0).line(2, 5).line(3, 0x10);
  image.routine("NOLINES", 0x1100, 0x40);
  load(image, L"C:\\build\\prog.exe", true);
  code(image, "MAIN", small_frame_code(0x28));
  code(image, "NOLINES", small_frame_code(0x28));
  put(0x30000 + 0x28, image.address_of("MAIN") + 0x0C);
  put(0x30000 + 0x30 + 0x28, 0);

  auto stack = walk(image.address_of("NOLINES") + 6, 0x30000);
  ASSERT_EQ(stack->depth(), 2);
  frame_information inner = stack->information(0);
  EXPECT_FALSE(inner.has_source);
  EXPECT_EQ(inner.offset, 6u);
  frame_information outer = stack->information(1);
  EXPECT_EQ(outer.offset, 0x0Cu);
  EXPECT_EQ(outer.source_file_name, "C:\\src\\prog.f95");
  EXPECT_EQ(outer.line, 2);  // the line the return address is in
  EXPECT_EQ(stack->information(2).frame, nullptr);
  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_NE(boxes()[0].find(L"expr = item"), std::wstring::npos);
  EXPECT_NE(boxes()[0].find(L"file = CallStack"), std::wstring::npos);
}

TEST_F(CallStackTest, FramesAreFoundByIdentityOrByRoutineAndFrameBase) {
  image.routine("MAIN", 0x1000, 0x40).line(1, 0);
  image.routine("SUB", 0x1100, 0x40).line(2, 0);
  load(image, L"C:\\build\\prog.exe", true);
  code(image, "MAIN", small_frame_code(0x28));
  code(image, "SUB", small_frame_code(0x28));
  put(0x30000 + 0x28, image.address_of("MAIN") + 0x10);
  put(0x30030 + 0x28, 0);

  auto before = walk(image.address_of("SUB") + 6, 0x30000);
  auto after = walk(image.address_of("SUB") + 0x20, 0x30000);  // stepped on inside SUB
  EXPECT_EQ(before->index_of(before->frame(1)), 1);
  EXPECT_EQ(after->index_of(before->frame(1)), -1);
  EXPECT_EQ(after->index_of_matching(*before->frame(1)), 1);
  EXPECT_EQ(after->index_of_matching(*before->frame(0)), 0);

  auto elsewhere = walk(image.address_of("SUB") + 6, 0x30100);  // same routine, other frame
  EXPECT_EQ(elsewhere->index_of_matching(*before->frame(0)), -1);
}

}  // namespace
}  // namespace vantor
