// The list windows that show the stopped program's data: their rows from what their
// producers report, their empty forms, and the actions that change their contents.
#include "process/breakpoint_list.h"
#include "support/fake_breakpoint_host.h"
#include "ui/array_window.h"
#include "ui/breakpoints_window.h"
#include "ui/find_window.h"
#include "ui/stack_window.h"
#include "ui/structure_window.h"
#include "ui/vars_window.h"
#include "ui/watch_window.h"
#include "ui/window_test.h"

namespace vantor::ui {
namespace {

class DataWindowsTest : public WindowTest {
 protected:
  DataWindowsTest() {
  }

};

TEST_F(DataWindowsTest, BreakpointRowsLineUpUnderTheHeaderAndDeleteByRow) {
  testing::FakeBreakpointHost host{target};
  host.add_line("C:\\src\\prog.f95", 12, 0x401010);
  host.add_line("C:\\src\\prog.f95", 20, 0x401040);
  HardwareSlots slots;
  BreakpointList list{host, slots};
  breakpoints_window window([&] { return breakpoint_rows_of(list); }, [&](std::uint32_t id) { list.remove_breakpoint(id); });
  window.refresh();
  EXPECT_EQ(window.contents_text(), "Breakpoints\nNo breakpoints\n");

  list.set_breakpoint("C:\\src\\prog.f95", 12, 3, 2, "i > 4");
  list.set_hardware_slot(kAccessWrite, kSlotDataBreakpoint, 0x7ffe0010, 4);
  list.add_breakpoint(0x401040, 1, 1, "", "C:\\src\\prog.f95", 20, true);  // the debugger's own
  window.refresh();
  EXPECT_EQ(window.contents_text(),
            "Breakpoints\n"
            "File                               Line No   After   Every    Hits  Expression\n"
            "Data @0x7ffe0010                         0       0       0       0  \n"
            "C:\\src\\prog.f95                         12       3       2       0  i > 4\n");

  window.select_row(0);  // the header deletes nothing
  window.handle_popup_choice(kPopupDeleteBreakpoint);
  EXPECT_EQ(list.count(), 3);
  window.select_row(2);
  window.handle_popup_choice(kPopupDeleteBreakpoint);
  EXPECT_EQ(list.count(), 2);
  EXPECT_EQ(window.rows()[1].substr(0, 8), "Data @0x") << "the code breakpoint went";
  window.select_row(1);
  window.handle_popup_choice(kPopupDeleteBreakpoint);
  EXPECT_EQ(window.rows(), std::vector<std::string>{"No breakpoints"});
  EXPECT_EQ(list.count(), 1) << "the temporary breakpoint stays";
  EXPECT_EQ(window.selected_breakpoint(), nullptr);
}

TEST_F(DataWindowsTest, VariablesAreSortedFilteredAndSavedAsNameEqualsValue) {
  std::vector<variable_row> frame = {{"total", "12.5"}, {"N", "10", true}, {"a", "UNDEFINED"}, {"Count", "3"}};
  int asked_frame = -2;
  vars_window window(
      [&](int index, std::string& routine, std::vector<variable_row>& out) {
        asked_frame = index;
        if (index > 1) return false;
        routine = "SOLVE";
        out = frame;
        return true;
      },
      0);
  window.refresh();
  EXPECT_EQ(window.status(), "Variables: SOLVE");
  EXPECT_EQ(window.rows(), (std::vector<std::string>{"a = UNDEFINED", "Count = 3", "N = 10", "total = 12.5"}));

  set_setting_int(kSortVarList, 0);
  set_setting_int(kShowParametersInVarList, 0);
  window.refresh();
  EXPECT_EQ(window.rows(), (std::vector<std::string>{"total = 12.5", "a = UNDEFINED", "Count = 3"}));
  window.select_row(1);
  ASSERT_NE(window.selected_variable(), nullptr);
  EXPECT_EQ(window.selected_variable()->name, "a");

  EXPECT_EQ(window.contents_file_name(), "vars.txt");
  ASSERT_TRUE(window.save_contents(L"C:\\work\\vars.txt"));
  const auto* saved = target.system.file(L"C:\\work\\vars.txt");
  EXPECT_EQ(std::string(saved->begin(), saved->end()), "total = 12.5\na = UNDEFINED\nCount = 3\n");

  window.show_frame(5);  // a frame the stack no longer has
  EXPECT_EQ(asked_frame, 5);
  EXPECT_EQ(window.status(), "");
  EXPECT_EQ(window.rows(), std::vector<std::string>{"No Variables"});
  EXPECT_EQ(window.selected_variable(), nullptr);
  window.save_contents(L"C:\\work\\vars.txt");
  EXPECT_TRUE(target.system.file(L"C:\\work\\vars.txt")->empty()) << "the empty-list line is not a variable";
}

TEST_F(DataWindowsTest, WatchesShowValueScopeOrErrorAndCanBeDeleted) {
  watch_window window([](const std::string& expression) {
    if (expression == "i") return watch_value{watch_value::kValue, "4"};
    if (expression == "local") return watch_value{watch_value::kOutOfScope, ""};
    return watch_value{watch_value::kError, ""};
  });
  window.refresh();
  EXPECT_EQ(window.rows(), std::vector<std::string>{"No watches defined"});
  window.add_watch("i");
  window.add_watch("local");
  window.add_watch("i +* 2");
  EXPECT_EQ(window.rows(),
            (std::vector<std::string>{"i = 4", "local = Out of scope", "i +* 2 = Error in watch expression"}));
  EXPECT_FALSE(window.delete_selected());
  window.select_row(1);
  window.handle_popup_choice(kPopupDeleteWatch);
  EXPECT_EQ(window.entries().size(), 2u);
  EXPECT_EQ(window.rows()[1], "i +* 2 = Error in watch expression");
  EXPECT_EQ(window.selected_watch()->expression, "i +* 2");
}

TEST_F(DataWindowsTest, FindRowsNameTheSourceOrTheModule) {
  find_window window({{"SOLVE", "solver.f95", 31, "prog.exe"}, {"memcpy", "", 0, "msvcrt.dll"}});
  window.refresh();
  EXPECT_EQ(window.rows(), (std::vector<std::string>{"SOLVE (solver.f95: 31)", "memcpy in msvcrt.dll"}));
  EXPECT_EQ(window.selected_routine(), nullptr);
  window.select_row(1);
  EXPECT_EQ(window.selected_routine()->module, "msvcrt.dll");
}

TEST_F(DataWindowsTest, ArrayAndStructureRowsNameTheirElements) {
  EXPECT_EQ(subscripts_text({1, -2}, true), "(1,-2)");
  EXPECT_EQ(subscripts_text({0, 3}, false), "[0][3]");
  EXPECT_EQ(member_expression("p", "x", true), "(p)%x");
  EXPECT_EQ(member_expression(pointer_target_expression("node"), "next", false), "(*(node)).next");

  array_contents contents;
  array_window array([&](int, const std::string&, array_contents& out) { out = contents; }, "v", 0);
  array.refresh();
  EXPECT_EQ(array.rows(), std::vector<std::string>{"Empty"});
  contents.elements = {{{0}, "1.5"}, {{1}, "2.5"}};
  array.refresh();
  EXPECT_EQ(array.contents_text(), "Array View\nv\n(0) = 1.5\n(1) = 2.5\n");
  contents.error = "Array subscript out of range";
  array.select_row(1);
  array.refresh();
  EXPECT_EQ(array.rows(), std::vector<std::string>{"Array subscript out of range"});
  EXPECT_EQ(array.selected_element(), nullptr);

  structure_window structure(
      [](int, const std::string&, structure_contents& out) {
        out.fortran = true;
        out.members = {{"x", "1.0"}, {"tag", "'ab'"}};
      },
      "pt", 0);
  structure.refresh();
  EXPECT_EQ(structure.rows(), (std::vector<std::string>{"(pt)%x = 1.0", "(pt)%tag = 'ab'"}));
  structure.select_row(1);
  EXPECT_EQ(structure.selected_member_expression(), "(pt)%tag");
}

TEST_F(DataWindowsTest, StackWindowMarksFramesWithoutSource) {
  stack_window window([](window_rows& rows, std::string& status) {
    status = "Status: breakpoint";
    rows.add("SOLVE (solver.f95: 31)");
    rows.add("kernel32!BaseThreadInitThunk", kRowWithoutSource);
  });
  window.refresh();
  EXPECT_EQ(window.row_attribute(0), kRowPlain);
  EXPECT_EQ(window.row_attribute(1), kRowWithoutSource);
  EXPECT_EQ(window.contents_text(),
            "Call Stack\nStatus: breakpoint\nSOLVE (solver.f95: 31)\nkernel32!BaseThreadInitThunk\n");
}

}  // namespace
}  // namespace vantor::ui
