// Variable addresses by address type where the Wine tests cannot lead a real program, in a
// stack of three of our compiler's frames: INNER (an internal procedure) called from HOST
// called from MAIN.
#include "stack/f95_stack_frame.h"

#include "common/messages.h"
#include "stack_test_support.h"
#include "values/error_codes.h"

namespace vantor {
namespace {

using testing::VariableSpec;

constexpr Address kInnerSp = 0x30000;
constexpr Address kHostSp = kInnerSp + 0x30;   // INNER allocates 0x28
constexpr Address kMainSp = kHostSp + 0x50;    // HOST allocates 0x48
constexpr std::int32_t kFrameOffset = 32;      // locals above the outgoing shadow area
constexpr std::int32_t kHostFrameOffset = 48;

class VariableAddressTest : public testing::StackTest {
 protected:
  void SetUp() override {
    image.routine("MAIN", 0x1000, 0x40).frame_offset(kFrameOffset).line(1, 0).line(2, 5);
    image.routine("HOST", 0x1100, 0x40).frame_offset(kHostFrameOffset).line(10, 0).line(11, 5);
    auto& inner = image.routine("INNER", 0x1200, 0x40).frame_offset(kFrameOffset).lead_word(0x5000);
    inner.line(20, 0).line(21, 5);
    int missing = inner.common_block("NOWHERE");
    inner.variable(VariableSpec::at("local", 1, kDebugInteger4, 0x10, 4));
    inner.variable(VariableSpec::at("LOST", 8, kDebugReal8, 0, 8).in_common(missing));
    inner.variable(VariableSpec::at("HOSTVAR", 3, kDebugInteger4, 0x20, 4));
    load(image, L"C:\\build\\prog.exe", true);
    code(image, "MAIN", small_frame_code(0x28));
    code(image, "HOST", small_frame_code(0x48));
    code(image, "INNER", small_frame_code(0x28));
    put(kInnerSp + 0x28, image.address_of("HOST") + 0x10);
    put(kHostSp + 0x48, image.address_of("MAIN") + 0x10);
    put(kMainSp + 0x28, 0);
    stop_at(image.address_of("INNER") + 6, kInnerSp);
    ASSERT_EQ(process.current_stack()->depth(), 3);
  }

  F95StackFrame& frame(int index) { return dynamic_cast<F95StackFrame&>(*process.current_stack()->frame(index)); }
  const VariableRecord* record(const char* name) {
    F95StackFrame& inner = frame(0);
    for (int i = 0; i < inner.variable_count(); ++i)
      if (inner.variable_record(i)->name == name) return inner.variable_record(i);
    return nullptr;
  }
};

TEST_F(VariableAddressTest, TheOutermostFrameHasNoCallerAndBoundsAreNotFollowed) {
  EXPECT_EQ(frame(2).variable_address(3, 0x20, nullptr, 0).error, kErrorOutOfScope);
  EXPECT_EQ(frame(2).variable_address(7, 8, nullptr, 0).error, kErrorOutOfScope);
  // A bound of type 12 inside a variable of another type is the host's slot itself.
  const Address host_slot = kHostSp + 0x20 + kHostFrameOffset;
  put(host_slot, 0x7800000);
  EXPECT_EQ(frame(0).variable_address(12, 0x20, record("HOSTVAR"), 0).address, host_slot);
}

TEST_F(VariableAddressTest, ACommonBlockMissingFromTheRunTimeListIsUntouched) {
  put(0x600100, 0);  // a run-time list of one node, for another block
  put(0x600108, 0x600200);
  put(0x600110, 0x610000);
  put(0x600118, 0x40);
  target.system.poke(0x600200, "/SHARED/", 9);
  process.set_common_info_address(0x600100);
  EXPECT_EQ(frame(0).variable_address(8, 0, record("LOST"), 0).error, kErrorUntouchedCommon);
  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_NE(boxes()[0].find(L"expr = ciu->address"), std::wstring::npos);
  EXPECT_NE(boxes()[0].find(L"file = StackFrame"), std::wstring::npos);
}

TEST_F(VariableAddressTest, ExternalNamesFallBackOnTheRoutineMapAndOtherTypesHaveNoAddress) {
  F95StackFrame& inner = frame(0);
  VariableRecord named;
  named.name = "HOST";
  EXPECT_EQ(inner.variable_address(10, 0, &named, 0).address, image.address_of("HOST"));
  named.name = "nothing_by_that_name";
  EXPECT_EQ(inner.variable_address(10, 0, &named, 0).error, kErrorOutOfScope);
  ::testing::internal::CaptureStdout();
  VariableAddress unknown = inner.variable_address(6, 0, nullptr, 0);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "unknown address type 6\n");
  EXPECT_EQ(unknown.error, kErrorOutOfScope);
}

TEST_F(VariableAddressTest, VariablesByNameIgnoreCaseAndBecomeElements) {
  F95StackFrame& inner = frame(0);
  auto local = inner.find_variable("LOCAL");
  ASSERT_NE(local, nullptr);
  EXPECT_EQ(local->address, kInnerSp + kFrameOffset + 0x10);
  EXPECT_EQ(inner.find_variable("absent"), nullptr);
  EXPECT_EQ(inner.variable_element(inner.variable_count()), nullptr);
  EXPECT_EQ(frame(1).variable_count(), 0);  // HOST has a debug block with no variables
}

}  // namespace
}  // namespace vantor
