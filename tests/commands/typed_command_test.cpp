// Typed commands: the dialog's initial text and history, the forms addressed to the front
// source window, and the name space taken from the windows in front.
#include "commands/typed_command.h"

#include "commands/command_fixture.h"
#include "commands/view_producers.h"
#include "ui/source_window.h"
#include "ui/stack_window.h"

namespace vantor::testing {
namespace {

class TypedCommandTest : public CommandTest {
 protected:
  TypedCommandTest() {
    clear_command_history();
    source.recorded_name = L"C:\\src\\prog.f95";
    source.locate_state = kSourceLoaded;
    for (const char* text : {"program demo", "  n = 7", "  call compute(n)", "  print *, n", "end program"})
      source.lines.push_back({text});
    host.frame_lines.push_back({&source, 3});
  }
  ~TypedCommandTest() override { clear_command_history(); }

  void type(const std::string& text, char first_char = 0) {
    library.command_answers.push_back(text);
    printed = captured([&] { typed_command(first_char); });
  }
  ui::source_window& open_source() {
    auto* window = ui::OpenWindows.open(std::make_unique<ui::source_window>(&source, source_locator()));
    window->show_frame(0);
    return *window;
  }

  source_file source;
};

TEST_F(TypedCommandTest, TheDialogStartsFromTheKeyOrTheLastCommand) {
  type("print n", 'p');
  EXPECT_EQ(library.command_initial_texts.back(), "p");
  EXPECT_TRUE(library.modal_flag_seen);
  EXPECT_FALSE(winlib::ModalDialogActive);
  EXPECT_EQ(ui::get_setting_text(ui::kLastTypedCmd), "print n");
  type("step");
  EXPECT_EQ(library.command_initial_texts.back(), "print n");
  EXPECT_EQ(PendingCommand, kStepIntoCommand | kStartFlag);
  // Cancel and an empty text do nothing at all.
  PendingCommand = 0;
  captured([] { typed_command(); });
  type("");
  EXPECT_EQ(PendingCommand, 0u);
  EXPECT_EQ(command_history(), (std::vector<std::string>{"step", "print n"}));
}

TEST_F(TypedCommandTest, HistoryKeepsTwentyNewestFirstWithoutRepeats) {
  for (int i = 1; i <= 25; ++i) type("dunit " + std::to_string(i));
  type("dunit 25");
  ASSERT_EQ(command_history().size(), kCommandHistorySize);
  EXPECT_EQ(command_history().front(), "dunit 25");
  EXPECT_EQ(command_history().back(), "dunit 6");
  EXPECT_EQ(library.command_histories.back().front(), "dunit 25");  // the dialog offers it
  type("dunit 24");  // a repeat that is not the newest is kept again
  EXPECT_EQ(command_history()[0], "dunit 24");
  EXPECT_EQ(command_history()[1], "dunit 25");
}

TEST_F(TypedCommandTest, SearchAndMovetoFormsGoToTheFrontSourceWindow) {
  type("L/call");  // without a source window the forms are ordinary lines, unknown ones an error
  EXPECT_EQ(printed, "Error: Command not known\n");
  type("print");  // a missing argument shows nothing more
  EXPECT_EQ(printed, "");
  type("profile");
  EXPECT_EQ(printed, "Information: profile is not available\n");

  ui::source_window& window = open_source();
  EXPECT_EQ(window.current_line(), 2);
  type("l/PRINT");
  EXPECT_EQ(window.search_text(), "PRINT");
  EXPECT_EQ(window.current_line(), 3);
  type("bL/n =");
  EXPECT_EQ(window.current_line(), 1);
  type("MoveTo 5");
  EXPECT_EQ(window.current_line(), 4);
  type("moveto 99");  // out of the file: nothing moves
  EXPECT_EQ(window.current_line(), 4);
  EXPECT_EQ(printed, "");
  type("L/nowhere");
  EXPECT_EQ(printed, "Information: Search string not found\n");
}

TEST_F(TypedCommandTest, NameSpaceComesFromTheFrontWindowThatHasOne) {
  host.add_frame("CALLER", kSource);
  host.frame_lines.push_back({&source, 2});
  EXPECT_EQ(current_name_space(), nullptr);

  auto* stack = ui::OpenWindows.open(std::make_unique<ui::stack_window>([](ui::window_rows& rows, std::string&) {
    rows.add("MAIN");
    rows.add("CALLER");
  }));
  EXPECT_EQ(current_name_space(), nullptr);  // nothing selected
  stack->select_row(1);
  EXPECT_EQ(current_name_space(), host.stack_frame(1));

  ui::source_window& window = open_source();  // in front now, showing frame 0
  EXPECT_EQ(current_name_space(), host.stack_frame(0));
  window.show_frame(1);
  EXPECT_EQ(current_name_space(), host.stack_frame(1));
  ui::OpenWindows.bring_forward(stack);
  stack->select_row(0);
  EXPECT_EQ(current_name_space(), host.stack_frame(0));

  // Typed commands evaluate there.
  type("dunit nosuch");
  EXPECT_EQ(printed, "Unknown variable\n");
  type("let n = 11");
  EXPECT_EQ(peek<std::int32_t>(kN), 11);
}

}  // namespace
}  // namespace vantor::testing
