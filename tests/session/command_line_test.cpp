#include "session/command_line.h"

#include "session/session_fixture.h"

namespace vantor {
namespace {

using CommandLineTest = testing::SessionTest;

// Runs the parser with console output captured; returns the status and the printed text.
std::pair<std::optional<int>, std::string> parse(const std::vector<std::wstring>& arguments) {
  ::testing::internal::CaptureStdout();
  auto status = parse_command_line(arguments);
  return {status, ::testing::internal::GetCapturedStdout()};
}

TEST_F(CommandLineTest, ProgramNameAndSwitchesInAnyCase) {
  auto [status, out] = parse(args({L"/CONSOLE", L"/Silent", L"prog.exe", L"/SP", L"C:\\src", L"/Dump_Lines"}));
  EXPECT_FALSE(status);
  EXPECT_EQ(out, "");
  EXPECT_EQ(ProgramName, L"prog.exe");
  EXPECT_TRUE(SilentMode);
  EXPECT_TRUE(DumpLinesMode);
  EXPECT_EQ(SourcePath, L"C:\\src");
}

TEST_F(CommandLineTest, LastSourcePathWinsAndFlagsWithoutEffectAreAccepted) {
  auto [status, out] = parse(args({L"/sourcepath", L"a", L"/rdc_dump", L"/rdc_debug", L"/show_ods", L"/showall",
                                   L"/nhs", L"/sp", L"b", L"/script", L"t.script"}));
  EXPECT_FALSE(status);
  EXPECT_EQ(SourcePath, L"b");
  EXPECT_EQ(ScriptFile, L"t.script");
  EXPECT_TRUE(RdcDumpMode && RdcDebugMode && ShowOdsMode && ShowAllMode);
  EXPECT_FALSE(HideTornlibC);
}

TEST_F(CommandLineTest, ParamsTakesEverythingAfterItQuotingBlanks) {
  auto [status, out] = parse(args({L"prog.exe", L"/params", L"/x", L"a b", L"-n", L"/silent"}));
  EXPECT_FALSE(status);
  EXPECT_EQ(ProgramArguments, L"/x \"a b\" -n /silent");
  EXPECT_FALSE(SilentMode);
  parse(args({L"/p"}));
  EXPECT_EQ(ProgramArguments, L"");
}

TEST_F(CommandLineTest, RunToTakesFileAndLineAndMakesTheSessionSilent) {
  auto [status, out] = parse(args({L"/RUNTO", L"main.f95", L"12abc", L"prog.exe"}));
  EXPECT_FALSE(status);
  EXPECT_EQ(RunToFile, "main.f95");
  EXPECT_EQ(RunToLine, 12);
  EXPECT_TRUE(SilentMode);
  EXPECT_EQ(ProgramName, L"prog.exe");
}

TEST_F(CommandLineTest, EverySwitchErrorHasItsMessageAndStatus) {
  struct Case {
    std::vector<std::wstring> arguments;
    int status;
    std::string output;
  };
  const Case cases[] = {
      {{L"/sourcepath"}, 1, "Error: Expected a path after /sourcepath.\n"},
      {{L"/runto"}, 2, "Error: No information after /runto. Expected a filename and line_number\n"},
      {{L"/runto", L"12", L"main.f95"}, 2, "Error: Syntax is /runto sourcefile linenumber\n"},
      {{L"/runto", L"main.f95"}, 2, "Error: You must give a filename and a line_number after /runto\n"},
      {{L"/script"}, 2, "Error: No file after /script. Expected a filename\n"},
      {{L"/xyz"}, 3, "Error: VANTOR64 version 8.50: Unexpected switch /xyz\n"},
      {{L"a.exe", L"b.exe"}, 4, "Error: Multiple program names given\n"},
      {{L"/v"}, 1, "Quorvel Debugger for 64-bit Windows version 8.50\n" + std::string(kVersionSecondLine) + "\n"},
  };
  for (const auto& c : cases) {
    reset_startup_globals();
    ConsoleMode = true;
    auto [status, out] = parse(c.arguments);
    ASSERT_TRUE(status) << c.output;
    EXPECT_EQ(*status, c.status) << c.output;
    EXPECT_EQ(out, c.output);
  }
  EXPECT_TRUE(target.system.message_boxes.empty());
}

TEST_F(CommandLineTest, ParsingStopsAtTheFirstError) {
  auto [status, out] = parse(args({L"/version", L"/xyz"}));
  EXPECT_EQ(status, 1);
  EXPECT_EQ(out.find("Unexpected"), std::string::npos);
}

TEST_F(CommandLineTest, WithoutConsoleAnErrorIsAMessageBox) {
  ConsoleMode = false;
  auto [status, out] = parse(args({L"/bad"}));
  EXPECT_EQ(status, 3);
  EXPECT_EQ(out, "");
  ASSERT_EQ(target.system.message_boxes.size(), 1u);
  EXPECT_EQ(target.system.message_boxes[0].text, L"VANTOR64 version 8.50: Unexpected switch /bad");
  EXPECT_EQ(target.system.message_boxes[0].title, L"Error");
}

TEST_F(CommandLineTest, TestSuiteEntriesRunToTheNextSwitch) {
  auto [status, out] = parse(args({L"/testsuite", L"10", L"x", L"y(2)", L"exit", L"20", L"-skipped", L"30abc",
                                   L"z", L"/console", L"prog.exe"}));
  EXPECT_FALSE(status);
  EXPECT_TRUE(TestSuiteMode);
  EXPECT_TRUE(ConsoleMode);
  EXPECT_EQ(ProgramName, L"prog.exe");
  ASSERT_EQ(TestSuiteEntries.size(), 3u);
  EXPECT_EQ(TestSuiteEntries[0].line, 10);
  EXPECT_EQ(TestSuiteEntries[0].items, (std::vector<std::string>{"x", "y(2)", "exit"}));
  EXPECT_EQ(TestSuiteEntries[1].line, 20);
  EXPECT_TRUE(TestSuiteEntries[1].items.empty());
  EXPECT_EQ(TestSuiteEntries[2].line, 30);
  EXPECT_EQ(TestSuiteEntries[2].items, (std::vector<std::string>{"z"}));
}

TEST_F(CommandLineTest, TestSuiteItemsBeforeAnyLineAndBeyondFiftyEntriesAreDropped) {
  std::vector<std::wstring> arguments{L"/testsuite", L"early"};
  for (int i = 1; i <= 52; ++i) {
    arguments.push_back(std::to_wstring(i));
    arguments.push_back(L"v" + std::to_wstring(i));
  }
  auto [status, out] = parse(arguments);
  EXPECT_FALSE(status);
  ASSERT_EQ(TestSuiteEntries.size(), 50u);
  EXPECT_EQ(TestSuiteEntries[0].items, (std::vector<std::string>{"v1"}));
  EXPECT_EQ(TestSuiteEntries[49].items, (std::vector<std::string>{"v50"}));
}

TEST(QuotedArgument, OnlyArgumentsWithBlanksAreQuoted) {
  EXPECT_EQ(quoted_argument(L"plain"), L"plain");
  EXPECT_EQ(quoted_argument(L"with blank"), L"\"with blank\"");
  EXPECT_EQ(quoted_argument(L""), L"");
}

}  // namespace
}  // namespace vantor
