// The evaluator's limit cases and every error it gives. Ordinary values of real programs
// are checked under Wine (tests/integration/values_session_itest.cpp).
#include "values/eval.h"

#include <gtest/gtest.h>

#include <vector>

#include "debuginfo/debug_type_codes.h"
#include "stack/stack_frame.h"
#include "support/sample_scope.h"
#include "values/error_codes.h"
#include "values/value_format.h"

namespace vantor {
namespace {

// The texts that must give one result: an error code, a type code or an integer.
struct Expected {
  std::int64_t result;
  std::vector<const char*> texts;
};

// The sample scope of test support: N, K, BIG, X, F, Z, A(1:5), M(0:2,1:3), C, S (a POINT
// with X, N and V(1:3)), the pointers P, SP, CP, NP, VP, BP, QP and RAW, L, the reference
// R, GONE (not allocated), the type name T and a variable called RAX.
class EvalTest : public ::testing::Test {
 protected:
  std::unique_ptr<element> eval(const std::string& text, unsigned flags = 0) {
    EvalResult result = evaluate(text, sample.scope(), flags);
    last_stop = result.stop;
    return std::move(result.value);
  }
  std::string shown(const std::string& text) { return value_text_or_error(*eval(text), target.memory); }
  std::unique_ptr<element> valid(const std::string& text) {
    auto e = eval(text);
    EXPECT_EQ(e->error_code, 0) << text << ": " << error_text(e->error_code);
    return e;
  }
  std::int64_t integer(const std::string& text) { return value_int64(*valid(text), target.memory); }
  double real(const std::string& text) { return value_double(*valid(text), target.memory); }

  void expect_errors(const std::vector<Expected>& rows) {
    for (const Expected& row : rows)
      for (const char* text : row.texts)
        EXPECT_EQ(eval(text)->error_code, row.result) << '"' << text << "\" should give: " << error_text(static_cast<std::int32_t>(row.result));
  }
  void expect_types(const std::vector<Expected>& rows) {
    for (const Expected& row : rows)
      for (const char* text : row.texts) EXPECT_EQ(valid(text)->type, row.result) << text;
  }
  void expect_integers(const std::vector<Expected>& rows) {
    for (const Expected& row : rows)
      for (const char* text : row.texts) EXPECT_EQ(integer(text), row.result) << text;
  }

  testing::SampleScope sample;
  testing::FakeTarget& target = sample.target;
  std::int32_t& language = sample.language;
  std::size_t last_stop = 0;
};

class CEvalTest : public EvalTest {
 protected:
  CEvalTest() { language = kLangC; }
};

TEST_F(EvalTest, ConstantsAndResultsTakeTheNarrowestType) {
  expect_types({{kTypeInteger4, {"2147483647", "5_3", "leng(c)"}},
                {kTypeInteger8, {"2147483648", "5_4", "5L", "9223372036854775808", "rbx", "loc(n)", "k + big"}},
                {kTypeUnsigned4, {"0xFFFFFFFF", "017"}},
                {kTypeUnsigned8, {"9223372036854775809", "0x100000000", "0xFFL"}},
                {kTypeReal4, {"0.1", "1.0E10", "0.0", ".5", "n * f"}},
                {kTypeReal8, {"18446744073709551616", "1.0E39", "1e-39", "n + x", "f + x"}},
                {kTypeReal10, {"1e-320"}},
                {kTypeInteger2, {"k + k"}},
                {kTypeComplex16, {"z * 2"}}});
  EXPECT_EQ(eval("1e-320")->size, 8);
  EXPECT_EQ(eval("42")->lang_code, kLangFortran95);
  EXPECT_EQ(real("1.E5"), 1e5);
  EXPECT_EQ(real("2.5e-1"), 0.25);
  EXPECT_EQ(real("3D2"), 300.0);
  EXPECT_EQ(real("7.0/2"), 3.5);
  auto quoted = eval("'it''s'");
  EXPECT_EQ(quoted->type, kTypeCharacter);
  EXPECT_EQ(quoted->size, 4);
  EXPECT_EQ(value_text_or_error(*quoted, target.memory), "'it's'");
  EXPECT_EQ(eval("'open")->size, 4);
  EXPECT_EQ(eval("''")->size, 0);
}

TEST_F(EvalTest, IntegerArithmeticPrecedenceNamesAndIntrinsics) {
  expect_integers({{7, {"1+2*3", "N", "rax" /* a variable called rax hides the register */, "r" /* references are transparent */}},
                   {9, {"(1+2)*3"}},
                   {5, {"10-3-2", "6 ^ 3"}},
                   {64, {"2**3**2"}},  // equal strengths group from the left, ** included
                   {2, {"100/10/5"}},
                   {4, {"+4", "LENG(c) + 1"}},
                   {-6, {"2*-3"}},
                   {3, {"- -3", "7/2", "leng('abc  ')"}},
                   {-3, {"-7/2"}},
                   {32, {"1 << 4 + 1"}},
                   {10, {"6 & 3 | 8", "a(a(1)/10)"}},
                   {-1, {"~0", "(-1)**-3"}},
                   {-14, {"-n*2"}},
                   {0, {"2**-1"}},
                   {INT32_MIN, {"2147483647+1"}},  // INTEGER*4 arithmetic wraps
                   {4999999997LL, {"k + big"}},
                   {255, {"0xffL"}},
                   {15, {"017"}},
                   {0x1234, {"rbx"}},
                   {78, {"R15 + 1"}},
                   {8, {"r + 1"}},
                   {30, {"a(n-4)"}},
                   {119, {"s%v(2) * 10 + s%n"}},
                   {99, {"S.N"}},
                   {5, {"strlen(cp)"}},
                   {0x1000, {"loc(n)"}},
                   {0x1108, {"loc(a(3))"}},
                   {0x1404, {"loc(s%n)"}}});
  EXPECT_EQ(eval("a(2)")->address, 0x1104u);
  EXPECT_EQ(real("m(2,3)"), 8.0);  // column-major: (2 - 0) * 8 + (3 - 1) * 24
}

TEST_F(EvalTest, LogicalCharacterAndComplexResults) {
  for (auto [text, expected] : std::vector<std::pair<const char*, const char*>>{
           {"1.EQ.2", ".FALSE."},  // dotted operators right after numbers and names
           {"n.GT.1", ".TRUE."},
           {"n .ge. 8 .or. n .lt. 8", ".TRUE."},
           {".NOT. .TRUE.", ".FALSE."},
           {"l .and. .false.", ".FALSE."},
           {"c == 'abc'", ".TRUE."},  // blank-padded comparison
           {"c .LT. 'abd'", ".TRUE."},
           {"z * z", "(-3,4)"},
           {"z + 1", "(2,2)"}})
    EXPECT_EQ(shown(text), expected) << text;
  EXPECT_EQ(valid("1 < 2")->type, kTypeLogical4);
}

TEST_F(EvalTest, Errors) {
  expect_errors({{kErrorBadConstant, {"0x", "0xG", "0x12345678901234567", "12E"}},
                 {kErrorTypesIncompatible, {"c == 1"}},
                 {kErrorDivisionByZero, {"1/0", "x/0", "z/0", "0**-1"}},
                 {kErrorOverflow, {"1.0E30*1.0E30" /* REAL*4 */, "x*1.0E300*1.0E300" /* REAL*8 */}},
                 {kErrorUnderflow, {"1.0E-30*1.0E-30"}},
                 {kErrorNoArithmetic, {"x .and. s", "c + 1", "z < z", "-c"}},
                 {kErrorIntegersRequired, {"x << 1", "~x"}},
                 {kErrorTooManyOpening, {"((n)", "loc(n"}},
                 {kErrorTooManyClosing, {"(n))", "n)"}},
                 {kErrorBracketMismatch, {"a[1)"}},
                 {kErrorSyntax, {"", "   ", "1 2", "n n", "*", "1+", "@", "n $", "\"x\"", "3 ~1", "n loc(n)", "1:2",
                                 "(1:2)", ".TRUE. n", "a(1]", "[1]", "()", "a()", "(1,2)", "a(1:2:3)", "loc()"}},
                 {kErrorUnknownVariable, {"nothing", "eax"}},
                 {kErrorNotAllocated, {"gone"}},
                 {kErrorNoObject, {"t"}},
                 {kErrorSubscriptOutOfBounds, {"a(0)", "a(6)", "m(3,1)"}},
                 {kErrorTooManySubscripts, {"a(1,2)"}},
                 {kErrorSubscriptNotInteger, {"a(1.0)", "a(l)", "a(1.5:2)"}},
                 {kErrorArrayExpected, {"n(1)"}},
                 {kErrorMemberNotFound, {"s%nope"}},
                 {kErrorStructureExpected, {"n%x"}},
                 {kErrorMemberNameExpected, {"s%(x)", "s%3"}},
                 {kErrorNoAddress, {"loc(5)"}},
                 {kErrorStringExpected, {"leng(5)", "leng(p)"}}});
}

TEST_F(EvalTest, SectionsAreClampedArrays) {
  auto s = valid("a(2:4)");
  EXPECT_EQ(s->type, kTypeArray);
  EXPECT_EQ(s->address_kind, kAddressSection);
  EXPECT_EQ(s->address, 0x1104u);
  EXPECT_EQ(s->size, 12);
  for (auto [text, name] : std::vector<std::pair<const char*, const char*>>{{"a(2:4)", "INTEGER*4 (2:4)"},
                                                                           {"a(:3)", "INTEGER*4 (3)"},
                                                                           {"a(4:)", "INTEGER*4 (4:5)"},
                                                                           {"a(:)", "INTEGER*4 (5)"},
                                                                           {"a(-9:99)", "INTEGER*4 (5)"},
                                                                           {"m(1, 2:3)", "REAL*8 (2:3)"}})
    EXPECT_EQ(type_name_text(*valid(text), target.memory), name) << text;
  // A single subscript with a section collapses its dimension.
  EXPECT_EQ(valid("m(1, 2:3)")->address, 0x1200u + 8 + 24);
  EXPECT_EQ(real("m(1, 2:3)(3)"), 7.0);
}

TEST_F(EvalTest, PercentSelectsOnlyInTheDialectsThatReadItSo) {
  language = kLangFortran;
  EXPECT_EQ(integer("n%3"), 1);
  language = kLangFortranDecorated;
  EXPECT_EQ(integer("s%n"), 99);
}

TEST_F(CEvalTest, CValuesComparisonsPointersAndSubscripts) {
  auto a = valid("'a'");
  EXPECT_EQ(a->type, kTypeUnsigned4);
  EXPECT_EQ(a->lang_code, kLangC);
  auto compared = valid("1 < 2");
  EXPECT_EQ(compared->type, kTypeInteger4);
  EXPECT_EQ(value_text_or_error(*compared, target.memory), "1 0x1");
  expect_integers({{97, {"'a'"}},
                   {10, {"'\\n'"}},
                   {39, {"'\\''"}},
                   {0x6162, {"'ab'"}},
                   {0, {"!5", "3 > 2 && 1 < 0", "-1 < 0xFFFFFFFFFFL" /* as in C: -1 becomes unsigned */}},
                   {1, {"0 || x", "0xFFFFFFFF > 0", "18446744073709551615 > 1", "p == 0x1100", "np == 0"}},
                   {20, {"a[2]", "*(p+1)"}},
                   {40, {"p[3]"}},
                   {'e', {"cp[1]"}},
                   {99, {"sp->N", "(*sp).N"}},
                   {3, {"n % 4", "(p + 3) - p"}},
                   {10, {"*p"}},
                   {7, {"*&n"}},
                   {0x1108, {"p + 2", "2 + p"}},
                   {0x10FC, {"p - 1"}},
                   {0x1000, {"&n"}}});
  EXPECT_EQ(real("m[1][2]"), 4.0);
  auto address = valid("&n");
  EXPECT_EQ(address->type, kTypePointer8);
  EXPECT_EQ(type_name_text(*address, target.memory), "int *");
}

TEST_F(CEvalTest, CErrors) {
  expect_errors({{kErrorIntegersRequired, {"x % 2"}},
                 {kErrorArrayExpected, {"vp[1]"}},
                 {kErrorMemberNotFound, {"sp->n"}},  // C names keep their case
                 {kErrorStructurePointerExpected, {"s->N"}},
                 {kErrorStructureExpected, {"sp.N"}},
                 {kErrorNoAddress, {"&5", "&rbx"}},
                 {kErrorPointerRequired, {"*n"}},
                 {kErrorVoidDereference, {"*vp"}},
                 {kErrorInternal, {"*raw"}},
                 {kErrorNullPointer, {"*np"}},
                 {kErrorIllegalPointer, {"*bp"}},
                 {kErrorSyntax, {"n*"}},
                 {kErrorAddPointers, {"p + p"}},
                 {kErrorAddNonInteger, {"p + 1.5"}},
                 {kErrorVoidPointerArithmetic, {"vp + 1"}},
                 {kErrorSubtractNonInteger, {"p - 1.5"}},
                 {kErrorPointerTypes, {"p - qp", "p < qp"}},
                 {kErrorNoArithmetic, {"p * 2"}}});
}

TEST_F(EvalTest, EqualsEndsTheExpressionUnlessItCompares) {
  auto left = valid("a(2) = 5");
  EXPECT_EQ(left->address, 0x1104u);
  EXPECT_EQ(last_stop, 5u);
  EXPECT_EQ(value_text_or_error(*eval("n = 7", kEvalEqualsCompares), target.memory), ".TRUE.");
  EXPECT_EQ(last_stop, 5u);
  eval("n == 7");
  EXPECT_EQ(last_stop, 6u);
  EXPECT_EQ(value_int64(*eval("a(1), a(2)"), target.memory), 10);
  EXPECT_EQ(last_stop, 4u);
}

TEST_F(EvalTest, AFrameGivesTheScopeItsLanguage) {
  class CodeFrame : public StackFrame {
   public:
    CodeFrame() : StackFrame(nullptr, 0, 0, 0, 0, nullptr) {}
    std::string routine_name() const override { return "?"; }
  } system_frame;
  EXPECT_EQ(scope_of_frame(&system_frame, target.memory, nullptr).language, kLangC);
  EXPECT_EQ(evaluate("n", scope_of_frame(&system_frame, target.memory, nullptr)).value->error_code,
            kErrorUnknownVariable);
}

}  // namespace
}  // namespace vantor
