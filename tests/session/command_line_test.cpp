// The debugger's switches. Every switch error, with its message and exit status, and the
// version banner are compared end to end (tests/e2e/cases/switches.case); here what the
// switches leave behind and the limits of their arguments.
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

TEST_F(CommandLineTest, SwitchesInAnyCaseTheLastSourcePathWinsFlagsWithoutEffectAreAccepted) {
  ConsoleMode = false;
  auto [status, out] =
      parse(args({L"/CONSOLE", L"/Silent", L"/sourcepath", L"a", L"/rdc_dump", L"/rdc_debug", L"/show_ods",
                  L"/showall", L"/nhs", L"prog.exe", L"/SP", L"b", L"/Dump_Lines", L"/script", L"t.script"}));
  EXPECT_FALSE(status);
  EXPECT_EQ(out, "");
  EXPECT_EQ(ProgramName, L"prog.exe");
  EXPECT_TRUE(SilentMode && DumpLinesMode && ConsoleMode);
  EXPECT_EQ(SourcePath, L"b");
  EXPECT_EQ(ScriptFile, L"t.script");
  EXPECT_TRUE(RdcDumpMode && RdcDebugMode && ShowOdsMode && ShowAllMode);
  EXPECT_FALSE(HideTornlibC);
}

TEST_F(CommandLineTest, ParamsTakesEverythingAfterItQuotingBlanks) {
  auto [status, out] = parse(args({L"prog.exe", L"/params", L"/x", L"a b", L"-n", L"", L"/silent"}));
  EXPECT_FALSE(status);
  EXPECT_EQ(ProgramArguments, L"/x \"a b\" -n  /silent");
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

TEST_F(CommandLineTest, ParsingStopsAtTheFirstErrorWhichIsAMessageBoxWithoutConsole) {
  auto [status, out] = parse(args({L"/version", L"/xyz"}));
  EXPECT_EQ(status, 1);
  EXPECT_EQ(out.find("Unexpected"), std::string::npos);

  ConsoleMode = false;
  std::tie(status, out) = parse(args({L"/bad"}));
  EXPECT_EQ(status, 3);
  EXPECT_EQ(out, "");
  ASSERT_EQ(target.system.message_boxes.size(), 1u);
  EXPECT_EQ(target.system.message_boxes[0].text, L"VANTOR64 version 8.50: Unexpected switch /bad");
  EXPECT_EQ(target.system.message_boxes[0].title, L"Error");
}

TEST_F(CommandLineTest, TestSuiteEntriesRunToTheNextSwitchFromTheFirstLineForFiftyLines) {
  std::vector<std::wstring> arguments{L"/testsuite", L"early", L"10", L"x", L"y(2)", L"exit", L"20",
                                      L"-skipped",   L"30abc", L"z"};
  for (int i = 4; i <= 52; ++i) {
    arguments.push_back(std::to_wstring(i * 10));
    arguments.push_back(L"v" + std::to_wstring(i * 10));
  }
  arguments.insert(arguments.end(), {L"/console", L"prog.exe"});
  ConsoleMode = false;
  auto [status, out] = parse(arguments);
  EXPECT_FALSE(status);
  EXPECT_TRUE(TestSuiteMode);
  EXPECT_TRUE(ConsoleMode);
  EXPECT_EQ(ProgramName, L"prog.exe");
  ASSERT_EQ(TestSuiteEntries.size(), 50u);
  EXPECT_EQ(TestSuiteEntries[0].line, 10);
  EXPECT_EQ(TestSuiteEntries[0].items, (std::vector<std::string>{"x", "y(2)", "exit"}));
  EXPECT_EQ(TestSuiteEntries[1].line, 20);
  EXPECT_TRUE(TestSuiteEntries[1].items.empty());
  EXPECT_EQ(TestSuiteEntries[2].line, 30);
  EXPECT_EQ(TestSuiteEntries[2].items, (std::vector<std::string>{"z"}));
  EXPECT_EQ(TestSuiteEntries[49].line, 500);
  EXPECT_EQ(TestSuiteEntries[49].items, (std::vector<std::string>{"v500"}));
}

}  // namespace
}  // namespace vantor
