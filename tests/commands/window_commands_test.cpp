// Commands that open windows or print them: which view "print" chooses and where, the
// memory dump, watches, "view", "find", "regs", and what "dumpinfo" and "dprint" write.
#include <algorithm>

#include "commands/command_fixture.h"
#include "ui/array_window.h"
#include "ui/dump_window.h"
#include "ui/find_window.h"
#include "ui/value_window.h"
#include "ui/source_window.h"
#include "ui/structure_window.h"

namespace vantor::testing {
namespace {

using WindowCommandTest = CommandTest;

ui::text_window* front() {
  auto windows = ui::OpenWindows.from_front();
  return windows.empty() ? nullptr : windows.front();
}

TEST_F(WindowCommandTest, PrintChoosesTheViewByTypeAndPlacesItWhereAsked) {
  EXPECT_EQ(run("print p", 4, 4), kCommandDone);
  auto* structure = dynamic_cast<ui::structure_window*>(front());
  ASSERT_NE(structure, nullptr);
  EXPECT_EQ(structure->location().x, 4);
  EXPECT_EQ(structure->location().y, 4);
  EXPECT_EQ(structure->contents_text(), "Structure View\np\n(p)%X = 1.5\n(p)%N = 4\n");

  EXPECT_EQ(run("P a"), kCommandDone);
  auto* array = dynamic_cast<ui::array_window*>(front());
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(array->location().x, 5);
  EXPECT_EQ(array->contents_text(), "Array View\na\n(1) = 10\n(2) = 20\n(3) = 30\n(4) = 40\n(5) = 50\n");

  EXPECT_EQ(run("print m(2,:)"), kCommandDone);  // a section is an array too
  EXPECT_EQ(front()->contents_text(), "Array View\nm(2,:)\n(1) = 21\n(2) = 22\n(3) = 23\n");

  EXPECT_EQ(run("print n + 1"), kCommandDone);
  auto* expression = dynamic_cast<ui::value_window*>(front());
  ASSERT_NE(expression, nullptr);
  EXPECT_EQ(expression->contents_text(), "n + 1\nn + 1 = 8\n");

  EXPECT_EQ(run("print nosuch"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Unknown variable\n");
  EXPECT_EQ(ui::OpenWindows.size(), 4);
}

TEST_F(WindowCommandTest, MemoryDumpStartsAtTheValuesAddressOrTheAddressItHolds) {
  ui::set_setting_int(ui::kSourceWindowX, 30);
  ui::set_setting_int(ui::kSourceWindowY, 2);
  EXPECT_EQ(run("dump n"), kCommandDone);
  auto* dump = dynamic_cast<ui::dump_window*>(front());
  ASSERT_NE(dump, nullptr);
  EXPECT_EQ(dump->address(), kN);
  EXPECT_EQ(dump->title(), "Memory Dump: n");
  EXPECT_EQ(dump->location().x, 30);
  EXPECT_EQ(dump->location().y, 2);
  EXPECT_EQ(dump->rows()[0].substr(0, 16), "0000000000002000");
  EXPECT_EQ(run("pm loc(x) + 8"), kCommandDone);
  EXPECT_EQ(dynamic_cast<ui::dump_window*>(front())->address(), kX + 8);
  EXPECT_EQ(run("printmem (1"), kCommandFailed);
}

TEST_F(WindowCommandTest, DprintWritesAnOffScreenExpressionWindow) {
  EXPECT_EQ(run("dprint n"), kCommandDone);
  EXPECT_EQ(printed, "n\nn = 7\n");
  EXPECT_EQ(run("dprint a"), kCommandDone);
  EXPECT_EQ(printed, "a\na = INTEGER*4 (5)\na(1) = 10\na(2) = 20\na(3) = 30\na(4) = 40\na(5) = 50\n");
  EXPECT_EQ(run("dprint m"), kCommandDone);  // the first subscript runs fastest
  EXPECT_EQ(printed,
            "m\nm = INTEGER*4 (2,3)\nm(1,1) = 11\nm(2,1) = 21\nm(1,2) = 12\nm(2,2) = 22\nm(1,3) = 13\nm(2,3) = 23\n");
  EXPECT_EQ(run("dprint p"), kCommandDone);
  EXPECT_EQ(printed, "p\np = TYPE(POINT)\n(p)%X = 1.5\n(p)%N = 4\n");
  EXPECT_EQ(run("dprint nosuch"), kCommandDone);
  EXPECT_EQ(printed, "nosuch\nUnknown variable\n");
  EXPECT_EQ(ui::OpenWindows.size(), 0);
  EXPECT_TRUE(library.views.empty());
}

TEST_F(WindowCommandTest, DumpinfoWritesTheNamedWindow) {
  EXPECT_EQ(run("dumpinfo vars"), kCommandDone);
  EXPECT_EQ(printed,
            "Variables\nVariables: MAIN\nA = INTEGER*4 (5)\nLIMIT = 100\nM = INTEGER*4 (2,3)\nN = 7\n"
            "P = TYPE(POINT)\nTEXT = '                                    '\nX = 2.5\n");
  EXPECT_EQ(run("dumpinfo breakpoints"), kCommandDone);
  EXPECT_EQ(printed, "Breakpoints\nNo breakpoints\n");
  run("breakpoint 12");
  run("dumpinfo breakpoints");
  EXPECT_EQ(printed,
            "Breakpoints\nFile                               Line No   After   Every    Hits  Expression\n"
            "C:\\src\\prog.f95                         12       1       1       0  \n");
  EXPECT_EQ(run("dumpinfo streams"), kCommandDone);
  EXPECT_EQ(printed, "Information: streams command is not currently available\nStreams\n");
  EXPECT_EQ(run("dumpinfo heap"), kCommandDone);
  EXPECT_EQ(printed, "Unknown dump site: heap\n");
}

TEST_F(WindowCommandTest, WatchesGoIntoOneWindowPlacedFromItsSettings) {
  ui::set_setting_int(ui::kWatchWindowX, 50);
  EXPECT_EQ(run("watch n * 2"), kCommandDone);
  EXPECT_EQ(run("watch nosuch"), kCommandDone);
  EXPECT_EQ(run("watch a(("), kCommandDone);
  ASSERT_EQ(ui::OpenWindows.size(), 1);
  EXPECT_EQ(front()->location().x, 50);
  EXPECT_EQ(front()->contents_text(),
            "Watches\nn * 2 = 14\nnosuch = Out of scope\na(( = Error in watch expression\n");
  set_current_frame_index(-1);  // no frame: the names are out of scope
  front()->refresh();
  EXPECT_EQ(front()->rows()[0], "n * 2 = Out of scope");
}

TEST_F(WindowCommandTest, ViewOpensAFileFindListsRoutines) {
  target.system.add_text_file(L"notes.txt", "first\nsecond line\n");
  EXPECT_EQ(run("view notes.txt"), kCommandDone);
  auto* source = dynamic_cast<ui::source_window*>(front());
  ASSERT_NE(source, nullptr);
  EXPECT_EQ(source->title(), "notes.txt");
  ASSERT_EQ(source->row_count(), 2);
  EXPECT_NE(source->rows()[1].find("second line"), std::string::npos);
  EXPECT_EQ(run("view missing.f95"), kCommandFailed);
  EXPECT_EQ(printed, "Error: Cannot locate file\n");

  host.routines = {{"COMPUTE_SUM", "prog.f95", 30, "prog.exe"}, {"_write_unit", "", 0, "prog.exe"},
                   {"SUMMARY", "prog.f95", 50, "prog.exe"}};
  EXPECT_EQ(run("find sum"), kCommandDone);
  EXPECT_EQ(front()->contents_text(), "Find\nCOMPUTE_SUM (prog.f95: 30)\nSUMMARY (prog.f95: 50)\n");
  EXPECT_EQ(run("find nothing"), kCommandDone);
  EXPECT_EQ(printed, "Find: No routines found\n");
}

TEST_F(WindowCommandTest, RegistersWindowIsOpenedOnce) {
  host.context.rax = 0x1234;
  EXPECT_EQ(run("regs"), kCommandDone);
  EXPECT_EQ(run("REGS"), kCommandDone);
  ASSERT_EQ(ui::OpenWindows.size(), 1);
  EXPECT_EQ(front()->title(), "Registers");
  const auto& rows = front()->rows();
  EXPECT_NE(std::find(rows.begin(), rows.end(), "RAX = 0000000000001234 (4660)"), rows.end());
  host.stopped = false;  // no registers while the program runs
  front()->refresh();
  EXPECT_EQ(front()->row_count(), 0);
}

}  // namespace
}  // namespace vantor::testing
