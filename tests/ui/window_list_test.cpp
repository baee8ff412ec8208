// The text-window framework: the window list, refreshes, the saved layouts, scrolling and
// selection, and a window's text on the console and in a file.
#include "ui/window_list.h"

#include "ui/scrolling_window.h"
#include "ui/window_kinds.h"
#include "ui/window_layout.h"
#include "ui/window_test.h"

namespace vantor::ui {
namespace {

// A list window with as many numbered rows as the test asks for.
class numbered_window : public scrolling_window {
 public:
  numbered_window(int kind, int count, layout_settings settings = {})
      : scrolling_window(kind, "Numbers", settings), count(count) {}
  int count;
  int fills = 0;

 protected:
  void fill_rows(window_rows& rows) override {
    ++fills;
    for (int i = 0; i < count; ++i) rows.add("row " + std::to_string(i));
  }
};

class WindowFrameworkTest : public WindowTest {
 protected:
  // The saved X, Y, W and H of a window, "-" for a key not written.
  std::string saved_layout(const std::string& window) {
    std::string text;
    for (const char* key : {"-X", "-Y", "-W", "-H"}) {
      auto it = section().find(window + key);
      text += (it == section().end() ? "-" : it->second) + " ";
    }
    return text;
  }

  window_list windows;
};

TEST_F(WindowFrameworkTest, ListIsSearchedAndWalkedFrontFirst) {
  auto* a = windows.open(std::make_unique<numbered_window>(kStackKind, 1));
  auto* b = windows.open(std::make_unique<numbered_window>(kVariablesKind, 1));
  auto* c = windows.open(std::make_unique<numbered_window>(kStackKind, 1));
  EXPECT_EQ(windows.from_front(), (std::vector<text_window*>{c, b, a}));
  EXPECT_EQ(windows.find_first(kStackKind), c);
  EXPECT_EQ(windows.find_first(kSourceKind), nullptr);
  EXPECT_EQ(windows.find_first_of<numbered_window>(kVariablesKind), b);

  windows.bring_forward(a);
  EXPECT_EQ(windows.from_front(), (std::vector<text_window*>{a, c, b}));
  EXPECT_EQ(windows.find_first(kStackKind), a);
  EXPECT_EQ(library.view_of(*a)->raises, 1);
  windows.note_focus(b);  // the user clicked it: reordered, not raised again
  EXPECT_EQ(windows.from_front().front(), b);
  EXPECT_EQ(library.view_of(*b)->raises, 0);

  windows.close(a);
  EXPECT_EQ(windows.from_front(), (std::vector<text_window*>{b, c}));
  EXPECT_EQ(library.closed_views, 1);
  numbered_window stranger(kStackKind, 1);
  windows.close(&stranger);  // not in the list: left alone
  windows.bring_forward(&stranger);
  EXPECT_EQ(windows.size(), 2);
}

TEST_F(WindowFrameworkTest, RefreshReachesAllOrOneKindAndRedraws) {
  auto* stack = windows.open(std::make_unique<numbered_window>(kStackKind, 2));
  auto* vars = windows.open(std::make_unique<numbered_window>(kVariablesKind, 2));
  EXPECT_EQ(stack->fills, 1);  // opening builds and fills
  windows.refresh_kind(kVariablesKind);
  EXPECT_EQ(stack->fills, 1);
  EXPECT_EQ(vars->fills, 2);
  windows.refresh_all();
  EXPECT_EQ(stack->fills, 2);
  EXPECT_EQ(vars->fills, 3);
  EXPECT_EQ(library.view_of(*vars)->redraws, 3);
}

TEST_F(WindowFrameworkTest, ClosingSavesTheLayoutTheUserLeft) {
  auto find = [] { return std::make_unique<numbered_window>(kFindKind, 3, layout_settings::consecutive(kFindWindowX)); };
  library.opens_views = false;  // never on screen: the settings are left alone
  auto* hidden = windows.open(find());
  hidden->set_location({10, 4, 40, 12});
  windows.close(hidden);
  EXPECT_TRUE(target.system.profile.empty());

  library.opens_views = true;
  auto* window = windows.open(find());
  library.view_of(*window)->reported_location = winlib::WindowLocation{10, 4, 40, 12};
  windows.close(window);
  EXPECT_EQ(saved_layout("FindWindow"), "11 5 38 10 ");
  // Reopened, it comes back where it was saved.
  auto* again = windows.open(find());
  again->place_from_settings();
  EXPECT_EQ(again->location().x, 11);
  EXPECT_EQ(again->location().height, 10);
  EXPECT_EQ(again->visible_rows(), 10);
}

TEST_F(WindowFrameworkTest, LayoutRulesByKind) {
  numbered_window plain_dump(kDumpKind, 1, layout_settings::position_only(kMemDumpWindowX));
  plain_dump.set_location({10, 4, 40, 12});
  save_window_layout(plain_dump);
  // The dump's third number is not its width.
  EXPECT_EQ(saved_layout("MemDumpWindow"), "11 5 - - ");
  EXPECT_EQ(section().count("MemDumpWindow-BytesWide"), 0u);

  class plain_window : public text_window {
   public:
    plain_window() : text_window(kInspectorKind, "Plain", layout_settings::consecutive(kExpressionWindowX), LayoutKind::kPlain) {}
    void fill_rows(window_rows&) override {}
  } plain;
  plain.set_location({10, 4, 40, 12});
  save_window_layout(plain);
  EXPECT_EQ(saved_layout("ExpressionWindow"), "11 5 40 12 ");
}

TEST_F(WindowFrameworkTest, MainWindowKeepsItsSizeOnlyWhenAsked) {
  save_main_window_layout({30, 40, 900, 700, false, std::nullopt}, false);
  EXPECT_EQ(section()["Desktop-X"], "30");
  EXPECT_EQ(section().count("Desktop-W"), 0u);
  save_main_window_layout({30, 40, 900, 700, false, std::nullopt}, true);
  EXPECT_EQ(section()["Desktop-W"], "900");
  EXPECT_EQ(section()["DesktopMaximised"], "0");
  save_main_window_layout({-8, -8, 0, 0, true, DesktopPlacement{2, 3, -1, -1, -8, -8, 10, 20, 810, 620}}, true);
  EXPECT_EQ(section()["DesktopMaximised"], "1");
  EXPECT_EQ(section()["DesktopPlacement"], "2,3,-1,-1,-8,-8,10,20,810,620");
  EXPECT_EQ(section()["Desktop-W"], "900") << "a maximised frame keeps the last normal size";
}

TEST_F(WindowFrameworkTest, ScrollingStaysWithinTheRowsAndFollowsTheSelection) {
  numbered_window list(kFindKind, 25);
  list.set_location({1, 1, 30, 10});
  list.refresh();
  EXPECT_EQ(list.selected_row(), -1);
  list.scroll_to(100);
  EXPECT_EQ(list.first_visible_row(), 15);  // the last page stays full
  list.scroll_by(-40);
  EXPECT_EQ(list.first_visible_row(), 0);

  list.handle_command(kCommandLineDown);  // nothing selected: the view scrolls
  EXPECT_EQ(list.first_visible_row(), 1);
  EXPECT_TRUE(list.select_visible_row(9));
  EXPECT_EQ(list.selected_row(), 10);
  EXPECT_FALSE(list.select_visible_row(10)) << "below the visible area";
  list.handle_command(kCommandLineDown);  // selection leaves the page: the view follows
  EXPECT_EQ(list.selected_row(), 11);
  EXPECT_EQ(list.first_visible_row(), 2);
  list.handle_command(kCommandPageDown);
  list.handle_command(kCommandPageDown);
  EXPECT_EQ(list.selected_row(), 24);
  list.handle_command(kCommandFirstRow);
  EXPECT_EQ(list.selected_row(), 0);
  EXPECT_EQ(list.first_visible_row(), 0);
  EXPECT_EQ(list.selected_text(), "row 0");

  // The list shrinks under the selection at a refresh.
  list.select_row(20);
  list.count = 4;
  list.refresh();
  EXPECT_EQ(list.selected_row(), 3);
  EXPECT_EQ(list.first_visible_row(), 0);
  list.count = 0;
  list.refresh();
  list.move_selection(1);
  EXPECT_EQ(list.selected_row(), -1);
  EXPECT_EQ(list.selected_text(), "");
}

TEST_F(WindowFrameworkTest, ConsoleDumpIsTitleStatusAndEveryRow) {
  numbered_window list(kFindKind, 12);
  list.set_location({1, 1, 30, 3});  // only three rows visible: the dump still has all
  list.refresh();
  std::string expected = "Numbers\n";
  for (int i = 0; i < 12; ++i) expected += "row " + std::to_string(i) + "\n";
  EXPECT_EQ(list.contents_text(), expected);
  ::testing::internal::CaptureStdout();
  list.dump_to_console();
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), expected);

  EXPECT_EQ(list.contents_file_name(), "numbers.txt");
  EXPECT_TRUE(list.save_contents(L"C:\\work\\numbers.txt"));
  const auto* saved = target.system.file(L"C:\\work\\numbers.txt");
  ASSERT_NE(saved, nullptr);
  EXPECT_EQ(std::string(saved->begin(), saved->end()), expected.substr(8));
}

}  // namespace
}  // namespace vantor::ui
