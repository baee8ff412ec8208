#include "values/assignment.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/fake_target.h"
#include "values/error_codes.h"

namespace vantor {
namespace {

class AssignmentTest : public ::testing::Test {
 protected:
  static constexpr Address kData = 0x30000;
  testing::FakeTarget target;

  void SetUp() override { target.system.map(kData, 0x100); }
  std::unique_ptr<element> at(std::int32_t type, Address offset, std::int64_t size = 0) {
    auto e = make_element(type, kLangFortran95);
    e->address = kData + offset;
    e->size = size ? size : scalar_size(type);
    return e;
  }
  std::unique_ptr<element> integer(std::int64_t v, std::int32_t type = kTypeInteger4) {
    auto e = make_element();
    set_integer_constant(*e, v, type);
    return e;
  }
  std::unique_ptr<element> real(double v, std::int32_t type = kTypeReal8) {
    auto e = make_element();
    set_real_constant(*e, v, type);
    return e;
  }
  template <typename T>
  T peek(Address offset) {
    T value;
    auto bytes = target.system.peek(kData + offset, sizeof(T));
    std::memcpy(&value, bytes.data(), sizeof(T));
    return value;
  }
};

// Plain assignments of each type are made in a real program under Wine
// (tests/integration/values_session_itest.cpp); these are the conversions at their limits.
TEST_F(AssignmentTest, NumbersConvertToTheTargetsType) {
  EXPECT_EQ(assign(*at(kTypeInteger2, 4), *real(-7.9), target.memory), 0);
  EXPECT_EQ(peek<std::int16_t>(4), -7);
  EXPECT_EQ(assign(*at(kTypeInteger1, 6), *integer(300), target.memory), 0);
  EXPECT_EQ(peek<std::uint8_t>(6), 44);  // cut to the target's width
  EXPECT_EQ(assign(*at(kTypeReal8, 8), *integer(3), target.memory), 0);
  EXPECT_EQ(peek<double>(8), 3.0);
  EXPECT_EQ(assign(*at(kTypeInteger8, 24), *integer(0xFFFFFFFF, kTypeUnsigned4), target.memory), 0);
  EXPECT_EQ(peek<std::int64_t>(24), 0xFFFFFFFFll);  // unsigned values are not sign-extended

  auto z = make_element();
  set_complex_constant(*z, 1.5, -2.0, kTypeComplex16);
  EXPECT_EQ(assign(*at(kTypeComplex16, 32), *z, target.memory), 0);
  EXPECT_EQ(peek<double>(40), -2.0);
  EXPECT_EQ(assign(*at(kTypeReal8, 8), *z, target.memory), 0);  // the real part
  EXPECT_EQ(peek<double>(8), 1.5);
}

TEST_F(AssignmentTest, RangeAndTypeFailuresWriteNothing) {
  target.system.poke_value<float>(kData, 1.0f);
  EXPECT_EQ(assign(*at(kTypeReal4, 0), *real(1e39), target.memory), kErrorOverflow);
  EXPECT_EQ(assign(*at(kTypeReal4, 0), *real(1e-39), target.memory), kErrorUnderflow);
  EXPECT_EQ(peek<float>(0), 1.0f);
  auto text = make_element();
  set_constant(*text, "abc", 3, kTypeCharacter);
  EXPECT_EQ(assign(*at(kTypeInteger4, 0), *text, target.memory), kErrorTypesIncompatible);
  EXPECT_EQ(assign(*at(kTypeLogical4, 0), *real(1.0), target.memory), kErrorTypesIncompatible);
  EXPECT_EQ(assign(*integer(1), *integer(2), target.memory), kErrorNoAddress);
  EXPECT_EQ(assign(*make_error_element(kErrorOutOfScope), *integer(2), target.memory), kErrorOutOfScope);
  auto unwritable = at(kTypeInteger4, 0);
  unwritable->address = 0x40;
  EXPECT_EQ(assign(*unwritable, *integer(2), target.memory), kErrorIllegalPointer);
  EXPECT_EQ(peek<float>(0), 1.0f);
}

TEST_F(AssignmentTest, CharactersLogicalsBitFieldsAndPointers) {
  auto text = make_element();
  target.system.poke(kData, "xxxxxx", 6);
  set_constant(*text, "abcdefgh", 8, kTypeCharacter);
  EXPECT_EQ(assign(*at(kTypeCharacter, 0, 3), *text, target.memory), 0);
  EXPECT_EQ(target.system.peek(kData, 4), (std::vector<std::uint8_t>{'a', 'b', 'c', 'x'}));
  set_constant(*text, nullptr, 0, kTypeCharacter);  // '' blanks the whole target
  EXPECT_EQ(assign(*at(kTypeCharacter, 0, 3), *text, target.memory), 0);
  EXPECT_EQ(target.system.peek(kData, 4), (std::vector<std::uint8_t>{' ', ' ', ' ', 'x'}));

  EXPECT_EQ(assign(*at(kTypeLogical4, 8), *integer(5), target.memory), 0);
  EXPECT_EQ(peek<std::int32_t>(8), 1);

  target.system.poke_value<std::uint16_t>(kData + 12, 0xFFFF);
  auto field = at(kTypeUnsigned2, 12);
  field->bit_offset = 4;
  field->bit_count = 3;
  EXPECT_EQ(assign(*field, *integer(2), target.memory), 0);
  EXPECT_EQ(peek<std::uint16_t>(12), 0xFFAF);

  auto pointer = at(kTypePointer8, 16);
  pointer->next = make_element(kTypeInteger4);
  EXPECT_EQ(assign(*pointer, *integer(0x1234), target.memory), 0);
  EXPECT_EQ(peek<std::uint64_t>(16), 0x1234u);
  EXPECT_EQ(assign(*pointer, *real(1.0), target.memory), kErrorTypesIncompatible);
}

}  // namespace
}  // namespace vantor
