// Scripts: opening with the ".script" fallback, one line at each stop with its echo, how
// results end a script, nesting, and the start-up script that removes itself.
#include "commands/command_fixture.h"
#include "session/startup_globals.h"

namespace vantor::testing {
namespace {

class ScriptTest : public CommandTest {
 protected:
  ~ScriptTest() override { ScriptFile.clear(); }

  // Opens `text` as a script and runs its lines, one per stop, until it ends; the console output.
  std::string run_script(const std::string& text) {
    target.system.add_text_file(L"t.script", text);
    EXPECT_TRUE(open_script("t.script"));
    return run_to_end();
  }
  std::string run_to_end() {
    return captured([&] {
      for (int i = 0; i < 50 && script_running(); ++i) run_script_line();
    });
  }
};

TEST_F(ScriptTest, OneLinePerStopEchoedAndRunInTheFirstFrameWithLines) {
  // Stopped in the run-time library, called from MAIN.
  host.frames.insert(host.frames.begin(), std::make_unique<FakeFrame>(target.memory, "_write_unit"));
  target.system.add_text_file(L"session.script", "breakpoint 20\nlet n = 3   \t\ngo\n");
  ASSERT_TRUE(open_script("session.script"));

  EXPECT_EQ(captured(run_script_line), "> breakpoint 20\n");
  EXPECT_EQ(host.list.count(), 1);  // the file came from MAIN, frame 1
  EXPECT_EQ(captured(run_script_line), "> let n = 3\n");
  EXPECT_EQ(peek<std::int32_t>(kN), 3);

  host.stopped = false;  // running: the script waits
  EXPECT_EQ(captured(run_script_line), "");
  host.stopped = true;
  EXPECT_EQ(captured(run_script_line), "> go\n");
  EXPECT_EQ(captured(run_script_line), "");  // the end of the file closes it
  EXPECT_FALSE(script_running());
  EXPECT_TRUE(target.system.file(L"session.script"));  // only the start-up script is deleted
}

TEST_F(ScriptTest, ANameWithoutTheFileFallsBackToDotScript) {
  target.system.add_text_file(L"steps.script", "step\n");
  EXPECT_EQ(run("script steps"), kCommandDone);
  EXPECT_EQ(running_script_name(), "steps");
  EXPECT_EQ(run_to_end(), "> step\n");
  expect_run("script nowhere", kCommandFailed, "Error: Could not open script\n");
  EXPECT_FALSE(script_running());
  // The start-up script (run and deleted end to end: tests/e2e/cases/batch_modes.case).
  ScriptFile = L"gone.script";
  EXPECT_EQ(captured(start_startup_script), "Error: Could not open script\n");
}

TEST_F(ScriptTest, CommentsAndBlankLinesGoOnResultsOtherThanDoneEndTheScript) {
  struct Case {
    const char* script;
    const char* output;
    std::uint32_t pending;
  };
  const Case cases[] = {
      {"# set up\n\n   \nstepover\n#done\n", "> # set up\n> \n> \n> stepover\n> #done\n",
       kStepOverCommand | kStartFlag},
      {"frobnicate\nstep\n", "> frobnicate\nCommand not known\nscript terminated\n", 0},
      {"stopscript\ngo\n", "> stopscript\nAn expression was expected\nscript terminated\n", 0},
      {"let n 3\ngo\n", "> let n 3\nError: Expected '=' after let command.\nscript terminated\n", 0},
      {"script d\n", "> script d\nscript error: Scripts cannot be nested.\nscript terminated\n", 0},
  };
  target.system.add_text_file(L"d.script", "go\n");
  for (const Case& c : cases) {
    SCOPED_TRACE(c.script);
    PendingCommand = 0;
    EXPECT_EQ(run_script(c.script), c.output);
    EXPECT_EQ(PendingCommand, c.pending);
  }
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
  // The rest of the comment comes back as a line of its own, which is not a command.
  EXPECT_EQ(run_script(line + "\ngo"),
            "> " + line.substr(0, 511) + "\n> " + std::string(91, 'x') + "\nCommand not known\nscript terminated\n");
}

TEST_F(ScriptTest, EchoCanBeTurnedOff) {
  ScriptEcho = false;
  std::string out = run_script("dprint n\n");
  ScriptEcho = true;
  EXPECT_EQ(out, "n\nn = 7\n");
}

}  // namespace
}  // namespace vantor::testing
