// Variable addresses by address type, in a stack of three of our compiler's frames:
// INNER (an internal procedure) called from HOST called from MAIN, plus a DLL's routine.
#include "stack/f95_stack_frame.h"

#include "common/messages.h"
#include "debuginfo/common_block_cache.h"
#include "stack_test_support.h"
#include "values/error_codes.h"

namespace vantor {
namespace {

using testing::DebugImageBuilder;
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
    int block = inner.common_block("SHARED");
    int missing = inner.common_block("NOWHERE");
    inner.variable(VariableSpec::at("local", 1, kDebugInteger4, 0x10, 4));
    inner.variable(VariableSpec::at("SHARED_X", 8, kDebugReal8, 0x18, 8).in_common(block));
    inner.variable(VariableSpec::at("LOST", 8, kDebugReal8, 0, 8).in_common(missing));
    inner.variable(VariableSpec::at("HOSTPTR", 12, kDebugInteger4, 0x20, 4));
    inner.variable(VariableSpec::at("HOSTVAR", 3, kDebugInteger4, 0x20, 4));
    inner.variable(VariableSpec::at("puts", 10, kDebugProcedure, 0, 8));
    load(image, L"C:\\build\\prog.exe", true);
    code(image, "MAIN", small_frame_code(0x28));
    code(image, "HOST", small_frame_code(0x48));
    code(image, "INNER", small_frame_code(0x28));
    put(kInnerSp + 0x28, image.address_of("HOST") + 0x10);
    put(kHostSp + 0x48, image.address_of("MAIN") + 0x10);
    put(kMainSp + 0x28, 0);
    stop_at(image.address_of("INNER") + 6, kInnerSp);
  }

  void stop_at(Address pc, Address sp) {
    os::ThreadContext& context = target.system.context(process.thread_handle());
    context.rip = pc;
    context.rsp = sp;
    process.refresh_call_stack();
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

TEST_F(VariableAddressTest, FrameAndCallerFrameRelativeTypes) {
  F95StackFrame& inner = frame(0);
  VariableAddress local = inner.variable_address(1, 0x10, nullptr, 0);
  EXPECT_EQ(local.error, 0);
  EXPECT_EQ(local.address, kInnerSp + kFrameOffset + 0x10);
  EXPECT_EQ(local.base, local.address);

  put(kInnerSp + kFrameOffset + 0x40, 0x7700000);
  VariableAddress pointee = inner.variable_address(11, 0x40, nullptr, 0);
  EXPECT_EQ(pointee.address, 0x7700000u);
  EXPECT_EQ(pointee.base, kInnerSp + kFrameOffset + 0x40);

  // The host's variables lie in the caller's frame, after the caller's own frame offset.
  const Address host_slot = kHostSp + 0x20 + kHostFrameOffset;
  put(host_slot, 0x7800000);
  VariableAddress host = inner.variable_address(3, 0x20, record("HOSTVAR"), 0);
  EXPECT_EQ(host.address, host_slot);
  EXPECT_EQ(host.base, host_slot);
  VariableAddress through = inner.variable_address(12, 0x20, record("HOSTPTR"), 0);
  EXPECT_EQ(through.address, 0x7800000u);
  EXPECT_EQ(through.base, host_slot);
  // A bound of type 12 inside a variable of another type is not followed.
  EXPECT_EQ(inner.variable_address(12, 0x20, record("HOSTVAR"), 0).address, host_slot);

  // The outermost frame has no caller.
  EXPECT_EQ(frame(2).variable_address(3, 0x20, nullptr, 0).error, kErrorOutOfScope);
  EXPECT_EQ(frame(2).variable_address(7, 8, nullptr, 0).error, kErrorOutOfScope);
}

TEST_F(VariableAddressTest, ArgumentsByReferenceThroughTheReturnSlot) {
  F95StackFrame& inner = frame(0);
  // The first argument's address is spilled to the caller's home area, just above the
  // return address.
  put(kInnerSp + 0x28 + 8, 0x7900000);
  VariableAddress argument = inner.variable_address(5, 8, nullptr, 0);
  EXPECT_EQ(argument.address, 0x7900000u);
  EXPECT_EQ(argument.base, kInnerSp + kFrameOffset);

  put(kHostSp + 0x48 + 16, 0x7A00000);
  VariableAddress host_argument = inner.variable_address(7, 16, nullptr, 0);
  EXPECT_EQ(host_argument.address, 0x7A00000u);
  EXPECT_EQ(host_argument.base, kHostSp + kHostFrameOffset);
}

TEST_F(VariableAddressTest, CommonMembersResolveTheirBlockOnce) {
  // The run-time list: one node for /SHARED/.
  const Address node = 0x600100, name = 0x600200, storage = 0x610000;
  put(node, 0);
  put(node + 8, name);
  put(node + 16, storage);
  put(node + 24, 0x40);
  target.system.poke(name, "/SHARED/", 9);
  process.set_common_info_address(node);

  F95StackFrame& inner = frame(0);
  VariableAddress member = inner.variable_address(8, 0x18, record("SHARED_X"), 0);
  EXPECT_EQ(member.address, storage + 0x18);
  EXPECT_EQ(member.base, storage);
  EXPECT_EQ(record("SHARED_X")->common->address, storage);

  std::size_t reads = target.system.counters.reads;
  EXPECT_EQ(inner.variable_address(8, 0, record("SHARED_X"), 0).address, storage);
  EXPECT_EQ(target.system.counters.reads, reads);
  EXPECT_TRUE(boxes().empty());

  VariableAddress lost = inner.variable_address(8, 0, record("LOST"), 0);
  EXPECT_EQ(lost.error, kErrorUntouchedCommon);
  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_NE(boxes()[0].find(L"expr = ciu->address"), std::wstring::npos);
  EXPECT_NE(boxes()[0].find(L"file = StackFrame"), std::wstring::npos);
}

TEST_F(VariableAddressTest, StaticDataIsAfterItsOwnImagesLeadWord) {
  DebugImageBuilder dll(0x180000000);
  dll.routine("DLLSUB", 0x1000, 0x40).lead_word(0x8000).line(40, 0).line(41, 5);
  load(dll, L"C:\\build\\lib.dll", false);
  code(dll, "DLLSUB", small_frame_code(0x28));
  put(kInnerSp - 0x30 + 0x28, image.address_of("INNER") + 0x10);
  os::ThreadContext& context = target.system.context(process.thread_handle());
  context.rip = dll.address_of("DLLSUB") + 6;
  context.rsp = kInnerSp - 0x30;
  process.refresh_call_stack();
  ASSERT_EQ(process.current_stack()->depth(), 4);

  VariableAddress in_dll = frame(0).variable_address(9, 0x10, nullptr, 0);
  EXPECT_EQ(in_dll.address, 0x180000000u + 0x8000 + 0x10);
  EXPECT_EQ(in_dll.base, 0x180000000u + 0x8000);
  EXPECT_EQ(frame(1).variable_address(9, 0x10, nullptr, 0).address, kBase + 0x5000 + 0x10);
}

TEST_F(VariableAddressTest, OffsetsExternalNamesConstantsAndUnknownTypes) {
  F95StackFrame& inner = frame(0);
  VariableAddress component = inner.variable_address(0, 0x18, nullptr, 0x9000);
  EXPECT_EQ(component.address, 0x9018u);
  EXPECT_EQ(component.base, 0x9000u);

  target.system.add_symbol(0x7FF700001000, 0x40, "puts");
  EXPECT_EQ(inner.variable_address(10, 0, record("puts"), 0).address, 0x7FF700001000u);
  VariableRecord host_record;
  host_record.name = "HOST";
  EXPECT_EQ(inner.variable_address(10, 0, &host_record, 0).address, image.address_of("HOST"));
  host_record.name = "nothing_by_that_name";
  EXPECT_EQ(inner.variable_address(10, 0, &host_record, 0).error, kErrorOutOfScope);

  EXPECT_EQ(inner.variable_address(4, 0, nullptr, 0).error, kErrorOutOfScope);
  ::testing::internal::CaptureStdout();
  VariableAddress unknown = inner.variable_address(6, 0, nullptr, 0);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "unknown address type 6\n");
  EXPECT_EQ(unknown.error, kErrorOutOfScope);
}

TEST_F(VariableAddressTest, VariablesByNameIgnoreCaseAndBecomeElements) {
  F95StackFrame& inner = frame(0);
  EXPECT_EQ(inner.member_separator(), '%');
  EXPECT_EQ(inner.language_code(), 4);
  auto local = inner.find_variable("LOCAL");
  ASSERT_NE(local, nullptr);
  EXPECT_EQ(local->error_code, 0);
  EXPECT_EQ(local->address, kInnerSp + kFrameOffset + 0x10);
  EXPECT_EQ(inner.find_variable("absent"), nullptr);
  EXPECT_EQ(inner.variable_count(), 6);
  EXPECT_NE(inner.variable_element(0), nullptr);
  EXPECT_EQ(inner.variable_element(6), nullptr);
  EXPECT_EQ(frame(1).variable_count(), 0);  // HOST has a debug block with no variables
}

}  // namespace
}  // namespace vantor
