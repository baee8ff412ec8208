#include "values/crt_format.h"

#include <gtest/gtest.h>

#include <cmath>

#include "values/text_buffer.h"

namespace vantor {
namespace {

// The runtime's own length modifiers are unknown to the compiler's format checking.
std::string unchecked_format(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::string text = crt_vformat(format, arguments);
  va_end(arguments);
  return text;
}

TEST(CrtFormatTest, PointersAreSixteenUpperCaseDigits) {
  EXPECT_EQ(crt_format("%p", reinterpret_cast<void*>(0x401abcULL)), "0000000000401ABC");
  EXPECT_EQ(crt_format("0x%p", static_cast<void*>(nullptr)), "0x0000000000000000");
}

TEST(CrtFormatTest, ExponentsHaveAtLeastTwoDigits) {
  EXPECT_EQ(crt_format("%g", 1e10), "1e+10");
  EXPECT_EQ(crt_format("%g", 1.5e-5), "1.5e-05");
  EXPECT_EQ(crt_format("%g", 1e100), "1e+100");
  EXPECT_EQ(crt_format("%e", 1.5), "1.500000e+00");
  EXPECT_EQ(crt_format("%10.2E|", 12345.0), "  1.23E+04|");
  EXPECT_EQ(crt_format("%#g", 1.0), "1.00000");
  EXPECT_EQ(crt_format("%#.15g", 0.1), "0.100000000000000");
  EXPECT_EQ(crt_format("%#.19Lg", static_cast<long double>(0.1)), "0.1000000000000000056");
  EXPECT_EQ(crt_format("(%.19Lg,%.19Lg)", static_cast<long double>(1.0), static_cast<long double>(-2.5)), "(1,-2.5)");
}

TEST(CrtFormatTest, InfinitiesAndNansHaveOneSpelling) {
  EXPECT_EQ(crt_format("%g", HUGE_VAL), "inf");
  EXPECT_EQ(crt_format("%#.15g", -HUGE_VAL), "-inf");
  EXPECT_EQ(crt_format("%G", std::nan("")), "NAN");
  EXPECT_EQ(crt_format("%06g|", HUGE_VAL), "   inf|");
}

TEST(CrtFormatTest, IntegerWidthsFlagsAndLengths) {
  EXPECT_EQ(crt_format("%8X [", 0x246u), "     246 [");
  EXPECT_EQ(crt_format("%04X", 0x37Fu), "037F");
  EXPECT_EQ(crt_format("%-5d|", 42), "42   |");
  EXPECT_EQ(crt_format("%05.1f", -2.5), "-02.5");
  EXPECT_EQ(unchecked_format("%I64d %I64x", -9000000000LL, 0x123456789ULL), "-9000000000 123456789");
  EXPECT_EQ(crt_format("%x%08x", 1u, 2u), "100000002");
  EXPECT_EQ(crt_format("%02x ", 0xABu), "ab ");
  EXPECT_EQ(crt_format("%s=%c%%", "a", 'b'), "a=b%");
  EXPECT_EQ(crt_format("%.3s", "abcdef"), "abc");
}

TEST(TextBufferTest, APieceThatDoesNotFitIsCutAndLaterPiecesAreDropped) {
  char storage[8];
  TextBuffer out(storage, sizeof storage);
  out.append("abc");
  EXPECT_EQ(out.capacity(), 5u);
  out.append("defgh");  // exactly the remaining capacity: cut to 4
  EXPECT_STREQ(storage, "abcdefg");
  EXPECT_TRUE(out.full());
  out.append("x");
  out.append("");
  EXPECT_STREQ(storage, "abcdefg");

  char two[5];
  TextBuffer fits(two, sizeof two);
  fits.append("abc");
  fits.append("");
  EXPECT_EQ(fits.capacity(), 2u);
  EXPECT_STREQ(two, "abc");
}

}  // namespace
}  // namespace vantor
