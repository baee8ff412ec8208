#include "common/text_format.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

TEST(TextFormat, LongTextIsNotCut) {
  std::string long_text(5000, 'x');
  EXPECT_EQ(format_text("<%s>", long_text.c_str()).size(), 5002u);
  EXPECT_EQ(format_text("%s", ""), "");
}

}  // namespace
}  // namespace vantor
