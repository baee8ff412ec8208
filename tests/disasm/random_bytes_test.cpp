// Arbitrary bytes never break the decoder: every window gives a well-formed line. (The
// fuzz target, also run by ctest as disasm.fuzz_random, checks lengths and the opcode
// index far longer.)
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "disasm/disassembler.h"

namespace vantor::disasm {
namespace {

void expect_well_formed(const std::uint8_t* window, const std::string& text, std::size_t length) {
  ASSERT_GE(length, 1u);
  ASSERT_LE(length, 16u);
  ASSERT_FALSE(text.empty());
  if (window[0] == 0xCC) {
    ASSERT_EQ(text, "int   3");
    ASSERT_EQ(length, 1u);
    return;
  }
  if (text.rfind("db     ", 0) == 0) {
    char expected[40];
    std::snprintf(expected, sizeof expected, "db     %02x,%02x,%02x,%02x,%02x", window[0],
                  window[1], window[2], window[3], window[4]);
    ASSERT_EQ(text, expected);
    ASSERT_EQ(length, 1u);
    return;
  }
  const std::size_t space = text.find(' ');
  for (std::size_t i = 0; i < std::min(space, text.size()); ++i)
    ASSERT_TRUE(std::islower(static_cast<unsigned char>(text[i])) || std::isdigit(static_cast<unsigned char>(text[i])) ||
                text[i] == '_')
        << text;
  if (space != std::string::npos) {
    ASSERT_EQ(text.compare(space, 7, "       "), 0) << text;
    ASSERT_NE(text[space + 7], ' ') << text;
    ASSERT_NE(text.back(), ',') << text;
  }
}

TEST(RandomBytes, EveryWindowGivesAWellFormedLine) {
  std::mt19937 random(1234);
  std::uint8_t window[16];
  std::string text;
  for (int i = 0; i < 20000; ++i) {
    for (std::uint8_t& b : window) b = static_cast<std::uint8_t>(random());
    // Half the windows start like real instructions: prefixes, REX, escapes.
    if (i % 2) {
      static constexpr std::uint8_t kLeads[] = {0x66, 0xF2, 0xF3, 0x48, 0x4C, 0x41, 0x0F, 0xF0, 0x65};
      window[0] = kLeads[random() % std::size(kLeads)];
      if (i % 4 == 1) window[1] = kLeads[random() % std::size(kLeads)];
    }
    const std::size_t length = disassemble_bytes(window, random(), text);
    expect_well_formed(window, text, length);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace vantor::disasm
