// Scripts: opening with the ".script" fallback, one line at each stop with its echo, how
// results end a script, nesting, and the start-up script that removes itself.
#include "commands/command_fixture.h"
#include "session/startup_globals.h"

namespace vantor::testing {
namespace {

class ScriptTest : public CommandTest {
 protected:
  ~ScriptTest() override { ScriptFile.clear(); }

  // Runs the script's lines, one per stop, until it ends; the console output.
  std::string run_to_end(int most = 50) {
    return captured([&] {
      for (int i = 0; i < most && script_running(); ++i) run_script_line();
    });
  }
};

TEST_F(ScriptTest, OneLinePerStopEchoedAndRunInTheFirstFrameWithLines) {
  // Stopped in the run-time library, called from MAIN.
  host.frames.insert(host.frames.begin(), std::make_unique<FakeFrame>(target.memory, "_write_unit"));
  target.system.add_text_file(L"session.script", "breakpoint 20\nlet n = 3   \t\ngo\n");
  ASSERT_TRUE(open_script("session.script"));
  EXPECT_TRUE(script_running());

  EXPECT_EQ(captured(run_script_line), "> breakpoint 20\n");
  EXPECT_EQ(host.list.count(), 1);  // the file came from MAIN, frame 1
  EXPECT_EQ(captured(run_script_line), "> let n = 3\n");
  EXPECT_EQ(peek<std::int32_t>(kN), 3);

  host.stopped = false;  // running: the script waits
  EXPECT_EQ(captured(run_script_line), "");
  host.stopped = true;
  EXPECT_EQ(captured(run_script_line), "> go\n");
  EXPECT_EQ(PendingCommand, kGoCommand | kStartFlag);
  EXPECT_TRUE(script_running());
  EXPECT_EQ(captured(run_script_line), "");  // the end of the file closes it
  EXPECT_FALSE(script_running());
  EXPECT_TRUE(target.system.file(L"session.script"));  // only the start-up script is deleted
}

TEST_F(ScriptTest, ANameWithoutTheFileFallsBackToDotScript) {
  target.system.add_text_file(L"steps.script", "step\n");
  EXPECT_EQ(run("script steps"), kCommandDone);
  EXPECT_EQ(running_script_name(), "steps");
  EXPECT_EQ(run_to_end(), "> step\n");

  EXPECT_EQ(run("script nowhere"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Could not open script\n");
  EXPECT_FALSE(script_running());
}

TEST_F(ScriptTest, CommentsAndBlankLinesDoNotEndAScript) {
  target.system.add_text_file(L"t.script", "# set up\n\n   \nstepover\n#done\n");
  ASSERT_TRUE(open_script("t.script"));
  EXPECT_EQ(run_to_end(), "> # set up\n> \n> \n> stepover\n> #done\n");
  EXPECT_EQ(PendingCommand, kStepOverCommand | kStartFlag);
}

TEST_F(ScriptTest, ResultsOtherThanDoneEndTheScriptWithTheirText) {
  target.system.add_text_file(L"a.script", "frobnicate\nstep\n");
  ASSERT_TRUE(open_script("a.script"));
  EXPECT_EQ(run_to_end(), "> frobnicate\nCommand not known\nscript terminated\n");
  EXPECT_EQ(PendingCommand, 0u);

  target.system.add_text_file(L"b.script", "print\n");
  ASSERT_TRUE(open_script("b.script"));
  EXPECT_EQ(run_to_end(), "> print\nAn expression was expected\nscript terminated\n");

  target.system.add_text_file(L"c.script", "stopscript\ngo\n");
  ASSERT_TRUE(open_script("c.script"));
  EXPECT_EQ(run_to_end(), "> stopscript\nAn expression was expected\nscript terminated\n");
  EXPECT_EQ(PendingCommand, 0u);

  target.system.add_text_file(L"d.script", "let n 3\ngo\n");
  ASSERT_TRUE(open_script("d.script"));
  EXPECT_EQ(run_to_end(), "> let n 3\nError: Expected '=' after let command.\nscript terminated\n");

  target.system.add_text_file(L"e.script", "script d\n");
  ASSERT_TRUE(open_script("e.script"));
  EXPECT_EQ(run_to_end(), "> script d\nscript error: Scripts cannot be nested.\nscript terminated\n");
}

TEST_F(ScriptTest, TheStartUpScriptIsDeletedWhenItEnds) {
  target.system.add_text_file(L"C:\\tmp\\run.script", "dprint n\n");
  ScriptFile = L"C:\\tmp\\run.script";
  start_startup_script();
  ASSERT_TRUE(script_running());
  EXPECT_EQ(run_to_end(), "> dprint n\nn\nn = 7\n");
  EXPECT_EQ(target.system.file(L"C:\\tmp\\run.script"), nullptr);

  ScriptFile = L"gone.script";
  EXPECT_EQ(captured(start_startup_script), "Error: Could not open script\n");
}

TEST_F(ScriptTest, TheScriptEndsWithItsProgram) {
  target.system.add_text_file(L"t.script", "go\ngo\n");
  ASSERT_TRUE(open_script("t.script"));
  host.ended = true;
  EXPECT_EQ(captured(run_script_line), "");
  EXPECT_FALSE(script_running());
  ASSERT_TRUE(open_script("t.script"));
  host.ended = false;
  host.process = false;
  run_script_line();
  EXPECT_FALSE(script_running());
}

TEST_F(ScriptTest, LongLinesAreReadInPiecesOf511Characters) {
  std::string line = "# " + std::string(600, 'x');
  target.system.add_text_file(L"long.script", line + "\ngo");
  ASSERT_TRUE(open_script("long.script"));
  std::string out = run_to_end();
  // The rest of the comment comes back as a line of its own, which is not a command.
  EXPECT_EQ(out, "> " + line.substr(0, 511) + "\n> " + std::string(91, 'x') + "\nCommand not known\nscript terminated\n");
}

TEST_F(ScriptTest, EchoCanBeTurnedOff) {
  target.system.add_text_file(L"quiet.script", "dprint n\n");
  ScriptEcho = false;
  ASSERT_TRUE(open_script("quiet.script"));
  std::string out = run_to_end();
  ScriptEcho = true;
  EXPECT_EQ(out, "n\nn = 7\n");
}

}  // namespace
}  // namespace vantor::testing
