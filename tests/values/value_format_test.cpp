// Formatting corner cases: the C notation, fill patterns that are not quite undefined,
// limits of strings and bounds, unreadable memory. The ordinary Fortran texts of every
// type are checked against real programs under Wine (tests/integration/values_session_itest.cpp).
#include "values/value_format.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/fake_target.h"
#include "values/crt_format.h"
#include "values/display_name.h"
#include "values/element_dump.h"
#include "values/error_codes.h"
#include "values/string_readers.h"

namespace vantor {
namespace {

class ValueFormatTest : public ::testing::Test {
 protected:
  static constexpr Address kData = 0x60000;
  testing::FakeTarget target;

  std::unique_ptr<element> located(std::int32_t type, std::int64_t size, std::int32_t lang = kLangFortran95,
                                   Address address = kData) {
    auto e = make_element(type, lang);
    e->address = address;
    e->size = size;
    return e;
  }
  template <typename T>
  std::unique_ptr<element> at(std::int32_t type, T value, std::int32_t lang = kLangFortran95, Address address = kData) {
    target.system.poke_value<T>(address, value);
    return located(type, sizeof(T), lang, address);
  }
  std::string text(element& e, std::size_t capacity = 4096) {
    TextOutput out(capacity);
    last_error = value_text(e, target.memory, out.buffer());
    return out.str();
  }
  std::string name(const element& e) { return type_name_text(e, target.memory); }
  std::unique_ptr<element> array_of(std::int32_t element_type, std::int64_t lower, std::int64_t upper,
                                    std::int32_t lang = kLangFortran95) {
    auto e = located(kTypeArray, 0, lang);
    e->next = make_element(element_type, lang);
    e->next->size = scalar_size(element_type);
    e->array = std::make_unique<array_info>();
    e->array->num_dims = 1;
    e->array->first_element[0] = lower;
    e->array->last_element[0] = upper;
    return e;
  }
  std::int32_t last_error = 0;
};

TEST_F(ValueFormatTest, FortranFillPatternsAndLogicalLimits) {
  EXPECT_EQ(text(*at<std::int8_t>(kTypeInteger1, -128)), "UNDEFINED");
  EXPECT_EQ(text(*at<std::int8_t>(kTypeInteger1, -127)), "-127");
  EXPECT_EQ(text(*at<std::int16_t>(kTypeInteger2, -32640)), "UNDEFINED");
  EXPECT_EQ(text(*at<std::int16_t>(kTypeInteger2, -32641)), "-32641");
  EXPECT_EQ(text(*at<std::uint32_t>(kTypeUnsigned4, 0x80808080u)), "2155905152");
  EXPECT_EQ(text(*at<std::uint64_t>(kTypeUnsigned8, ~0ull)), "-1");  // signed in Fortran notation
  EXPECT_EQ(text(*at<std::int32_t>(kTypeLogical4, 2)), "*Invalid*");
  EXPECT_EQ(text(*at<std::int32_t>(kTypeLogical4, 0x80)), "UNDEFINED");
  EXPECT_EQ(text(*at<std::uint64_t>(kTypeLogical8, 0x100000000ull)), ".TRUE.");
  EXPECT_EQ(text(*at<std::int32_t>(kTypeLogical4, 1, kLangC)), "");  // no logicals in C
}

TEST_F(ValueFormatTest, RealsKeepTheirNotationAsymmetry) {
  EXPECT_EQ(text(*at<double>(kTypeReal8, 0.1, kLangC)), "0.100000000000000");
  EXPECT_EQ(text(*at<float>(kTypeReal4, 1.5f, kLangC)), "1.50000");
  EXPECT_EQ(text(*at<double>(kTypeReal8, 1e20)), "1e+20");
  auto c = make_element(0, kLangFortran95);
  set_complex_constant(*c, 0.25, 1e10, kTypeComplex16);
  EXPECT_EQ(text(*c), "(0.25,1e+10)");
  set_complex_constant(*c, 1.0, 3.0, kTypeComplex20);
  EXPECT_EQ(text(*c), "(1,3)");

  // REAL*10: the first 8 bytes are read as a double and the last 2 play no part.
  std::uint8_t ten[10];
  double two_and_a_half = 2.5;
  std::memcpy(ten, &two_and_a_half, 8);
  ten[8] = 0x12;
  ten[9] = 0x34;
  target.system.poke(kData, ten, 10);
  auto r10 = located(kTypeReal10, 10);
  EXPECT_EQ(text(*r10), "2.500000000000000000");
  r10->lang_code = kLangC;
  EXPECT_EQ(text(*r10), "2.500000000000000000");
  std::memset(ten, 0x80, 10);
  target.system.poke(kData, ten, 10);
  r10->lang_code = kLangFortran95;
  EXPECT_EQ(text(*r10), "UNDEFINED");
}

TEST_F(ValueFormatTest, CIntegersShowDecimalAndHexadecimal) {
  EXPECT_EQ(text(*at<char>(kTypeInteger1, 'A', kLangC)), "'A' 65 0x41");
  EXPECT_EQ(text(*at<std::int8_t>(kTypeInteger1, -1, kLangC)), "'\\xff' -1 0xff");
  EXPECT_EQ(text(*at<std::uint8_t>(kTypeUnsigned1, 200, kLangC)), "'\xc8' 200 0xc8");
  EXPECT_EQ(text(*at<std::int16_t>(kTypeInteger2, -2, kLangC)), "-2 0xfffe");
  EXPECT_EQ(text(*at<std::uint32_t>(kTypeUnsigned4, 4000000000u, kLangC)), "4000000000 0xee6b2800");
  EXPECT_EQ(text(*at<std::int64_t>(kTypeInteger8, 5, kLangC)), "5 0x000000005LL");
  EXPECT_EQ(text(*at<std::int64_t>(kTypeInteger8, -1, kLangC)), "-1 0xffffffffffffffffLL");
  EXPECT_EQ(text(*at<std::uint64_t>(kTypeUnsigned8, 1ull << 63, kLangC)), "9223372036854775808 0x8000000000000000LL");
  auto e = at<std::int64_t>(kTypeInteger8, 123456789, kLangC);
  EXPECT_EQ(text(*e, 6), "12345");  // cut at the capacity
  EXPECT_EQ(text(*e, 10), "123456789");  // the hexadecimal piece no longer fits and is dropped
}

TEST_F(ValueFormatTest, PointersAndReferences) {
  auto p = at<std::uint64_t>(kTypePointer8, 0, kLangC);
  EXPECT_EQ(text(*p), "pointer type is null");
  p->next = make_element(kTypeInteger1, kLangC);
  EXPECT_EQ(text(*p), "NULL");
  target.system.poke_value<std::uint64_t>(kData, 0x1234);
  EXPECT_EQ(text(*p), "0x0000000000001234 (illegal address)");
  target.system.poke(kData + 0x100, "abc", 4);
  target.system.poke_value<std::uint64_t>(kData, kData + 0x100);
  EXPECT_EQ(text(*p), "0x0000000000060100 -> \"abc\"");
  p->next->type = kTypeInteger4;
  EXPECT_EQ(text(*p), "0x0000000000060100");
  p->lang_code = kLangFortran95;
  EXPECT_EQ(text(*p), "0x0000000000060100");

  target.system.poke_value<std::int32_t>(kData + 0x200, 42);
  auto r = at<std::uint64_t>(kTypeReference, kData + 0x200, kLangC, kData + 8);
  EXPECT_EQ(text(*r), "reference type is null");
  r->next = make_element(kTypeInteger4, kLangC);
  r->next->size = 4;
  EXPECT_EQ(text(*r), "42 0x2a");
}

TEST_F(ValueFormatTest, UnreadableAddressesBecomeTheElementsError) {
  auto e = located(kTypeInteger4, 4, kLangFortran95, 0x10);
  EXPECT_EQ(text(*e), "");
  EXPECT_EQ(last_error, kErrorIllegalPointer);
  EXPECT_EQ(e->error_code, kErrorIllegalPointer);
  text(*located(kTypeReal8, 8, kLangC, 0));
  EXPECT_EQ(last_error, kErrorNullPointer);
  auto failed = make_error_element(kErrorOutOfScope, kLangFortran95);
  EXPECT_EQ(text(*failed), "");
  EXPECT_EQ(last_error, kErrorOutOfScope);
  EXPECT_EQ(value_text_or_error(*failed, target.memory), "Data out of scope");

  // An absent optional argument is recognised before the address is tried.
  auto missing = located(kTypeInteger4, 4, kLangFortran95, 0x00000001F0F0F0F0ull);
  EXPECT_EQ(text(*missing), "MISSING ARGUMENT");
  missing->lang_code = kLangFortran;
  text(*missing);
  EXPECT_EQ(last_error, kErrorIllegalPointer);

  EXPECT_EQ(text(*at<std::int32_t>(kTypeInteger4, 7, 2)), "");  // an unknown language has no notation
  EXPECT_EQ(last_error, 0);
}

TEST_F(ValueFormatTest, FortranStringsReplaceControlsAndStopAtTheirLimit) {
  target.system.poke(kData, "Hi\tthere\n", 9);
  auto c = located(kTypeCharacter, 9);
  EXPECT_EQ(text(*c), "'Hi?there?'");
  EXPECT_EQ(name(*c), "CHARACTER*9 ");
  c->address = 0x20;
  EXPECT_EQ(text(*c), "*Undefined*");
  EXPECT_EQ(last_error, 0);

  std::vector<std::uint8_t> long_text(9000, 'x');
  long_text[0] = 0;
  target.system.poke(kData, long_text);
  auto limit = located(kTypeCharacter, 8091);
  std::string shown = text(*limit, 10000);
  EXPECT_EQ(shown.size(), 8093u);
  EXPECT_EQ(shown.substr(0, 3), "'?x");
  limit->size = 8092;
  EXPECT_EQ(text(*limit, 10000), "''");
  limit->size = 100000;
  EXPECT_EQ(text(*limit, 10000), "''");
}

TEST_F(ValueFormatTest, CStringsGainDotsAtExactlySixtyCharacters) {
  auto shown = [&](std::size_t length) {
    std::string s(length, 'a');
    target.system.poke(kData, s.c_str(), length + 1);
    TextOutput out;
    c_string_from_process(target.memory, kData, out.buffer(), 0);
    return out.str();
  };
  EXPECT_EQ(shown(59), std::string(59, 'a'));
  EXPECT_EQ(shown(60), std::string(60, 'a') + "...");
  EXPECT_EQ(shown(61), std::string(61, 'a'));
  EXPECT_EQ(shown(200).size(), 200u);  // several 64-byte blocks

  // Escapes count in the text length; a count reads past zero bytes.
  target.system.poke(kData, "a\0\"b", 4);
  TextOutput counted;
  c_string_from_process(target.memory, kData, counted.buffer(), 4);
  EXPECT_EQ(counted.str(), "a\\0\\\"b");

  // A string that ends just before unreadable memory is still read whole.
  Address page_end = 0x80000;
  target.system.map(page_end - 4096, 4096);
  target.system.poke(page_end - 3, "xy", 3);
  TextOutput edge;
  c_string_from_process(target.memory, page_end - 3, edge.buffer(), 0);
  EXPECT_EQ(edge.str(), "xy");

  std::string escaped;
  for (int byte : {0xFF, 0x00, 0x09, 0x0A, 0x0D, 0x1A, 0x22, 0x27, 0x5C, 0x41})
    escape_character(static_cast<std::uint8_t>(byte), escaped);
  EXPECT_EQ(escaped, "\\xff\\0\\t\\n\\r\\x1a\\\"\\'\\\\A");
}

TEST_F(ValueFormatTest, ArrayBoundLimits) {
  target.system.map(kData, 64);
  EXPECT_EQ(name(*array_of(kTypeInteger4, 1, 0)), "INTEGER*4 (0)");
  EXPECT_EQ(name(*array_of(kTypeInteger4, 3, 1)), "INTEGER*4 (3:*Invalid*)");
  EXPECT_EQ(name(*array_of(kTypeReal8, 1, 0x80000000ll)), "REAL*8 (*)");
  EXPECT_EQ(name(*array_of(kTypeReal8, 1, 0x7FFFFFFF)), "REAL*8 (2147483647)");
  EXPECT_EQ(name(*array_of(kTypeReal8, 1, 0x7FFFFFFF, kLangFortran)), "REAL*8 (*)");
  EXPECT_EQ(name(*array_of(kTypeReal8, 1, 100000000, kLangFortran)), "REAL*8 (*)");

  auto two = array_of(kTypeInteger2, 0, 2);
  two->array->num_dims = 2;
  two->array->first_element[1] = 1;
  two->array->last_element[1] = 4;
  EXPECT_EQ(text(*two), "INTEGER*2 (0:2,4)");
  two->array->num_dims = 0;
  EXPECT_EQ(name(*two), "INTEGER*2 Array size not known");

  auto gone = array_of(kTypeInteger4, 1, 3);
  gone->address = 0;
  EXPECT_EQ(text(*gone), "Unassigned [INTEGER*4 (Subscripts not valid)]");
  gone->address = 0x30;
  EXPECT_EQ(text(*gone), "INTEGER*4 (Subscripts not valid)");

  target.system.poke(kData, "hello\0zz", 8);  // char vectors read as strings
  auto c = array_of(kTypeInteger1, 0, 7, kLangC);
  EXPECT_EQ(text(*c), "\"hello\\0zz\"");
  EXPECT_EQ(name(*c), "char [8]");
  auto f = array_of(kTypeInteger1, 0, 4, kLangFortranDecorated);
  EXPECT_EQ(text(*f), "\"hello\"");
  f->address = 0x40;
  EXPECT_EQ(text(*f), "*Undefined*");
}

TEST_F(ValueFormatTest, TypeNamesInTheOtherNotations) {
  auto p = make_element(kTypePointer8, kLangC);
  p->next = make_element(kTypeInteger4, kLangC);
  EXPECT_EQ(name(*p), "int *");
  p->lang_code = p->next->lang_code = kLangFortran95;
  EXPECT_EQ(name(*p), "INTEGER*4 POINTER :: ");

  DerivedTypeRecord point;
  point.name = "struct programdt_POINT";
  auto s = make_element(kTypeStructure, kLangFortranDecorated);
  s->structure = std::make_unique<structure_info>();
  s->structure->type = &point;
  EXPECT_EQ(name(*s), "TYPE POINT");
  point.name = "point";
  s->lang_code = kLangC;
  EXPECT_EQ(name(*s), "point");
  EXPECT_EQ(text(*s), "point");

  auto grid = array_of(kTypeInteger4, 0, 9, kLangC);
  grid->array->num_dims = 2;
  grid->array->last_element[1] = -1;
  EXPECT_EQ(name(*grid), "int [10][]");
  EXPECT_EQ(name(*make_element(kTypeUnsigned8, kLangFortran95)), "");
  EXPECT_EQ(name(*make_element(kTypeUnsigned8, kLangC)), "unsigned long long ");
  EXPECT_EQ(name(*make_element(kTypeComplex16, kLangC)), "");
  EXPECT_EQ(name(*make_element(kTypeFunction, kLangFortran95)), "FUNCTION");
  EXPECT_EQ(name(*make_element(kTypeFunction, kLangC)), "()");
  TextOutput out;
  EXPECT_EQ(type_name(*make_error_element(kErrorUnknownVariable), target.memory, out.buffer()), kErrorUnknownVariable);
  EXPECT_EQ(out.str(), "");
}

TEST(DisplayNameTest, UndecorationAndTrailingMarks) {
  EXPECT_EQ(undecorate_fortran_name("program"), "MAIN@");
  EXPECT_EQ(undecorate_fortran_name("struct GEOMdt_POINT"), "TYPE GEOM:POINT");
  EXPECT_EQ(undecorate_fortran_name("GEOMmp_SCALE"), "GEOM:SCALE");
  EXPECT_EQ(undecorate_fortran_name("_F90__SOLVEip_STEPvar_X"), "SOLVE:STEP:X");
  EXPECT_EQ(display_name("FOO__C", 1), "FOO");
  EXPECT_EQ(display_name("FOO__C", 4), "FOO");
  EXPECT_EQ(display_name("FOO__C", 0), "FOO__C");
  EXPECT_EQ(display_name("struct programdt_P", 3), "TYPE P");
  EXPECT_FALSE(display_name("FOO", 2).has_value());
}

TEST_F(ValueFormatTest, DebugDumpLines) {
  auto e = make_element(0, kLangFortran95);
  std::int32_t seven = 7;
  set_constant(*e, &seven, 4, kTypeInteger4);
  e->flags |= kElementCanMutate;
  std::string dump = dump_element(*e, target.memory);
  ASSERT_EQ(dump.substr(0, 12), "Element at: ");
  EXPECT_EQ(dump.substr(dump.find('\n') + 1),
            "type: INTEGER*4  (6)\naddress: " + crt_format("%x", static_cast<unsigned>(e->address)) +
                " 07 00 00 00 \nsize: 4\nlang_code: 4\nis_constant: 1\nis_typedef: 0\nelement can mutate\n"
                "error_code: (0), \n");
}

}  // namespace
}  // namespace vantor
