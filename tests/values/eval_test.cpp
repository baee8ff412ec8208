#include "values/eval.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>

#include "debuginfo/debug_type_codes.h"
#include "stack/stack_frame.h"
#include "support/sample_scope.h"
#include "values/error_codes.h"
#include "values/value_format.h"

namespace vantor {
namespace {

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
  std::int32_t error_of(const std::string& text) { return eval(text)->error_code; }
  std::string shown(const std::string& text) {
    auto e = eval(text);
    return value_text_or_error(*e, target.memory);
  }
  std::int64_t integer(const std::string& text) {
    auto e = eval(text);
    EXPECT_EQ(e->error_code, 0) << text << ": " << error_text(e->error_code);
    return value_int64(*e, target.memory);
  }
  double real(const std::string& text) {
    auto e = eval(text);
    EXPECT_EQ(e->error_code, 0) << text << ": " << error_text(e->error_code);
    return value_double(*e, target.memory);
  }
  std::int32_t type_of(const std::string& text) {
    auto e = eval(text);
    EXPECT_EQ(e->error_code, 0) << text << ": " << error_text(e->error_code);
    return e->type;
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

TEST_F(EvalTest, IntegerConstantsAreTypedByValueAndSuffix) {
  EXPECT_EQ(type_of("2147483647"), kTypeInteger4);
  EXPECT_EQ(type_of("2147483648"), kTypeInteger8);
  EXPECT_EQ(type_of("5_4"), kTypeInteger8);
  EXPECT_EQ(type_of("5_7"), kTypeInteger8);
  EXPECT_EQ(type_of("5_3"), kTypeInteger4);
  EXPECT_EQ(type_of("5L"), kTypeInteger8);
  EXPECT_EQ(type_of("9223372036854775808"), kTypeInteger8);
  EXPECT_EQ(type_of("9223372036854775809"), kTypeUnsigned8);
  EXPECT_EQ(type_of("18446744073709551615"), kTypeUnsigned8);
  EXPECT_EQ(type_of("18446744073709551616"), kTypeReal8);
  EXPECT_EQ(type_of("0xFFFFFFFF"), kTypeUnsigned4);
  EXPECT_EQ(type_of("0x100000000"), kTypeUnsigned8);
  EXPECT_EQ(type_of("0xFFL"), kTypeUnsigned8);
  EXPECT_EQ(integer("0xffL"), 255);
  EXPECT_EQ(integer("017"), 15);
  EXPECT_EQ(type_of("017"), kTypeUnsigned4);
  EXPECT_EQ(error_of("0x"), kErrorBadConstant);
  EXPECT_EQ(error_of("0xG"), kErrorBadConstant);
  EXPECT_EQ(error_of("0x12345678901234567"), kErrorBadConstant);
  EXPECT_EQ(eval("42")->lang_code, kLangFortran95);
}

TEST_F(EvalTest, RealConstantsTakeTheNarrowestType) {
  EXPECT_EQ(type_of("0.1"), kTypeReal4);
  EXPECT_EQ(type_of("0.5"), kTypeReal4);
  EXPECT_EQ(type_of("1.0E10"), kTypeReal4);
  EXPECT_EQ(type_of("0.0"), kTypeReal4);
  EXPECT_EQ(type_of("1.0E39"), kTypeReal8);
  EXPECT_EQ(type_of("1e-39"), kTypeReal8);
  EXPECT_EQ(type_of("1e-320"), kTypeReal10);
  EXPECT_EQ(eval("1e-320")->size, 8);
  EXPECT_EQ(type_of(".5"), kTypeReal4);
  EXPECT_EQ(real("1.E5"), 1e5);
  EXPECT_EQ(real("2.5e-1"), 0.25);
  EXPECT_EQ(real("3D2"), 300.0);
  EXPECT_EQ(error_of("12E"), kErrorBadConstant);
}

TEST_F(EvalTest, DottedOperatorsAfterNumbersAndNames) {
  EXPECT_EQ(shown("1.EQ.2"), ".FALSE.");
  EXPECT_EQ(shown("1.eq.1"), ".TRUE.");
  EXPECT_EQ(shown("n.GT.1"), ".TRUE.");
  EXPECT_EQ(shown("n .ge. 8 .or. n .lt. 8"), ".TRUE.");
  EXPECT_EQ(shown(".NOT. .TRUE."), ".FALSE.");
  EXPECT_EQ(shown("l .and. .false."), ".FALSE.");
  EXPECT_EQ(shown("n .ne. 7"), ".FALSE.");
  // The same expression in both spellings gives the same value.
  EXPECT_EQ(shown("n == 7"), shown("n .EQ. 7"));
  EXPECT_EQ(shown("n <= 7"), shown("n .LE. 7"));
}

TEST_F(EvalTest, CharacterConstants) {
  auto e = eval("'it''s'");
  EXPECT_EQ(e->type, kTypeCharacter);
  EXPECT_EQ(e->size, 4);
  EXPECT_EQ(value_text_or_error(*e, target.memory), "'it's'");
  EXPECT_EQ(eval("'open")->size, 4);
  EXPECT_EQ(eval("''")->size, 0);
  EXPECT_EQ(shown("c == 'abc'"), ".TRUE.");  // blank-padded comparison
  EXPECT_EQ(shown("c .LT. 'abd'"), ".TRUE.");
  EXPECT_EQ(error_of("c == 1"), kErrorTypesIncompatible);
}

TEST_F(CEvalTest, CCharacterConstantsAreUnsignedInts) {
  auto a = eval("'a'");
  EXPECT_EQ(a->type, kTypeUnsigned4);
  EXPECT_EQ(a->lang_code, kLangC);
  EXPECT_EQ(value_int64(*a, target.memory), 97);
  EXPECT_EQ(integer("'\\n'"), 10);
  EXPECT_EQ(integer("'\\''"), 39);
  EXPECT_EQ(integer("'ab'"), 0x6162);
}

TEST_F(EvalTest, PrecedenceAndLeftGrouping) {
  EXPECT_EQ(integer("1+2*3"), 7);
  EXPECT_EQ(integer("(1+2)*3"), 9);
  EXPECT_EQ(integer("10-3-2"), 5);
  EXPECT_EQ(integer("2**3**2"), 64);  // equal strengths group from the left, ** included
  EXPECT_EQ(integer("100/10/5"), 2);
  EXPECT_EQ(integer("-3+5"), 2);
  EXPECT_EQ(integer("+4"), 4);
  EXPECT_EQ(integer("2*-3"), -6);
  EXPECT_EQ(integer("- -3"), 3);
  EXPECT_EQ(integer("1 << 4 + 1"), 32);
  EXPECT_EQ(integer("6 & 3 | 8"), 10);
  EXPECT_EQ(integer("6 ^ 3"), 5);
  EXPECT_EQ(integer("~0"), -1);
  EXPECT_EQ(integer("-n*2"), -14);
  EXPECT_EQ(integer("2**-1"), 0);
  EXPECT_EQ(integer("(-1)**-3"), -1);
}

TEST_F(EvalTest, ArithmeticPromotionsAndTheirErrors) {
  EXPECT_EQ(type_of("k + k"), kTypeInteger2);
  EXPECT_EQ(type_of("k + big"), kTypeInteger8);
  EXPECT_EQ(integer("k + big"), 4999999997LL);
  EXPECT_EQ(type_of("n + x"), kTypeReal8);
  EXPECT_EQ(type_of("n * f"), kTypeReal4);
  EXPECT_EQ(type_of("f + x"), kTypeReal8);
  EXPECT_EQ(type_of("z * 2"), kTypeComplex16);
  EXPECT_EQ(shown("z * z"), "(-3,4)");
  EXPECT_EQ(shown("z + 1"), "(2,2)");
  EXPECT_EQ(real("7.0/2"), 3.5);
  EXPECT_EQ(integer("7/2"), 3);
  EXPECT_EQ(integer("-7/2"), -3);
  EXPECT_EQ(integer("2147483647+1"), INT32_MIN);  // INTEGER*4 arithmetic wraps
  EXPECT_EQ(error_of("1/0"), kErrorDivisionByZero);
  EXPECT_EQ(error_of("x/0"), kErrorDivisionByZero);
  EXPECT_EQ(error_of("z/0"), kErrorDivisionByZero);
  EXPECT_EQ(error_of("0**-1"), kErrorDivisionByZero);
  EXPECT_EQ(error_of("1.0E30*1.0E30"), kErrorOverflow);      // REAL*4 result
  EXPECT_EQ(error_of("1.0E-30*1.0E-30"), kErrorUnderflow);
  EXPECT_EQ(error_of("x*1.0E300*1.0E300"), kErrorOverflow);  // REAL*8
  EXPECT_EQ(error_of("x .and. s"), kErrorNoArithmetic);
  EXPECT_EQ(error_of("c + 1"), kErrorNoArithmetic);
  EXPECT_EQ(error_of("x << 1"), kErrorIntegersRequired);
  EXPECT_EQ(error_of("z < z"), kErrorNoArithmetic);
  EXPECT_EQ(error_of("-c"), kErrorNoArithmetic);
  EXPECT_EQ(error_of("~x"), kErrorIntegersRequired);
}

TEST_F(EvalTest, ComparisonsFollowTheScopeLanguage) {
  auto f = eval("1 < 2");
  EXPECT_EQ(f->type, kTypeLogical4);
  EXPECT_EQ(value_int64(*f, target.memory), 1);
  language = kLangC;
  auto c = eval("1 < 2");
  EXPECT_EQ(c->type, kTypeInteger4);
  EXPECT_EQ(value_text_or_error(*c, target.memory), "1 0x1");
  EXPECT_EQ(integer("!5"), 0);
  EXPECT_EQ(integer("3 > 2 && 1 < 0"), 0);
  EXPECT_EQ(integer("0 || x"), 1);
  EXPECT_EQ(integer("0xFFFFFFFF > 0"), 1);   // unsigned compares as unsigned
  EXPECT_EQ(integer("-1 < 0xFFFFFFFFFFL"), 0);  // as in C: -1 becomes unsigned
  EXPECT_EQ(error_of("x % 2"), kErrorIntegersRequired);
  EXPECT_EQ(integer("18446744073709551615 > 1"), 1);
}

TEST_F(EvalTest, BracketErrors) {
  EXPECT_EQ(error_of("((n)"), kErrorTooManyOpening);
  EXPECT_EQ(error_of("(n))"), kErrorTooManyClosing);
  EXPECT_EQ(error_of("n)"), kErrorTooManyClosing);
  EXPECT_EQ(error_of("a[1)"), kErrorBracketMismatch);
  EXPECT_EQ(error_of("a(1]"), kErrorSyntax);
  EXPECT_EQ(error_of("[1]"), kErrorSyntax);
  EXPECT_EQ(error_of("()"), kErrorSyntax);
  EXPECT_EQ(error_of("a()"), kErrorSyntax);
  EXPECT_EQ(error_of("(1,2)"), kErrorSyntax);
}

TEST_F(EvalTest, SyntaxErrors) {
  for (const char* text : {"", "   ", "1 2", "n n", "*", "1+", "1 + * ", "@", "n $", "\"x\"", "3 ~1", "n loc(n)",
                           "1:2", "(1:2)", ".TRUE. n"})
    EXPECT_EQ(error_of(text), kErrorSyntax) << '"' << text << '"';
}

TEST_F(EvalTest, NamesRegistersAndLookupFailures) {
  EXPECT_EQ(integer("n"), 7);
  EXPECT_EQ(integer("N"), 7);
  EXPECT_EQ(error_of("nothing"), kErrorUnknownVariable);
  EXPECT_EQ(error_of("gone"), kErrorNotAllocated);
  EXPECT_EQ(error_of("t"), kErrorNoObject);
  EXPECT_EQ(integer("rbx"), 0x1234);
  EXPECT_EQ(integer("R15 + 1"), 78);
  EXPECT_EQ(type_of("rbx"), kTypeInteger8);
  EXPECT_EQ(integer("rax"), 7);  // a variable called rax hides the register
  EXPECT_EQ(error_of("eax"), kErrorUnknownVariable);
  EXPECT_EQ(integer("r"), 7);  // references are transparent
  EXPECT_EQ(integer("r + 1"), 8);
}

TEST_F(EvalTest, SubscriptsFormElementsWithinTheBounds) {
  EXPECT_EQ(integer("a(1)"), 10);
  EXPECT_EQ(integer("a(5)"), 50);
  EXPECT_EQ(integer("a(n-4)"), 30);
  EXPECT_EQ(integer("a(2) + a(3)"), 50);
  EXPECT_EQ(integer("a(a(1)/10)"), 10);
  EXPECT_EQ(eval("a(2)")->address, 0x1104u);
  EXPECT_EQ(error_of("a(0)"), kErrorSubscriptOutOfBounds);
  EXPECT_EQ(error_of("a(6)"), kErrorSubscriptOutOfBounds);
  EXPECT_EQ(error_of("a(1,2)"), kErrorTooManySubscripts);
  EXPECT_EQ(error_of("a(1.0)"), kErrorSubscriptNotInteger);
  EXPECT_EQ(error_of("a(l)"), kErrorSubscriptNotInteger);
  EXPECT_EQ(error_of("n(1)"), kErrorArrayExpected);
  EXPECT_EQ(real("m(2,3)"), 8.0);  // column-major: (2 - 0) * 8 + (3 - 1) * 24
  EXPECT_EQ(real("m(0,1)"), 0.0);
  EXPECT_EQ(error_of("m(3,1)"), kErrorSubscriptOutOfBounds);
}

TEST_F(EvalTest, SectionsAreClampedArrays) {
  auto s = eval("a(2:4)");
  ASSERT_EQ(s->error_code, 0);
  EXPECT_EQ(s->type, kTypeArray);
  EXPECT_EQ(s->address_kind, kAddressSection);
  EXPECT_EQ(s->address, 0x1104u);
  EXPECT_EQ(s->size, 12);
  EXPECT_EQ(type_name_text(*s, target.memory), "INTEGER*4 (2:4)");
  EXPECT_EQ(type_name_text(*eval("a(:3)"), target.memory), "INTEGER*4 (3)");
  EXPECT_EQ(type_name_text(*eval("a(4:)"), target.memory), "INTEGER*4 (4:5)");
  EXPECT_EQ(type_name_text(*eval("a(:)"), target.memory), "INTEGER*4 (5)");
  EXPECT_EQ(type_name_text(*eval("a(-9:99)"), target.memory), "INTEGER*4 (5)");
  EXPECT_EQ(type_name_text(*eval("a(n-5 : n-3)"), target.memory), "INTEGER*4 (2:4)");
  // A single subscript with a section collapses its dimension.
  auto row = eval("m(1, 2:3)");
  ASSERT_EQ(row->error_code, 0);
  EXPECT_EQ(type_name_text(*row, target.memory), "REAL*8 (2:3)");
  EXPECT_EQ(row->address, 0x1200u + 8 + 24);
  EXPECT_EQ(real("m(1, 2:3)(3)"), 7.0);
  EXPECT_EQ(error_of("a(1.5:2)"), kErrorSubscriptNotInteger);
  EXPECT_EQ(error_of("a(1:2:3)"), kErrorSyntax);
}

TEST_F(CEvalTest, CSubscriptsAccumulateAndPointersIndex) {
  EXPECT_EQ(integer("a[2]"), 20);
  EXPECT_EQ(real("m[1][2]"), 4.0);
  EXPECT_EQ(integer("p[3]"), 40);
  EXPECT_EQ(integer("*(p+1)"), 20);
  EXPECT_EQ(error_of("vp[1]"), kErrorArrayExpected);
  EXPECT_EQ(integer("cp[1]"), 'e');
}

TEST_F(EvalTest, ComponentSelection) {
  EXPECT_EQ(real("s%x"), 0.5);
  EXPECT_EQ(integer("s%n"), 99);
  EXPECT_EQ(integer("S.N"), 99);
  EXPECT_EQ(integer("s%v(3)"), 3);
  EXPECT_EQ(integer("s%v(2) * 10 + s%n"), 119);
  EXPECT_EQ(error_of("s%nope"), kErrorMemberNotFound);
  EXPECT_EQ(error_of("n%x"), kErrorStructureExpected);
  EXPECT_EQ(error_of("s%(x)"), kErrorMemberNameExpected);
  EXPECT_EQ(error_of("s%3"), kErrorMemberNameExpected);
  language = kLangFortran;
  EXPECT_EQ(integer("n%3"), 1);  // only dialects 3 and 4 read % as selection
  language = kLangFortranDecorated;
  EXPECT_EQ(integer("s%n"), 99);
}

TEST_F(CEvalTest, PointersToStructures) {
  EXPECT_EQ(integer("sp->N"), 99);
  EXPECT_EQ(integer("(*sp).N"), 99);
  EXPECT_EQ(error_of("sp->n"), kErrorMemberNotFound);  // C names keep their case
  EXPECT_EQ(error_of("s->N"), kErrorStructurePointerExpected);
  EXPECT_EQ(error_of("sp.N"), kErrorStructureExpected);
  EXPECT_EQ(integer("n % 4"), 3);
}

TEST_F(EvalTest, Intrinsics) {
  EXPECT_EQ(integer("leng('abc  ')"), 3);
  EXPECT_EQ(integer("LENG(c)"), 3);
  EXPECT_EQ(integer("strlen(cp)"), 5);
  EXPECT_EQ(type_of("leng(c)"), kTypeInteger4);
  EXPECT_EQ(integer("leng(c) + 1"), 4);
  EXPECT_EQ(integer("loc(n)"), 0x1000);
  EXPECT_EQ(type_of("loc(n)"), kTypeInteger8);
  EXPECT_EQ(integer("loc(a(3))"), 0x1108);
  EXPECT_EQ(integer("loc(s%n)"), 0x1404);
  EXPECT_EQ(error_of("loc(5)"), kErrorNoAddress);
  EXPECT_EQ(error_of("leng(5)"), kErrorStringExpected);
  EXPECT_EQ(error_of("leng(p)"), kErrorStringExpected);
  EXPECT_EQ(error_of("loc(n"), kErrorTooManyOpening);
  EXPECT_EQ(error_of("loc()"), kErrorSyntax);
}

TEST_F(CEvalTest, DereferenceAndAddressOf) {
  EXPECT_EQ(integer("*p"), 10);
  EXPECT_EQ(integer("*&n"), 7);
  auto address = eval("&n");
  EXPECT_EQ(address->type, kTypePointer8);
  EXPECT_EQ(value_int64(*address, target.memory), 0x1000);
  EXPECT_EQ(type_name_text(*address, target.memory), "int *");
  EXPECT_EQ(error_of("&5"), kErrorNoAddress);
  EXPECT_EQ(error_of("&rbx"), kErrorNoAddress);
  EXPECT_EQ(error_of("*n"), kErrorPointerRequired);
  EXPECT_EQ(error_of("*vp"), kErrorVoidDereference);
  EXPECT_EQ(error_of("*raw"), kErrorInternal);
  EXPECT_EQ(error_of("*np"), kErrorNullPointer);
  EXPECT_EQ(error_of("*bp"), kErrorIllegalPointer);
  EXPECT_EQ(error_of("n*"), kErrorSyntax);
}

TEST_F(CEvalTest, PointerArithmeticRules) {
  EXPECT_EQ(value_int64(*eval("p + 2"), target.memory), 0x1108);
  EXPECT_EQ(value_int64(*eval("2 + p"), target.memory), 0x1108);
  EXPECT_EQ(value_int64(*eval("p - 1"), target.memory), 0x10FC);
  EXPECT_EQ(integer("(p + 3) - p"), 3);
  EXPECT_EQ(error_of("p + p"), kErrorAddPointers);
  EXPECT_EQ(error_of("p + 1.5"), kErrorAddNonInteger);
  EXPECT_EQ(error_of("vp + 1"), kErrorVoidPointerArithmetic);
  EXPECT_EQ(error_of("p - 1.5"), kErrorSubtractNonInteger);
  EXPECT_EQ(error_of("p - qp"), kErrorPointerTypes);
  EXPECT_EQ(error_of("p < qp"), kErrorPointerTypes);
  EXPECT_EQ(error_of("p * 2"), kErrorNoArithmetic);
  EXPECT_EQ(integer("p == 0x1100"), 1);
  EXPECT_EQ(integer("np == 0"), 1);
}

TEST_F(EvalTest, EqualsEndsTheExpressionUnlessItCompares) {
  auto left = eval("a(2) = 5");
  EXPECT_EQ(left->error_code, 0);
  EXPECT_EQ(left->address, 0x1104u);
  EXPECT_EQ(last_stop, 5u);
  auto compared = eval("n = 7", kEvalEqualsCompares);
  EXPECT_EQ(value_text_or_error(*compared, target.memory), ".TRUE.");
  EXPECT_EQ(last_stop, 5u);
  eval("n == 7");
  EXPECT_EQ(last_stop, 6u);
  auto first = eval("a(1), a(2)");
  EXPECT_EQ(value_int64(*first, target.memory), 10);
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
