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
  words = split_command_line("write_break2 x");
  EXPECT_EQ(words.word, "write_break2");
  EXPECT_EQ(split_command_line("=x").word, "");
}

TEST_F(ExecuteCommandTest, BlankLinesCommentsUnknownWordsAndMissingArguments) {
  EXPECT_EQ(run(""), kCommandDone);
  EXPECT_EQ(run("   \t "), kCommandDone);
  EXPECT_EQ(run("# go"), kCommandDone);
  EXPECT_EQ(run("  #print n"), kCommandDone);
  EXPECT_EQ(PendingCommand, 0u);
  EXPECT_EQ(run("frobnicate x"), kCommandNotKnown);
  EXPECT_EQ(run("=x"), kCommandNotKnown);
  EXPECT_EQ(run("pr n"), kCommandNotKnown);
  EXPECT_EQ(run("print"), kCommandNeedsArgument);
  EXPECT_EQ(run("PRINT   "), kCommandNeedsArgument);
  EXPECT_EQ(run("let"), kCommandNeedsArgument);
  EXPECT_EQ(run("stopscript"), kCommandNeedsArgument);
  EXPECT_EQ(printed, "");
  EXPECT_EQ(ui::OpenWindows.size(), 0);
}

TEST_F(ExecuteCommandTest, RunCommandsLeaveTheirRequestForTheMainLoop) {
  const std::pair<const char*, std::uint32_t> requests[] = {
      {"step", kStepIntoCommand}, {"S", kStepIntoCommand}, {"stepover", kStepOverCommand},
      {"so", kStepOverCommand},   {"go", kGoCommand},      {"Continue", kGoCommand},
      {"exit", kQuitCommand},
  };
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
  EXPECT_EQ(run("plot a(2) * 2"), kCommandDone);
  EXPECT_EQ(run("unit 6"), kCommandDone);
  EXPECT_EQ(run("dunit n"), kCommandDone);
  EXPECT_EQ(printed, "");
  EXPECT_EQ(run("plot nosuch"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Unknown variable\n");
  // dstream prints the message bare, not as an error.
  EXPECT_EQ(run("dstream nosuch"), kCommandFailed);
  EXPECT_EQ(printed, "Unknown variable\n");

  ConsoleMode = false;
  EXPECT_EQ(run("stream (1"), kCommandFailed);
  ASSERT_EQ(target.system.message_boxes.size(), 1u);
  EXPECT_EQ(target.system.message_boxes[0].title, L"Error");
  EXPECT_EQ(run("streams"), kCommandDone);
  ASSERT_EQ(target.system.message_boxes.size(), 2u);
  EXPECT_EQ(target.system.message_boxes[1].text, L"streams command is not currently available");
  EXPECT_EQ(target.system.message_boxes[1].title, L"Information");
}

TEST_F(ExecuteCommandTest, LetAssignsThroughTheEvaluatorAndRefusesWhatItCannot) {
  EXPECT_EQ(run("let n = n * 6"), kCommandDone);
  EXPECT_EQ(peek<std::int32_t>(kN), 42);
  EXPECT_EQ(run("LET a(3)=-1"), kCommandDone);
  EXPECT_EQ(peek<std::int32_t>(kA + 8), -1);
  EXPECT_EQ(run("let x = 7"), kCommandDone);  // converted to the target's type
  EXPECT_EQ(peek<double>(kX), 7.0);
  EXPECT_EQ(run("let p%n = 9"), kCommandDone);
  EXPECT_EQ(peek<std::int32_t>(kPoint + 4), 9);
  EXPECT_EQ(printed, "");

  EXPECT_EQ(run("let n 3"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Expected '=' after let command.\n");
  EXPECT_EQ(run("let n"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Expected '=' after let command.\n");
  EXPECT_EQ(run("let 3 = n"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Cannot assign to a constant.\n");
  EXPECT_EQ(run("let limit = 5"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Cannot assign to a constant.\n");
  EXPECT_EQ(run("let n = nosuch"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Unknown variable\n");
  EXPECT_EQ(run("let nosuch = 1"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Unknown variable\n");
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
