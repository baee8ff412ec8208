// Commands that open windows or print them: which view "print" chooses and where, the
// memory dump, watches, "view", "find", "regs", and what "dumpinfo" and "dprint" write.
#include <algorithm>

#include "commands/command_fixture.h"
#include "ui/array_window.h"
#include "ui/dump_window.h"
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
  EXPECT_EQ(run("print p", 4, 3), kCommandDone);
  ASSERT_NE(dynamic_cast<ui::structure_window*>(front()), nullptr);
  EXPECT_EQ(front()->location().x, 4);
  EXPECT_EQ(front()->location().y, 3);
  EXPECT_EQ(front()->contents_text(), "Structure View\np\n(p)%X = 1.5\n(p)%N = 4\n");

  EXPECT_EQ(run("P a"), kCommandDone);
  ASSERT_NE(dynamic_cast<ui::array_window*>(front()), nullptr);
  EXPECT_EQ(front()->contents_text(), "Array View\na\n(1) = 10\n(2) = 20\n(3) = 30\n(4) = 40\n(5) = 50\n");
  EXPECT_EQ(run("print m(2,:)"), kCommandDone);  // a section is an array too
  EXPECT_EQ(front()->contents_text(), "Array View\nm(2,:)\n(1) = 21\n(2) = 22\n(3) = 23\n");

  EXPECT_EQ(run("print n + 1"), kCommandDone);
  ASSERT_NE(dynamic_cast<ui::value_window*>(front()), nullptr);
  EXPECT_EQ(front()->contents_text(), "n + 1\nn + 1 = 8\n");
  expect_run("print nosuch", kCommandFailed, "Error: Unknown variable\n");
  EXPECT_EQ(ui::OpenWindows.size(), 4);
}

TEST_F(WindowCommandTest, MemoryDumpStartsAtTheValuesAddressOrTheAddressItHolds) {
  ui::set_setting_int(ui::kSourceWindowX, 30);
  EXPECT_EQ(run("dump n"), kCommandDone);
  auto* dump = dynamic_cast<ui::dump_window*>(front());
  ASSERT_NE(dump, nullptr);
  EXPECT_EQ(dump->address(), kN);
  EXPECT_EQ(dump->title(), "Memory Dump: n");
  EXPECT_EQ(dump->location().x, 30);
  EXPECT_EQ(dump->rows()[0].substr(0, 16), "0000000000002000");
  EXPECT_EQ(run("pm loc(x) + 8"), kCommandDone);
  EXPECT_EQ(dynamic_cast<ui::dump_window*>(front())->address(), kX + 8);
  EXPECT_EQ(run("printmem (1"), kCommandFailed);
}

// Scalars, vectors and structures written by dprint and dumpinfo are compared end to end
// (tests/e2e/cases/script_session.case); here the order of a matrix and the messages.
TEST_F(WindowCommandTest, DprintAndDumpinfoWriteTheirWindowsToTheConsole) {
  expect_run("dprint m", kCommandDone,  // the first subscript runs fastest
             "m\nm = INTEGER*4 (2,3)\nm(1,1) = 11\nm(2,1) = 21\nm(1,2) = 12\nm(2,2) = 22\nm(1,3) = 13\nm(2,3) = 23\n");
  expect_run("dprint nosuch", kCommandDone, "nosuch\nUnknown variable\n");
  EXPECT_EQ(ui::OpenWindows.size(), 0);  // dprint's windows never reach the screen
  EXPECT_TRUE(library.views.empty());
  expect_run("dumpinfo vars", kCommandDone,
             "Variables\nVariables: MAIN\nA = INTEGER*4 (5)\nLIMIT = 100\nM = INTEGER*4 (2,3)\nN = 7\n"
             "P = TYPE(POINT)\nTEXT = '                                    '\nX = 2.5\n");
  expect_run("dumpinfo breakpoints", kCommandDone, "Breakpoints\nNo breakpoints\n");
  expect_run("dumpinfo streams", kCommandDone, "Information: streams command is not currently available\nStreams\n");
  expect_run("dumpinfo heap", kCommandDone, "Unknown dump site: heap\n");
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
  expect_run("view missing.f95", kCommandFailed, "Error: Cannot locate file\n");

  host.routines = {{"COMPUTE_SUM", "prog.f95", 30, "prog.exe"}, {"_write_unit", "", 0, "prog.exe"},
                   {"SUMMARY", "prog.f95", 50, "prog.exe"}};
  EXPECT_EQ(run("find sum"), kCommandDone);
  EXPECT_EQ(front()->contents_text(), "Find\nCOMPUTE_SUM (prog.f95: 30)\nSUMMARY (prog.f95: 50)\n");
  expect_run("find nothing", kCommandDone, "Find: No routines found\n");
}

TEST_F(WindowCommandTest, RegistersWindowIsOpenedOnce) {
  host.context.rax = 0x1234;
  EXPECT_EQ(run("regs"), kCommandDone);
  EXPECT_EQ(run("REGS"), kCommandDone);
  ASSERT_EQ(ui::OpenWindows.size(), 1);
  const auto& rows = front()->rows();
  EXPECT_NE(std::find(rows.begin(), rows.end(), "RAX = 0000000000001234 (4660)"), rows.end());
  host.stopped = false;  // no registers while the program runs
  front()->refresh();
  EXPECT_EQ(front()->row_count(), 0);
}

}  // namespace
}  // namespace vantor::testing
