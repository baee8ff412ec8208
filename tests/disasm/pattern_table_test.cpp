// The pattern and mnemonic tables checked as data: shape, alphabet, widths, and that every
// row can be reached through the rows before it.
#include "disasm/pattern_table.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "disasm/decoder.h"
#include "disasm/mnemonics.h"
#include "disasm/row_samples.h"

namespace vantor::disasm {
namespace {

std::span<const PatternRow> rows() {
  const auto table = pattern_table();
  return table.first(table.size() - 1);
}

std::string describe(std::size_t row) {
  return "row " + std::to_string(row) + " " + mnemonic_info(rows()[row].mnemonic).name + " \"" +
         rows()[row].bits + "\"";
}

TEST(PatternTableShape, EndMarkerMnemonicsAndAlphabet) {
  EXPECT_EQ(pattern_table().back().mnemonic, Mnemonic::NONE);
  EXPECT_STREQ(pattern_table().back().bits, "");
  for (std::size_t row = 0; row < rows().size(); ++row) {
    const auto number = static_cast<std::uint32_t>(rows()[row].mnemonic);
    EXPECT_TRUE(number >= 1 && number <= kMnemonicCount) << describe(row);
    for (const char* p = rows()[row].bits; *p; ++p)
      EXPECT_TRUE(std::strchr(" 01RrXxMmNCIJKLijkPSdv", *p)) << describe(row) << " has '" << *p << "'";
  }
}

TEST(PatternTableShape, OnlyVexX87StackAndMmxRowsNeverMatch) {
  for (std::size_t row = 0; row < rows().size(); ++row) {
    const std::string name = mnemonic_info(rows()[row].mnemonic).name;
    const bool vex = name[0] == 'V';
    const bool x87_stack = name.size() > 2 && name.compare(name.size() - 2, 2, "_S") == 0;
    const bool mmx = name.find("PI") != std::string::npos && std::strchr(rows()[row].bits, 'd');
    EXPECT_EQ(is_unmatchable(rows()[row].bits), vex || x87_stack || mmx) << describe(row);
  }
}

// Walks a row as the decoder would read it with a REX byte wherever the row has a REX
// group: whole bytes of bit characters, with immediates and the ModRM byte's end aligned.
TEST(PatternTableShape, BitCharactersFillWholeBytes) {
  for (std::size_t row = 0; row < rows().size(); ++row) {
    std::size_t bits = 0;
    int memory = 0;
    int registers[4] = {};  // R r X x
    bool misaligned = false;
    for (const char* p = rows()[row].bits; *p; ++p) {
      if (std::strchr("IJKLijk", *p)) {
        misaligned |= bits % 8 != 0;
      } else if (*p != ' ') {
        ++bits;
        if (*p == 'M' || *p == 'm') {
          if (++memory == 5) misaligned |= bits % 8 != 0;
        }
        if (const char* at = std::strchr("RrXx", *p)) ++registers[at - "RrXx"];
      }
    }
    EXPECT_EQ(bits % 8, 0u) << describe(row);
    EXPECT_FALSE(misaligned) << describe(row);
    EXPECT_TRUE(memory == 0 || memory == 5) << describe(row);
    for (const int count : registers) EXPECT_LE(count, 4) << describe(row);
    EXPECT_FALSE(std::strchr(rows()[row].bits, 'M') && std::strchr(rows()[row].bits, 'm'))
        << describe(row);
  }
}

// A row whose every instruction an earlier row already takes is dead. Each row must take
// some instruction made for it, and take it whole. (Searching every row is slow; the
// index test checks many more samples per row through the index.)
TEST(PatternTableReach, NoRowIsShadowedByAnEarlierOne) {
  testing::RowSampler sampler(20240611);
  for (std::size_t row = 0; row < rows().size(); ++row) {
    if (is_unmatchable(rows()[row].bits)) continue;
    int taken = 0;
    std::string taken_by;
    for (int attempt = 0; attempt < 64 && taken == 0; ++attempt) {
      testing::RowSample sample;
      ASSERT_TRUE(sampler.sample(rows()[row].bits, sample)) << describe(row);
      const DecodedInstruction decoded = decode_instruction(sample.bytes.data(), RowSearch::linear);
      ASSERT_TRUE(decoded.matched()) << describe(row);
      ASSERT_LE(decoded.row, static_cast<int>(row)) << describe(row);
      if (decoded.row == static_cast<int>(row)) {
        ++taken;
        EXPECT_EQ(decoded.length, sample.length) << describe(row);
      } else {
        taken_by = describe(static_cast<std::size_t>(decoded.row));
      }
    }
    EXPECT_GT(taken, 0) << describe(row) << " is shadowed by " << taken_by;
  }
}

TEST(MnemonicTable, UniqueNamesWithSizesFollowingTheirSuffixes) {
  EXPECT_STREQ(mnemonic_info(Mnemonic::VTESTPS).name, "VTESTPS");
  EXPECT_STREQ(mnemonic_info(Mnemonic::NONE).name, "");
  std::set<std::string> names;
  for (std::uint32_t number = 1; number <= kMnemonicCount; ++number) {
    const MnemonicInfo& info = kMnemonicTable[number];
    const std::string name = info.name;
    EXPECT_TRUE(names.insert(name).second) << name << " twice";
    const std::uint8_t size = info.operand_size;
    EXPECT_TRUE(size == 0 || size == 1 || size == 2 || size == 4 || size == 8) << name;
    const std::string suffix = name.size() > 2 ? name.substr(name.size() - 2) : "";
    if (suffix == "_B") {
      EXPECT_EQ(size, 1) << name;
    } else if (suffix == "_H") {
      EXPECT_EQ(size, 2) << name;
    } else if (suffix == "_Q") {
      EXPECT_EQ(size, 8) << name;
    }
  }
  EXPECT_EQ(names.size(), kMnemonicCount);
}

}  // namespace
}  // namespace vantor::disasm
