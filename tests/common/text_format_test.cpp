#include "common/text_format.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

// Messages show addresses the way the Windows runtime's "%p" does, in both builds.
TEST(TextFormat, PointerIsSixteenUpperCaseDigits) {
  EXPECT_EQ(pointer_text(0), "0000000000000000");
  EXPECT_EQ(pointer_text(0x7ffe1234abcdULL), "00007FFE1234ABCD");
  EXPECT_EQ(pointer_text(~0ULL), "FFFFFFFFFFFFFFFF");
}

TEST(TextFormat, LongTextIsNotCut) {
  std::string long_text(5000, 'x');
  EXPECT_EQ(format_text("<%s>", long_text.c_str()).size(), 5002u);
  EXPECT_EQ(format_text("%s", ""), "");
}

}  // namespace
}  // namespace vantor
