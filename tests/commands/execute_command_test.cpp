// The interpreter: how a line is read, the run requests it leaves for the main loop, the
// commands that only evaluate, and assignment.
#include "commands/command_fixture.h"

namespace vantor::testing {
namespace {

using ExecuteCommandTest = CommandTest;

TEST_F(ExecuteCommandTest, LinesAreSplitIntoAWordAndItsArgument) {
  auto words = split_command_line("  print   a(1) + 2  \t");
  EXPECT_EQ(words.word, "print");
  EXPECT_EQ(words.argument, "a(1) + 2");
  words = split_command_line("p(x)");
  EXPECT_EQ(words.word, "p");
  EXPECT_EQ(words.argument, "(x)");
  EXPECT_EQ(split_command_line("write_break2 x").word, "write_break2");
  EXPECT_EQ(split_command_line("=x").word, "");
}

TEST_F(ExecuteCommandTest, BlankLinesCommentsUnknownWordsAndMissingArguments) {
  const std::pair<const char*, std::uint32_t> lines[] = {
      {"   \t ", kCommandDone},       {"  #print n", kCommandDone},       {"frobnicate x", kCommandNotKnown},
      {"=x", kCommandNotKnown},       {"pr n", kCommandNotKnown},         {"PRINT   ", kCommandNeedsArgument},
      {"let", kCommandNeedsArgument}, {"stopscript", kCommandNeedsArgument}};
  for (auto [line, result] : lines) expect_run(line, result, "");
  EXPECT_EQ(PendingCommand, 0u);
  EXPECT_EQ(ui::OpenWindows.size(), 0);
}

TEST_F(ExecuteCommandTest, RunCommandsLeaveTheirRequestForTheMainLoop) {
  const std::pair<const char*, std::uint32_t> requests[] = {
      {"step", kStepIntoCommand}, {"so", kStepOverCommand}, {"Continue", kGoCommand}, {"exit", kQuitCommand}};
  for (auto [line, command] : requests) {
    PendingCommand = 0;
    EXPECT_EQ(run(line), kCommandDone) << line;
    EXPECT_EQ(PendingCommand, command | kStartFlag) << line;
  }
  PendingCommand = 0;
  run("step");
  run("go");  // a second request before the loop takes the first replaces it
  EXPECT_EQ(PendingCommand, kGoCommand | kStartFlag);
}

TEST_F(ExecuteCommandTest, CommandsThatOnlyEvaluateReportOnlyFailures) {
  expect_run("plot a(2) * 2", kCommandDone, "");
  expect_run("dunit n", kCommandDone, "");
  expect_run("plot nosuch", kCommandFailed, "Error: Unknown variable\n");
  expect_run("dstream nosuch", kCommandFailed, "Unknown variable\n");  // bare, not as an error

  ConsoleMode = false;
  EXPECT_EQ(run("stream (1"), kCommandFailed);
  EXPECT_EQ(run("streams"), kCommandDone);
  const auto& boxes = target.system.message_boxes;
  ASSERT_EQ(boxes.size(), 2u);
  EXPECT_EQ(boxes[0].title, L"Error");
  EXPECT_EQ(boxes[1].text, L"streams command is not currently available");
  EXPECT_EQ(boxes[1].title, L"Information");
}

TEST_F(ExecuteCommandTest, LetAssignsThroughTheEvaluatorAndRefusesWhatItCannot) {
  expect_run("let n = n * 6", kCommandDone, "");
  EXPECT_EQ(peek<std::int32_t>(kN), 42);
  expect_run("LET a(3)=-1", kCommandDone, "");
  EXPECT_EQ(peek<std::int32_t>(kA + 8), -1);
  expect_run("let x = 7", kCommandDone, "");  // converted to the target's type
  EXPECT_EQ(peek<double>(kX), 7.0);
  expect_run("let p%n = 9", kCommandDone, "");
  EXPECT_EQ(peek<std::int32_t>(kPoint + 4), 9);

  const std::pair<const char*, const char*> refused[] = {
      {"let n 3", "Error: Expected '=' after let command.\n"},
      {"let n", "Error: Expected '=' after let command.\n"},
      {"let 3 = n", "Error: Cannot assign to a constant.\n"},
      {"let limit = 5", "Error: Cannot assign to a constant.\n"},
      {"let n = nosuch", "Error: Unknown variable\n"},
      {"let nosuch = 1", "Error: Unknown variable\n"},
  };
  for (auto [line, message] : refused) expect_run(line, kCommandFailed, message);
  EXPECT_EQ(run("let a(9) = 1"), kCommandFailed);
  EXPECT_EQ(run("let n = p"), kCommandFailed);  // a structure does not become an integer
  EXPECT_EQ(peek<std::int32_t>(kN), 42);        // nothing written by any of them
}

TEST_F(ExecuteCommandTest, LetRefreshesTheOpenWindows) {
  run("watch n");
  ASSERT_EQ(ui::OpenWindows.size(), 1);
  auto* watches = ui::OpenWindows.from_front()[0];
  EXPECT_EQ(watches->rows()[0], "n = 7");
  run("let n = 8");
  EXPECT_EQ(watches->rows()[0], "n = 8");
}

}  // namespace
}  // namespace vantor::testing
