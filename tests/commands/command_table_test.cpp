// The command table as data: its size and end, and that the words sharing a code agree.
#include "commands/command_table.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace vantor {
namespace {

TEST(CommandTableTest, ThirtySixDistinctWordsThenTheEnd) {
  std::set<std::string> words;
  int rows = 0;
  for (const command_row* row = CommandTable; row->code != kCmdNone; ++row, ++rows) {
    ASSERT_NE(row->word, nullptr);
    EXPECT_TRUE(words.insert(row->word).second) << row->word;
    EXPECT_GE(row->code, 1u);
    EXPECT_LE(row->code, 25u);
    EXPECT_NE(row->code, 9u) << "no command has code 9";
  }
  EXPECT_EQ(rows, kCommandWordCount);
  EXPECT_EQ(CommandTable[kCommandWordCount].word, nullptr);
}

TEST(CommandTableTest, AliasesOfACommandAgreeOnItsArgument) {
  std::map<std::uint32_t, std::uint8_t> needs;
  for (const command_row* row = CommandTable; row->code != kCmdNone; ++row) {
    auto [it, first] = needs.emplace(row->code, row->needs_argument);
    EXPECT_EQ(it->second, row->needs_argument) << row->word;
  }
  EXPECT_EQ(needs.size(), 24u);  // codes 1..25 but 9
}

TEST(CommandTableTest, WordsMatchWholeAndIgnoringCase) {
  ASSERT_NE(find_command("PRINT"), nullptr);
  EXPECT_EQ(find_command("PRINT")->code, kCmdPrint);
  EXPECT_EQ(find_command("P")->code, kCmdPrint);
  EXPECT_EQ(find_command("Dump")->code, kCmdPrintMemory);
  EXPECT_EQ(find_command("bPs")->code, kCmdBreakpoints);
  EXPECT_EQ(find_command("breakpoint")->code, kCmdBreakpoint);  // not a prefix of "breakpoints"
  EXPECT_EQ(find_command("breakpoints")->code, kCmdBreakpoints);
  EXPECT_EQ(find_command("pr"), nullptr);
  EXPECT_EQ(find_command("prints"), nullptr);
  EXPECT_EQ(find_command(""), nullptr);
}

TEST(CommandTableTest, ResultTexts) {
  EXPECT_STREQ(command_result_text(kCommandDone), "");
  EXPECT_STREQ(command_result_text(kCommandNotKnown), "Command not known");
  EXPECT_STREQ(command_result_text(kCommandNeedsArgument), "An expression was expected");
  EXPECT_STREQ(command_result_text(kCommandFailed), "Error");
  EXPECT_STREQ(command_result_text(17), "");
}

}  // namespace
}  // namespace vantor
