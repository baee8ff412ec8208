// The opcode index must find the same first row as a search of the whole table. (Random
// windows are compared by the fuzz target, run by ctest as disasm.fuzz_random.)
#include "disasm/pattern_index.h"

#include <gtest/gtest.h>

#include "disasm/decoder.h"
#include "disasm/instruction_text.h"
#include "disasm/pattern_table.h"
#include "disasm/row_samples.h"

namespace vantor::disasm {
namespace {

std::span<const PatternRow> rows() {
  const auto table = pattern_table();
  return table.first(table.size() - 1);
}

void expect_same_decode(const std::uint8_t* window) {
  const DecodedInstruction indexed = decode_instruction(window, RowSearch::indexed);
  const DecodedInstruction linear = decode_instruction(window, RowSearch::linear);
  std::string indexed_text, linear_text;
  format_instruction(indexed, 0x401000, window, indexed_text);
  format_instruction(linear, 0x401000, window, linear_text);
  char bytes[3 * kWindowSize + 1] = "";
  for (std::size_t i = 0; i < kWindowSize; ++i) std::snprintf(bytes + 3 * i, 4, "%02x ", window[i]);
  ASSERT_EQ(indexed.row, linear.row) << bytes;
  ASSERT_EQ(indexed.length, linear.length) << bytes;
  ASSERT_EQ(indexed_text, linear_text) << bytes;
}

TEST(PatternIndexKeys, EveryRowIsFiledUnderTheKeyOfEachOfItsSamples) {
  testing::RowSampler sampler(7);
  for (std::size_t row = 0; row < rows().size(); ++row) {
    if (is_unmatchable(rows()[row].bits)) continue;
    const auto keys = PatternIndex::keys_of_row(rows()[row].bits);
    for (int i = 0; i < 32; ++i) {
      testing::RowSample sample;
      ASSERT_TRUE(sampler.sample(rows()[row].bits, sample));
      const unsigned key = PatternIndex::key_of(sample.bytes.data(), count_prefixes(sample.bytes.data()));
      ASSERT_TRUE(keys.test(key)) << "row " << row << " \"" << rows()[row].bits << "\" key " << key;
    }
  }
}

TEST(PatternIndexSearch, SameFirstMatchAsLinearOnRowSamples) {
  testing::RowSampler sampler(11);
  for (std::size_t row = 0; row < rows().size(); ++row) {
    if (is_unmatchable(rows()[row].bits)) continue;
    for (int i = 0; i < 2; ++i) {
      testing::RowSample sample;
      ASSERT_TRUE(sampler.sample(rows()[row].bits, sample));
      expect_same_decode(sample.bytes.data());
      if (HasFatalFailure()) return;
    }
  }
}

}  // namespace
}  // namespace vantor::disasm
