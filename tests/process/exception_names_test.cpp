#include "process/exception_names.h"

#include <gtest/gtest.h>

#include <set>

namespace vantor {
namespace {

TEST(ExceptionNames, TableHoldsTwentyFiveDistinctCodesInSearchOrder) {
  std::set<std::uint32_t> codes;
  for (const auto& entry : ExceptionNames) codes.insert(entry.code);
  EXPECT_EQ(codes.size(), 25u);
  EXPECT_EQ(ExceptionNames.front().code, 0xC000008Du);
  EXPECT_STREQ(ExceptionNames.front().text, "Denormal floating point operands");
  EXPECT_EQ(ExceptionNames[10].code, 0xC000001Du);
  EXPECT_EQ(ExceptionNames.back().code, 0x40010005u);
  EXPECT_STREQ(ExceptionNames.back().text, "Ctrl+C pressed");
}

TEST(ExceptionNames, KnownCodesGiveTheirNameAndOthersTheCode) {
  EXPECT_EQ(exception_text(0xC0000094), "Integer Division by zero");
  EXPECT_EQ(exception_text(0xC00000FD), "Stack overflow");
  EXPECT_EQ(exception_text(0x80000002), "Datatype misalignment");
  EXPECT_EQ(exception_text(0xE06D7363), "Exception 0xE06D7363");
  EXPECT_EQ(exception_text(0xc0000001), "Exception 0xC0000001");
}

}  // namespace
}  // namespace vantor
