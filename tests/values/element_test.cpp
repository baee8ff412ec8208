#include "values/element.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "support/fake_target.h"
#include "values/error_codes.h"

namespace vantor {
namespace {

class ElementTest : public ::testing::Test {
 protected:
  static constexpr Address kData = 0x50000;
  testing::FakeTarget target;

  std::unique_ptr<element> variable(std::int32_t type, Address address, std::int64_t size = 0) {
    auto e = make_element(type, kLangFortran95);
    e->address = address;
    e->size = size ? size : scalar_size(type);
    return e;
  }
};

TEST_F(ElementTest, HeldValuesStayInlineUpToTwentyBytesAndMoveToTheHeapAbove) {
  auto e = make_element();
  std::uint8_t bytes[21];
  for (int i = 0; i < 21; ++i) bytes[i] = static_cast<std::uint8_t>(i + 1);

  set_constant(*e, bytes, 20, kTypeComplex20);
  EXPECT_TRUE(e->is_constant());
  EXPECT_EQ(e->flags & kElementHeapValue, 0);
  EXPECT_EQ(e->address, reinterpret_cast<Address>(e->value.data()));
  EXPECT_EQ(e->value[19], 20);

  set_constant(*e, bytes, 21, kTypeCharacter);
  EXPECT_NE(e->flags & kElementHeapValue, 0);
  EXPECT_EQ(e->address, reinterpret_cast<Address>(e->heap_value.get()));
  EXPECT_EQ(constant_bytes(*e)[20], 21);

  // Back to a small value: the heap block is released (the leak checker sees it).
  set_constant(*e, bytes, 4, kTypeInteger4);
  EXPECT_EQ(e->flags & kElementHeapValue, 0);
  EXPECT_EQ(e->heap_value, nullptr);
  EXPECT_EQ(value_int32(*e, target.memory), 0x04030201);

  auto copy = clone_element(*e);
  EXPECT_EQ(copy->address, reinterpret_cast<Address>(copy->value.data()));
  set_constant(*e, bytes, 21, kTypeCharacter);
  auto heap_copy = clone_element(*e);
  EXPECT_NE(heap_copy->address, e->address);
  EXPECT_EQ(std::memcmp(constant_bytes(*heap_copy), bytes, 21), 0);
}

TEST_F(ElementTest, BitFieldsExtendTheSignOnlyForSignedTypes) {
  target.system.poke_value<std::uint16_t>(kData, 0b100u << 5);
  auto field = variable(kTypeInteger2, kData);
  field->bit_offset = 5;
  field->bit_count = 3;
  EXPECT_EQ(value_int32(*field, target.memory), -4);
  EXPECT_EQ(value_int64(*field, target.memory), -4);
  field->type = kTypeUnsigned2;
  EXPECT_EQ(value_int32(*field, target.memory), 4);
}

TEST_F(ElementTest, IntegerWidthsAndSignExtension) {
  target.system.poke_value<std::int64_t>(kData, 0x123456789LL);
  auto big = variable(kTypeInteger8, kData);
  EXPECT_EQ(value_int32(*big, target.memory), 0x23456789);
  EXPECT_EQ(value_int64(*big, target.memory), 0x123456789LL);

  target.system.poke_value<std::uint32_t>(kData + 8, 0xFFFFFFFFu);
  auto unsigned_int = variable(kTypeUnsigned4, kData + 8);
  EXPECT_EQ(value_int64(*unsigned_int, target.memory), -1);
  EXPECT_EQ(value_double(*unsigned_int, target.memory), 4294967295.0);

  target.system.poke_value<std::int8_t>(kData + 16, -3);
  EXPECT_EQ(value_int64(*variable(kTypeInteger1, kData + 16), target.memory), -3);
  EXPECT_EQ(value_int32(*variable(kTypeUnsigned1, kData + 16), target.memory), 253);

  auto huge = make_element();
  set_real_constant(*huge, 1e30, kTypeReal8);
  EXPECT_EQ(value_int32(*huge, target.memory), INT32_MIN);  // the hardware's indefinite integer
  set_real_constant(*huge, -7.9, kTypeReal4);
  EXPECT_EQ(value_int64(*huge, target.memory), -7);

  auto array = variable(kTypeArray, 0x123456789ABCull, 40);
  EXPECT_EQ(value_int32(*array, target.memory), static_cast<std::int32_t>(0x56789ABC));
  EXPECT_EQ(value_int64(*array, target.memory), 0x123456789ABCll);

  // REAL*10 and COMPLEX*20 are the doubles in their first eight bytes.
  set_real_constant(*huge, 2.5, kTypeReal10);
  EXPECT_EQ(huge->size, 10);
  EXPECT_EQ(value_double(*huge, target.memory), 2.5);
  set_complex_constant(*huge, 1.5, -2.0, kTypeComplex20);
  double re, im;
  value_complex(*huge, target.memory, re, im);
  EXPECT_EQ(im, -2.0);
}

TEST_F(ElementTest, UndefinedMeansEveryByteIsTheFillPattern) {
  std::vector<std::uint8_t> fill(8, 0x80);
  target.system.poke(kData, fill);
  fill[7] = 0x81;
  target.system.poke(kData, fill);
  EXPECT_FALSE(is_undefined(*variable(kTypeReal8, kData), target.memory));
  EXPECT_FALSE(is_undefined(*variable(kTypeReal8, 0x10), target.memory));  // unreadable

  auto held = make_element();
  std::uint8_t pattern[4] = {0x80, 0x80, 0x80, 0x80};
  set_constant(*held, pattern, 4, kTypeInteger4);
  EXPECT_TRUE(is_undefined(*held, target.memory));
}

TEST_F(ElementTest, SameTypeComparesNumericCodesAndPointeesRecursively) {
  auto a = make_element(kTypeReal8), b = make_element(kTypeReal8);
  EXPECT_TRUE(same_type(*a, *b));
  auto s1 = make_element(kTypeStructure), s2 = make_element(kTypeStructure);
  EXPECT_FALSE(same_type(*s1, *s2));

  auto p = make_element(kTypePointer8), q = make_element(kTypePointer8);
  p->next = make_element(kTypePointer8);
  p->next->next = make_element(kTypeInteger4);
  q->next = make_element(kTypePointer8);
  q->next->next = make_element(kTypeInteger4);
  EXPECT_TRUE(same_type(*p, *q));
  q->next->next->type = kTypeInteger2;
  EXPECT_FALSE(same_type(*p, *q));
}

TEST_F(ElementTest, RealRangeLimitsPerType) {
  EXPECT_EQ(real_range_error(3.5e38, kTypeReal4), kErrorOverflow);
  EXPECT_EQ(real_range_error(-3.5e38, kTypeReal4), kErrorOverflow);
  EXPECT_EQ(real_range_error(1e-39, kTypeReal4), kErrorUnderflow);
  EXPECT_EQ(real_range_error(0.0, kTypeReal4), 0);
  EXPECT_EQ(real_range_error(1e300, kTypeReal8), 0);
  EXPECT_EQ(real_range_error(1e-320, kTypeReal8), 0);
  EXPECT_EQ(real_range_error(HUGE_VAL, kTypeReal8), kErrorOverflow);
  EXPECT_EQ(real_range_error(HUGE_VAL, kTypeReal10), 0);
  EXPECT_EQ(complex_range_error(1.0, 1e39, kTypeComplex8), kErrorOverflow);
}

TEST_F(ElementTest, ErrorTextsAndTheirLimits) {
  EXPECT_EQ(error_text(0), "");
  EXPECT_EQ(error_text(13), "You only subtract an integer from a pointer");
  EXPECT_EQ(error_text(39), "Internal debugger error");
  EXPECT_EQ(error_text(40), "Illegal error 40");
  char small[6];
  error_text(kErrorSyntax, small, sizeof small);
  EXPECT_STREQ(small, "Synta");
  error_text(1000, small, sizeof small);
  EXPECT_STREQ(small, "Illeg");
}

}  // namespace
}  // namespace vantor
