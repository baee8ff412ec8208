// The test-suite driver over a stopped program of the command fixture: the entries' items
// in windows, an exit among them, and the states it leaves alone. Lines printed, values
// written to the console, failures and the program's end are compared end to end
// (tests/e2e/cases/test_suite.case).
#include "session/test_suite.h"

#include "commands/command_fixture.h"
#include "process/debugged_process.h"
#include "session/startup_globals.h"
#include "ui/array_window.h"
#include "ui/value_window.h"

namespace vantor::testing {
namespace {

// A process whose state the test sets, as a run would have left it.
class StateProcess : public DebuggedProcess {
 public:
  void put(std::int32_t state, std::string text = "") {
    state_ = state;
    status_text_ = std::move(text);
  }
};

class TestSuiteTest : public CommandTest {
 protected:
  TestSuiteTest() {
    CurrentProcess = &process;
    TestSuiteMode = true;
    source.recorded_name = L"C:\\src\\prog.f95";
    host.frame_lines = {{&source, 12}};
    process.put(psStopped);
  }
  ~TestSuiteTest() override {
    CurrentProcess = nullptr;
    TestSuiteMode = false;
    TestSuiteEntries.clear();
  }
  std::string step() {
    return captured([this] { acted = RunTestSuiteStep(); });
  }

  StateProcess process;
  source_file source;
  bool acted = false;
};

TEST_F(TestSuiteTest, AnEntrysExpressionsOpenTheirViewsInTheInnermostFrame) {
  TestSuiteEntries = {{12, {"n", "a", "nosuch"}}, {12, {"x"}}, {20, {"exit"}}};
  EXPECT_EQ(step(), "MAIN (prog.f95: 12)\nUnknown variable\n");
  EXPECT_EQ(PendingCommand, kStepIntoCommand | kStartFlag);  // only the first entry counts
  ASSERT_EQ(ui::OpenWindows.size(), 2);
  EXPECT_NE(dynamic_cast<ui::array_window*>(ui::OpenWindows.from_front()[0]), nullptr);
  auto* scalar = dynamic_cast<ui::value_window*>(ui::OpenWindows.from_front()[1]);
  ASSERT_NE(scalar, nullptr);
  EXPECT_EQ(scalar->rows()[0], "n = 7");
}

TEST_F(TestSuiteTest, ExitEndsTheSessionAtThatItem) {
  TestSuiteEntries = {{12, {"n", "exit", "x"}}};
  library.opens_views = false;
  EXPECT_EQ(step(), "MAIN (prog.f95: 12)\nn\nn = 7\n");
  EXPECT_EQ(PendingCommand, kQuitCommand | kStartFlag);
}

TEST_F(TestSuiteTest, OtherStatesAreLeftAlone) {
  for (std::int32_t state : {psCreated, psLaunching, psRunning, psPaused}) {
    process.put(state);
    EXPECT_EQ(step(), "") << state;
    EXPECT_FALSE(acted) << state;
    EXPECT_EQ(PendingCommand, 0u) << state;
  }
}

}  // namespace
}  // namespace vantor::testing
