// The command table as data: distinct words up to its end row, aliases that agree, and
// the lookup of a whole word in any letter case.
#include "commands/command_table.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace vantor {
namespace {

TEST(CommandTableTest, DistinctWordsWhoseAliasesAgreeOnTheirArgument) {
  std::set<std::string> words;
  std::map<std::uint32_t, std::uint8_t> needs;
  int rows = 0;
  for (const command_row* row = CommandTable; row->code != kCmdNone; ++row, ++rows) {
    ASSERT_NE(row->word, nullptr);
    EXPECT_TRUE(words.insert(row->word).second) << row->word;
    auto [it, first] = needs.emplace(row->code, row->needs_argument);
    EXPECT_EQ(it->second, row->needs_argument) << row->word;
  }
  EXPECT_EQ(rows, kCommandWordCount);
  EXPECT_EQ(CommandTable[kCommandWordCount].word, nullptr);
}

TEST(CommandTableTest, WordsMatchWholeAndIgnoringCase) {
  EXPECT_EQ(find_command("P")->code, kCmdPrint);
  EXPECT_EQ(find_command("Dump")->code, kCmdPrintMemory);
  EXPECT_EQ(find_command("breakpoint")->code, kCmdBreakpoint);  // not a prefix of "breakpoints"
  EXPECT_EQ(find_command("bPs")->code, kCmdBreakpoints);
  for (const char* word : {"pr", "prints", ""}) EXPECT_EQ(find_command(word), nullptr) << word;
}

}  // namespace
}  // namespace vantor
