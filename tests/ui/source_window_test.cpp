#include "ui/source_window.h"

#include "common/messages.h"
#include "ui/window_test.h"

namespace vantor::ui {
namespace {

class SourceWindowTest : public WindowTest {
 protected:
  SourceWindowTest() {
    ConsoleMode = false;
    file.recorded_name = L"solver.f95";
    file.full_path = L"C:\\src\\solver.f95";
    for (const char* text : {"program solver", "\tinteger :: i", "  do i = 1, 10", "    call STEP(i)", "  end do",
                             "end program solver"})
      file.lines.push_back({text});
  }

  // Frame 0 stops at line 4 (0-based 3) of the file; frame 1 has no source.
  source_window make_window() {
    return source_window(
        &file,
        [this](int frame, source_file*& where, int& line) {
          if (frame != 0) return false;
          where = &file;
          line = 3;
          return true;
        },
        [](const source_file&, int line) { return line == 3; });
  }

  source_file file;
};

TEST_F(SourceWindowTest, RowsCarryNumbersMarksAndExpandedTabs) {
  source_window window = make_window();
  EXPECT_EQ(window.title(), "solver.f95");
  EXPECT_FALSE(window.show_frame(1));
  EXPECT_EQ(window.frame_index(), -1);
  ASSERT_TRUE(window.show_frame(0));
  EXPECT_EQ(window.frame_index(), 0);
  EXPECT_EQ(window.rows()[0], "    1   program solver");
  EXPECT_EQ(window.rows()[1], "    2           integer :: i");
  EXPECT_EQ(window.rows()[2], "    3*    do i = 1, 10");
  EXPECT_EQ(window.rows()[3], "    4 >     call STEP(i)");
  EXPECT_EQ(window.row_attribute(2), kRowBreakpoint);
  EXPECT_EQ(window.row_attribute(3), kRowCurrent);
  EXPECT_EQ(window.current_line(), 3);
  EXPECT_EQ(window.status(), "Line: 4, Col: 1");

  set_setting_int(kTextTabSize, 4);
  window.refresh();
  EXPECT_EQ(window.rows()[1], "    2       integer :: i");
  EXPECT_EQ(expand_tabs("ab\tc\t", 4), "ab  c   ");
}

TEST_F(SourceWindowTest, MovesStayInTheFile) {
  source_window window = make_window();
  window.show_frame(0);
  EXPECT_TRUE(window.move_to_line(6));
  EXPECT_EQ(window.status(), "Line: 6, Col: 1");
  EXPECT_FALSE(window.move_to_line(7));
  EXPECT_FALSE(window.move_to_line(0));
  EXPECT_EQ(window.current_line(), 5);
  window.handle_command(kCommandLineDown);
  EXPECT_EQ(window.current_line(), 5);
  window.handle_command(kCommandFirstRow);
  EXPECT_EQ(window.current_line(), 0);
  window.handle_popup_choice(kPopupGotoOrigin);
  EXPECT_EQ(window.current_line(), 3);

  library.number_answers = {2, 99};
  window.handle_popup_choice(kPopupGotoLine);
  EXPECT_EQ(window.current_line(), 1);
  window.handle_popup_choice(kPopupGotoLine);
  EXPECT_EQ(window.current_line(), 1) << "a line beyond the file is ignored";
  EXPECT_EQ(library.prompts[0].caption, "Goto");
  EXPECT_EQ(library.prompts[0].question, "Goto line:");
}

TEST_F(SourceWindowTest, SearchesRunFromTheCurrentLineEitherWay) {
  source_window window = make_window();
  window.show_frame(0);  // at line 4
  window.set_search_text("SOLVER");
  EXPECT_TRUE(window.handle_command(kCommandSearchForward));
  EXPECT_EQ(window.current_line(), 5) << "letter case is ignored";
  EXPECT_TRUE(window.handle_command(kCommandSearchBackward));
  EXPECT_EQ(window.current_line(), 0);
  EXPECT_FALSE(window.search(true));
  ASSERT_EQ(target.system.message_boxes.size(), 1u);
  EXPECT_EQ(target.system.message_boxes[0].text, L"Search string not found");
  EXPECT_EQ(window.current_line(), 0);

  library.text_answers = {std::string("do")};
  window.handle_popup_choice(kPopupSearch);
  EXPECT_EQ(window.current_line(), 2);
  EXPECT_EQ(window.search_text(), "do");
  window.handle_popup_choice(kPopupSearchAgain);
  EXPECT_EQ(window.current_line(), 4);
  EXPECT_EQ(library.prompts[0].question, "Search for:");
}

}  // namespace
}  // namespace vantor::ui
