#include "process/breakpoint_condition.h"

#include <gtest/gtest.h>

#include "stack/stack_frame.h"
#include "support/fake_target.h"
#include "values/element.h"

namespace vantor {
namespace {

// A Fortran frame with INTEGER I at 0x1000 and CHARACTER*4 NAME at 0x1010.
class LoopFrame : public StackFrame {
 public:
  LoopFrame() : StackFrame(nullptr, 0x401000, 0x7ff000, 0, 0, nullptr) {}
  std::string routine_name() const override { return "LOOP"; }
  int language_code() const override { return 4; }
  char member_separator() const override { return '%'; }
  std::unique_ptr<element> find_variable(std::string_view name) override {
    if (name == "i" || name == "I") return variable(kTypeInteger4, 0x1000, 4);
    if (name == "name" || name == "NAME") return variable(kTypeCharacter, 0x1010, 4);
    return nullptr;
  }

 private:
  static std::unique_ptr<element> variable(std::int32_t type, Address address, std::int64_t size) {
    auto e = make_element(type, 4);
    e->address = address;
    e->size = size;
    return e;
  }
};

TEST(BreakpointConditionTest, TruthDecidesAndAnythingElseStops) {
  testing::FakeTarget target;
  target.system.poke_value<std::int32_t>(0x1000, 4);
  target.system.poke(0x1010, "LOOP", 4);
  LoopFrame frame;
  auto condition = [&](std::string_view text, StackFrame* in = nullptr) {
    return evaluate_breakpoint_condition(text, in ? in : &frame, target.memory, nullptr);
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
