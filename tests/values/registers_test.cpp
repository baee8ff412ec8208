#include "values/registers.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/fake_target.h"

namespace vantor {
namespace {

TEST(RegistersTest, NamesGiveInteger8CopiesIgnoringCase) {
  testing::FakeTarget target;
  os::ThreadContext context;
  context.r9 = 0x99;
  context.rip = 0x401000;
  auto r9 = register_element("R9", &context);
  ASSERT_TRUE(r9);
  EXPECT_EQ(r9->type, kTypeInteger8);
  EXPECT_TRUE(r9->is_constant());
  context.r9 = 0;  // a copy: later changes do not reach it
  EXPECT_EQ(value_int64(*r9, target.memory), 0x99);
  EXPECT_EQ(value_int64(*register_element("rip", &context), target.memory), 0x401000);
  for (const char* other : {"eax", "ax", "xmm0", "eflags", "r16", "rflags", ""})
    EXPECT_EQ(register_element(other, &context), nullptr) << other;
  EXPECT_EQ(register_element("rax", nullptr), nullptr);
}

TEST(RegistersTest, DecimalHintOnlyForSmallNonZeroValues) {
  EXPECT_EQ(decimal_hint(0), "");
  EXPECT_EQ(decimal_hint(999999), "(999999)");
  EXPECT_EQ(decimal_hint(1000000), "");
  EXPECT_EQ(decimal_hint(-5), "(-5)");
  EXPECT_EQ(decimal_hint(-999999), "(-999999)");
  EXPECT_EQ(decimal_hint(-1000000), "");
}

TEST(RegistersTest, DumpLines) {
  EXPECT_TRUE(register_dump(nullptr).empty());
  os::ThreadContext c;
  c.rip = 0x401A2B;
  c.fp_control_word = 0x27F;
  c.rsp = 0x22FE00;
  c.rax = 5;
  c.rbx = static_cast<std::uint64_t>(-5);
  c.r8 = 0x140000000;
  c.eflags = 0x246;
  c.fp_status_word = 0x20;
  double one = 1.0;
  std::memcpy(c.xmm[1].data(), &one, 8);
  float floats[4] = {1.5f, 2.0f, 0.0f, 3.0f};
  std::memcpy(c.xmm[2].data(), floats, 16);
  auto lines = register_dump(&c);
  ASSERT_EQ(lines.size(), 3u + 14u + 16u + 1u);
  EXPECT_EQ(lines[0], "RIP = 0000000000401A2B  CONTROL WORD = 027F\n");
  EXPECT_EQ(lines[1], "RSP = 000000000022FE00\n");
  EXPECT_EQ(lines[2], "RBP = 0000000000000000\n");
  EXPECT_EQ(lines[3], "RAX = 0000000000000005 (5)\n");
  EXPECT_EQ(lines[4], "RBX = FFFFFFFFFFFFFFFB (-5)\n");
  EXPECT_EQ(lines[5], "RCX = 0000000000000000 \n");
  EXPECT_EQ(lines[9], "R8  = 0000000140000000 \n");
  EXPECT_EQ(lines[16], "R15 = 0000000000000000 \n");
  EXPECT_EQ(lines[17], "XMM0 = 0\n");
  // One double in the low half leaves the upper floats 0: the three-value form.
  EXPECT_EQ(lines[18], "XMM1 = 0.000000_1 1.875000_1 1.000000_2\n");
  EXPECT_EQ(lines[19], "XMM2 = 1.500000_1 2.000000_1 2.000000_2 32.000000_2\n");
  EXPECT_EQ(lines[33], "FLG =      246 [Z P NC ] STATUS WORD =   20\n");
  c.eflags = 0x95;
  EXPECT_EQ(register_dump(&c)[33], "FLG =       95 [S NZ A P C ] STATUS WORD =   20\n");
}

}  // namespace
}  // namespace vantor
