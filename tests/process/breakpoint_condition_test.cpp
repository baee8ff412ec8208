#include "process/breakpoint_condition.h"

#include <gtest/gtest.h>

#include "support/fake_command_host.h"

namespace vantor {
namespace {

TEST(BreakpointConditionTest, TruthDecidesAndAnythingElseStops) {
  testing::FakeTarget target;
  target.system.poke_value<std::int32_t>(0x1000, 4);
  target.system.poke(0x1010, "LOOP", 4);
  testing::FakeFrame frame(target.memory, "LOOP");
  frame.add_variable("I", kDebugInteger4, 0x1000, 4);
  frame.add_variable("NAME", kDebugCharacter, 0x1010, 4);
  auto condition = [&](std::string_view text) {
    return evaluate_breakpoint_condition(text, &frame, target.memory, nullptr);
  };
  EXPECT_EQ(condition("i = 4"), true);  // "=" compares
  EXPECT_EQ(condition("i = 5"), false);
  EXPECT_EQ(condition("i .gt. 3 .and. i < 10"), true);
  EXPECT_EQ(condition("i - 4"), false);  // a number is true when not zero
  EXPECT_EQ(condition("i"), true);
  EXPECT_EQ(condition("no_such_variable > 1"), std::nullopt);
  EXPECT_EQ(condition("i +"), std::nullopt);
  EXPECT_EQ(condition("name"), std::nullopt);  // a string has no truth
  EXPECT_EQ(evaluate_breakpoint_condition("i = 4", nullptr, target.memory, nullptr), std::nullopt);
}

}  // namespace
}  // namespace vantor
