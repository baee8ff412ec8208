#include "process/runtime_errors.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "common/runtime_error_numbers.h"
#include "support/fake_target.h"

namespace vantor {
namespace {

TEST(RuntimeErrorTable, RowsAreUniqueAscendingAndInsideTheTable) {
  ASSERT_GT(RuntimeErrorRowCount, 0u);
  EXPECT_EQ(RuntimeErrorRows[0].number, 0);
  EXPECT_STREQ(RuntimeErrorRows[0].text, "Undefined error");
  for (std::size_t i = 1; i < RuntimeErrorRowCount; ++i) {
    EXPECT_GT(RuntimeErrorRows[i].number, RuntimeErrorRows[i - 1].number) << RuntimeErrorRows[i].text;
    EXPECT_LT(RuntimeErrorRows[i].number, kRuntimeErrorCount);
    EXPECT_NE(std::string(RuntimeErrorRows[i].text), "");
  }
}

// The compiled programs print these texts themselves when no debugger runs them.
TEST(RuntimeErrorTable, TheCompilersErrorsHaveItsTexts) {
  EXPECT_STREQ(runtime_error_text(kRuntimeErrorSubscript), "Array subscript out of bounds");
  EXPECT_STREQ(runtime_error_text(kRuntimeErrorSubstring), "Substring out of bounds");
  EXPECT_STREQ(runtime_error_text(kRuntimeErrorZeroIncrement), "DO-loop has zero increment");
  EXPECT_STREQ(runtime_error_text(kRuntimeErrorCharRange), "Argument to CHAR outside range 0 - 255");
  EXPECT_STREQ(runtime_error_text(kRuntimeErrorAlreadyAllocated), "ALLOCATABLE array is already allocated");
  EXPECT_STREQ(runtime_error_text(kRuntimeErrorNotAllocated), "ALLOCATABLE array is not allocated");
  EXPECT_STREQ(runtime_error_text(kRuntimeErrorNoMemory), "Out of memory in ALLOCATE");
  EXPECT_EQ(kRuntimeErrorMissingRoutine, kMissingRoutineError);
  EXPECT_EQ(kRuntimeErrorMessage, kProgramMessageError);
}

TEST(RuntimeErrorTable, NumbersWithoutTextShowEntryZeroAndOutsideHaveNone) {
  EXPECT_STREQ(runtime_error_text(0), "Undefined error");
  EXPECT_STREQ(runtime_error_text(299), "Undefined error");
  EXPECT_STREQ(runtime_error_text(447), "Unknown run-time failure");
  EXPECT_EQ(runtime_error_text(448), nullptr);
  EXPECT_EQ(runtime_error_text(-1), nullptr);
}

// The library's authors work from docs/runtime-errors.md: its table must list exactly the
// rows of the source.
TEST(RuntimeErrorTable, DocumentListsExactlyTheSourceRows) {
  std::ifstream file(VANTOR_SOURCE_DIR "/docs/runtime-errors.md");
  ASSERT_TRUE(file.good());
  std::stringstream text;
  text << file.rdbuf();
  std::map<int, std::string> documented;
  std::regex row(R"(^\| (\d+) \| (.+) \|$)");
  std::string line;
  while (std::getline(text, line) && line != "## The message table") {
  }
  while (std::getline(text, line)) {
    std::smatch match;
    if (std::regex_match(line, match, row)) documented[std::stoi(match[1])] = match[2];
  }
  std::map<int, std::string> source;
  for (std::size_t i = 0; i < RuntimeErrorRowCount; ++i) source[RuntimeErrorRows[i].number] = RuntimeErrorRows[i].text;
  EXPECT_EQ(documented, source) << "update the table in docs/runtime-errors.md from src/process/runtime_error_texts.cpp";
}

class RuntimeErrorMessageTest : public ::testing::Test {
 protected:
  void put_text(Address address, const std::string& text) { target.system.poke(address, text.c_str(), text.size() + 1); }
  testing::FakeTarget target;
};

TEST_F(RuntimeErrorMessageTest, NumbersAndTextsAtTheirLimits) {
  EXPECT_EQ(runtime_error_message(299, 0, target.memory), "Run-time error 299: Undefined error");
  EXPECT_EQ(runtime_error_message(INT64_MIN, 0, target.memory), "Run-time error -9223372036854775808");
  // Texts from the program are cut at their limit and at unreadable memory.
  put_text(0x10000, std::string(600, 'N'));
  EXPECT_EQ(runtime_error_message(29, 0x10000, target.memory), "Call to missing routine: " + std::string(512, 'N'));
  put_text(0x20000, std::string(1100, 'm'));
  EXPECT_EQ(runtime_error_message(345, 0x20000, target.memory), std::string(1024, 'm'));
  const char edge[] = "ends at the page";
  target.system.poke(0x40000 - 16, edge, 16);  // no zero byte: the next page is unmapped
  EXPECT_EQ(runtime_error_message(345, 0x40000 - 16, target.memory), "ends at the page");
  EXPECT_EQ(runtime_error_message(29, 0x90000000, target.memory), "Call to missing routine: ");
}

}  // namespace
}  // namespace vantor
