#include "values/variable_element.h"

#include <gtest/gtest.h>

#include <cstring>

#include "debuginfo/debug_type_codes.h"
#include "process/debugged_process.h"
#include "support/fake_target.h"
#include "values/error_codes.h"
#include "values/record_frame.h"

namespace vantor {
namespace {

using testing::add_dimension;
using testing::constant;
using testing::record;

class VariableElementTest : public ::testing::Test {
 protected:
  testing::FakeTarget target;
  DebuggedProcess process;
  testing::RecordFrame frame{&process};
  static constexpr Address kBase = testing::RecordFrame::kFrameBase;
};

// Ordinary variables of every address type are read at real stops under Wine
// (tests/integration/stack_itest.cpp, values_session_itest.cpp); these are the limits.
TEST_F(VariableElementTest, AbsentObjectsCarryTheirErrorCodes) {
  EXPECT_EQ(make_variable_element(frame, *record("X", 31, 1, 0, 4))->error_code, kErrorInternal);  // no such type
  EXPECT_EQ(make_variable_element(frame, *record("C", kDebugReal8, 3, 8, 8))->error_code, kErrorOutOfScope);
  EXPECT_EQ(make_variable_element(frame, *record("V", kDebugReal8, 8, 8, 8))->error_code, kErrorUntouchedCommon);

  target.system.poke_value<std::uint64_t>(kBase + 0x30, 0);
  auto pointer = record("P", kDebugInteger4, 1, 0x30, 4, kAttributePointer);
  EXPECT_EQ(make_variable_element(frame, *pointer)->error_code, kErrorPointerNotAssigned);
  auto allocatable = record("A", kDebugReal4, 1, 0x30, 4, kAttributeAllocatable);
  add_dimension(*allocatable, constant(1), constant(5));
  EXPECT_EQ(make_variable_element(frame, *allocatable)->error_code, kErrorNotAllocated);

  // A never-assigned slot in a checking build holds the fill pattern, not 0.
  target.system.poke_value<std::uint64_t>(kBase + 0x30, 0x8080808080808080ull);
  EXPECT_EQ(make_variable_element(frame, *pointer)->error_code, kErrorPointerNotAssigned);

  target.system.poke_value<std::uint64_t>(kBase + 0x30, 0x90000);
  auto associated = make_variable_element(frame, *pointer);
  EXPECT_EQ(associated->error_code, 0);
  EXPECT_EQ(associated->address, 0x90000u);
}

TEST_F(VariableElementTest, StaticBoundsWithDenseColumnMajorDistances) {
  auto r = record("M", kDebugReal8, 1, 0x40, 8);
  add_dimension(*r, constant(-2), constant(5));  // (-2:2)
  add_dimension(*r, constant(1), constant(3));   // (1:3)
  add_dimension(*r, constant(0), constant(0));   // (0:-1), empty
  auto e = make_variable_element(frame, *r);
  ASSERT_EQ(e->type, kTypeArray);
  const array_info& a = *e->array;
  EXPECT_EQ(a.num_dims, 3);
  EXPECT_EQ(a.distance[1], 40);
  EXPECT_EQ(a.last_element[2], -1);
  EXPECT_EQ(e->size, 0);  // an empty dimension leaves no elements
}

TEST_F(VariableElementTest, VariableBoundsAreReadRelativeToTheBase) {
  // An allocatable whose slot holds the data address, followed by its bounds.
  target.system.poke_value<std::uint64_t>(kBase + 0x100, 0x91000);
  target.system.poke_value<std::int64_t>(kBase + 0x108, 0);    // lower
  target.system.poke_value<std::int64_t>(kBase + 0x110, 10);   // extent
  target.system.poke_value<std::int64_t>(kBase + 0x118, 16);   // stride in bytes
  auto r = record("D", kDebugInteger4, 1, 0x100, 4, kAttributeAllocatable);
  add_dimension(*r, {kBoundVariableStatic, 8}, {0, 0x10}, {kBoundVariableStatic, 0x18});
  auto e = make_variable_element(frame, *r);
  ASSERT_EQ(e->error_code, 0);
  EXPECT_EQ(e->address, 0x91000u);
  EXPECT_EQ(e->array->first_element[0], 0);
  EXPECT_EQ(e->array->last_element[0], 9);
  EXPECT_EQ(e->array->distance[0], 16);
  EXPECT_EQ(e->size, 40);

  // A bound that cannot be read is an illegal pointer, not garbage bounds.
  add_dimension(*r, {kBoundVariableStatic, 0x5000000}, constant(2));
  EXPECT_EQ(make_variable_element(frame, *r)->error_code, kErrorIllegalPointer);
}

TEST_F(VariableElementTest, ConstantsHoldTheirBytes) {
  auto title = record("TITLE", kDebugCharacter, 4, 0, 24);
  std::string text = "A long constant title   ";
  title->constant_value.assign(text.begin(), text.end());
  auto t = make_variable_element(frame, *title);
  EXPECT_NE(t->flags & kElementHeapValue, 0);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(constant_bytes(*t)), 24), text);

  // A constant array's size counts all its bytes; its first stride is one element.
  auto table = record("PRIMES", kDebugInteger4, 4, 0, 12);
  add_dimension(*table, constant(1), constant(3), constant(4));
  std::int32_t primes[3] = {2, 3, 5};
  table->constant_value.resize(12);
  std::memcpy(table->constant_value.data(), primes, 12);
  auto p = make_variable_element(frame, *table);
  EXPECT_TRUE(p->is_constant());
  EXPECT_EQ(p->size, 12);
  EXPECT_EQ(p->array->last_element[0], 3);
  EXPECT_EQ(p->next->size, 4);
}

TEST_F(VariableElementTest, FrameSlotsAreReadOnceAndOtherSlotsByTheReader) {
  // Address type 11: the frame has read the slot; its value is the data's address.
  target.system.poke_value<std::uint64_t>(kBase + 0x50, 0x92000);
  target.system.poke_value<std::uint64_t>(0x92000, 0x1234);  // data that looks like an address
  auto local = record("PL", kDebugInteger8, 11, 0x50, 8, kAttributePointer);
  auto e = make_variable_element(frame, *local);
  ASSERT_EQ(e->error_code, 0);
  EXPECT_EQ(e->address, 0x92000u);
  target.system.poke_value<std::uint64_t>(kBase + 0x50, 0);
  EXPECT_EQ(make_variable_element(frame, *local)->error_code, kErrorPointerNotAssigned);
  auto allocatable = record("AL", kDebugReal8, 11, 0x50, 8, kAttributeAllocatable);
  add_dimension(*allocatable, {1, 0x58}, {1, 0x60}, {1, 0x68});
  EXPECT_EQ(make_variable_element(frame, *allocatable)->error_code, kErrorNotAllocated);

  // Allocated: the bounds follow the slot in the frame.
  target.system.poke_value<std::uint64_t>(kBase + 0x50, 0x93000);
  target.system.poke_value<std::int64_t>(kBase + 0x58, 2);
  target.system.poke_value<std::int64_t>(kBase + 0x60, 4);
  target.system.poke_value<std::int64_t>(kBase + 0x68, 8);
  auto allocated = make_variable_element(frame, *allocatable);
  ASSERT_EQ(allocated->error_code, 0);
  EXPECT_EQ(allocated->address, 0x93000u);
  EXPECT_EQ(allocated->array->first_element[0], 2);
  EXPECT_EQ(allocated->array->last_element[0], 5);
  EXPECT_EQ(allocated->size, 32);
}

TEST_F(VariableElementTest, DerivedTypeComponentsAtTheirOffsets) {
  DerivedTypeRecord inner;
  inner.name = "INNER";
  inner.components.push_back(record("K", kDebugInteger2, 0, 0, 2));
  DerivedTypeRecord outer;
  outer.name = "OUTER";
  outer.components.push_back(record("X", kDebugReal4, 0, 0, 4));
  auto in = record("IN", kDebugDerivedType, 0, 8, 2);
  in->structure = &inner;
  outer.components.push_back(std::move(in));
  auto list = record("LIST", kDebugInteger4, 0, 12, 4);
  add_dimension(*list, constant(1), constant(4));
  outer.components.push_back(std::move(list));
  outer.components.push_back(record("LIMIT", kDebugInteger4, 4, 0, 4));  // a constant component

  auto s = record("S", kDebugDerivedType, 1, 0x200, 28);
  s->structure = &outer;
  target.system.poke_value<std::int16_t>(kBase + 0x208, 77);
  auto e = make_variable_element(frame, *s);
  auto components = component_elements(*e, target.memory);
  ASSERT_EQ(components.size(), 3u);  // the constant is left out
  EXPECT_EQ(components[2].value->address, kBase + 0x200 + 12);
  e->structure->give_all_components = true;
  EXPECT_EQ(component_elements(*e, target.memory).size(), 4u);

  auto nested = find_component(*e, "in", target.memory);
  ASSERT_TRUE(nested);
  EXPECT_EQ(value_int32(*find_component(*nested, "K", target.memory), target.memory), 77);
  EXPECT_EQ(find_component(*e, "Y", target.memory), nullptr);

  // The components of a held structure are held too.
  auto held = clone_element(*e);
  std::vector<std::uint8_t> bytes(28, 0);
  bytes[8] = 5;
  set_constant(*held, bytes.data(), 28, kTypeStructure);
  auto held_k = find_component(*find_component(*held, "IN", target.memory), "K", target.memory);
  EXPECT_TRUE(held_k->is_constant());
  EXPECT_EQ(value_int32(*held_k, target.memory), 5);
}

}  // namespace
}  // namespace vantor
