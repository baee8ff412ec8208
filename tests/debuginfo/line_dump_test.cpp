#include "debuginfo/line_dump.h"

#include <gmock/gmock.h>

#include "debuginfo/module_test_support.h"

namespace vantor::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LineDumpTest : public ModuleTest {};

TEST_F(LineDumpTest, DumpsEachRoutineWithLinesInLookupOrder) {
  image.routine("MAIN", 0x1000, 0x40).line(3, 0).line(4, 0x1A);
  image.routine("STUB", 0x1040, 0x10).no_debug_block();
  image.routine("EMPTY", 0x1050, 0x10);
  image.routine("SUB", 0x1060, 0x10).line(12, 0);
  Module& module = load();
  std::vector<std::string> out;
  dump_module_lines(module, out, true);
  EXPECT_THAT(out, ElementsAre("prog.exe", " SUB, 1 lines", "  0. 12 (+0)", "", " MAIN, 2 lines", "  0. 3 (+0)",
                               "  1. 4 (+1a)", ""));
  out.clear();
  dump_module_lines(module, out, false);
  EXPECT_THAT(out, ElementsAre("prog.exe", " SUB, 1 lines", "  0. 12", "", " MAIN, 2 lines", "  0. 3", "  1. 4", ""));

  DebugImageBuilder stubs(0x7FF800000000);  // a module without lines dumps nothing
  stubs.routine("STUB", 0x1040, 0x10).no_debug_block();
  out.clear();
  dump_module_lines(load(stubs, L"C:\\lib\\stubs.dll"), out, true);
  EXPECT_THAT(out, IsEmpty());
}

TEST_F(LineDumpTest, WritesEveryModuleNewestFirstToTheFile) {
  image.routine("MAIN", 0x1000, 0x40).line(3, 0);
  load();
  DebugImageBuilder library(0x7FF800000000);
  library.routine("LIBSUB", 0x2000, 0x20).line(7, 5);
  load(library, L"C:\\lib\\util.dll");
  ASSERT_TRUE(write_line_dump(process));
  const auto* file = target.system.file(L"linedump.txt");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(std::string(file->begin(), file->end()),
            "util.dll\n LIBSUB, 1 lines\n  0. 7 (+5)\n\nprog.exe\n MAIN, 1 lines\n  0. 3 (+0)\n\n");
}

}  // namespace
}  // namespace vantor::testing
