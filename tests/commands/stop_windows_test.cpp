// A stop in the windows: the first frame with a source line becomes the current frame and
// the source, call-stack and variables windows follow it.
#include "commands/stop_windows.h"

#include "commands/command_fixture.h"
#include "commands/data_views.h"
#include "ui/source_window.h"
#include "ui/vars_window.h"

namespace vantor::testing {
namespace {

class StopWindowsTest : public CommandTest {
 protected:
  StopWindowsTest() {
    source.recorded_name = L"C:\\src\\prog.f95";
    source.locate_state = kSourceLoaded;
    for (const char* text : {"program demo", "  n = 7", "  call compute(n)", "end program"})
      source.lines.push_back({text});
    // Stopped in the run-time library, called from MAIN at line 3.
    host.frames.insert(host.frames.begin(), std::make_unique<FakeFrame>(target.memory, "_write_unit"));
    host.frame_lines = {{nullptr, 0}, {&source, 3}};
    set_current_frame_index(-1);
  }
  source_file source;
};

TEST_F(StopWindowsTest, TheFirstFrameWithASourceLineIsShown) {
  EXPECT_EQ(first_frame_with_source(), 1);
  show_stop_in_windows(false);
  EXPECT_EQ(current_frame_index(), 1);

  auto* code = ui::OpenWindows.find_first_of<ui::source_window>(ui::kSourceKind);
  ASSERT_NE(code, nullptr);
  EXPECT_EQ(code->file(), &source);
  EXPECT_EQ(code->execution_line(), 2);
  EXPECT_EQ(code->frame_index(), 1);

  auto* stack = ui::OpenWindows.find_first_of<ui::stack_window>(ui::kStackKind);
  ASSERT_NE(stack, nullptr);
  EXPECT_EQ(stack->selected_frame(), 1);
  EXPECT_EQ(stack->contents_text(), "Call Stack\nStatus: stopped\n_write_unit\nMAIN\n");

  auto* variables = ui::OpenWindows.find_first_of<ui::vars_window>(ui::kVariablesKind);
  ASSERT_NE(variables, nullptr);
  EXPECT_EQ(variables->frame_index(), 1);
  EXPECT_EQ(variables->status(), "Variables: MAIN");
}

TEST_F(StopWindowsTest, LaterStopsMoveTheOpenWindowsAndRefreshTheRest) {
  show_stop_in_windows(false);
  run("watch n");
  EXPECT_EQ(ui::OpenWindows.size(), 4);
  target.system.poke_value<std::int32_t>(kN, 70);
  host.frames.erase(host.frames.begin());  // now stopped in MAIN itself
  host.frame_lines = {{&source, 2}};
  show_stop_in_windows(false);
  EXPECT_EQ(ui::OpenWindows.size(), 4);
  EXPECT_EQ(current_frame_index(), 0);
  EXPECT_EQ(ui::OpenWindows.find_first_of<ui::vars_window>(ui::kVariablesKind)->frame_index(), 0);
  EXPECT_EQ(ui::OpenWindows.find_first(ui::kWatchesKind)->rows()[0], "n = 70");
}

TEST_F(StopWindowsTest, WithoutASourceLineOrAfterAnInstructionStepNoSourceWindowOpens) {
  show_stop_in_windows(true);
  EXPECT_EQ(ui::OpenWindows.find_first(ui::kSourceKind), nullptr);
  EXPECT_NE(ui::OpenWindows.find_first(ui::kVariablesKind), nullptr);

  ui::OpenWindows.close_all();
  host.frame_lines = {};
  EXPECT_EQ(first_frame_with_source(), -1);
  show_stop_in_windows(false);
  EXPECT_EQ(current_frame_index(), 0);
  ASSERT_EQ(ui::OpenWindows.size(), 1);
  EXPECT_EQ(ui::OpenWindows.from_front()[0]->kind(), ui::kStackKind);
}

}  // namespace
}  // namespace vantor::testing
