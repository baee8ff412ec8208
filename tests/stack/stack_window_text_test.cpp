#include "stack/stack_window_text.h"

#include "debuginfo/list_rows.h"
#include "stack_test_support.h"

namespace vantor {
namespace {

// A process whose state the tests set directly, as its event handling would.
class StatedProcess : public DebuggedProcess {
 public:
  void set(std::int32_t state, std::string text = {}) {
    state_ = state;
    status_text_ = std::move(text);
  }
};

TEST(StackStatusLine, FollowsTheProcessState) {
  StatedProcess process;
  process.set(psPaused, "Program Paused");
  EXPECT_EQ(stack_status_line(process), "Status: Program Paused");
  process.set(psFailed, "Run-time error 10: Integer arithmetic overflow");
  EXPECT_EQ(stack_status_line(process), "Run-time error 10: Integer arithmetic overflow");
  process.set(psFailed, "Access Violation reading address 0x0000000000000000");
  EXPECT_EQ(stack_status_line(process), "Error: Access Violation reading address 0x0000000000000000");
  process.set(psEnded);
  EXPECT_EQ(stack_status_line(process), "Status: Program Terminated");
  process.set(psRunning);
  EXPECT_EQ(stack_status_line(process), "");
}

class StackWindowTest : public testing::StackTest {};

TEST_F(StackWindowTest, RowsShowSourcePositionsWhereKnown) {
  image.routine("MAIN", 0x1000, 0x40).source("C:\\work\\src\\prog.f95").line(1, 0).line(2, 5).line(7, 0x10);
  image.routine("NOLINES", 0x1100, 0x40);
  load(image, L"C:\\build\\prog.exe", true);
  code(image, "MAIN", small_frame_code(0x28));
  code(image, "NOLINES", small_frame_code(0x28));
  put(0x30000 + 0x28, image.address_of("MAIN") + 0x11);
  stop_at(image.address_of("NOLINES") + 6, 0x30000);

  ui::window_rows rows;
  std::string status = "stale";
  fill_stack_window(process, rows, status);
  EXPECT_EQ(status, "");
  EXPECT_EQ(rows.text, (std::vector<std::string>{"NOLINES", "MAIN (prog.f95: 7)"}));
  EXPECT_EQ(rows.attributes, (std::vector<int>{ui::kRowWithoutSource, ui::kRowPlain}));
}

TEST_F(StackWindowTest, ModulesAndCommonBlocksRows) {
  CommonBlock block{0x140003000, "/WORK/", 0x28};
  EXPECT_EQ(common_block_row(block), "/WORK/ = z'0000000140003000' - z'0000000140003028' (size z'28')");

  image.routine("MAIN", 0x1000, 0x40);
  load(image, L"C:\\build\\prog.exe", true);
  testing::DebugImageBuilder lib(0x7FF800000000, 0x12000);
  lib.no_debug_info();
  load(lib, L"C:\\windows\\system32\\kernel32.dll", false);
  ui::window_rows rows;
  std::string status;
  fill_modules_window(process, rows, status);
  EXPECT_EQ(rows.text, (std::vector<std::string>{"kernel32.dll = z'00007FF800000000' - z'00007FF800012000'",
                                                 "prog.exe = z'0000000140000000' - z'0000000140040000'"}));

  ui::window_rows common_rows;
  fill_common_window(process, common_rows, status);  // the list is not known yet
  EXPECT_TRUE(common_rows.text.empty());
}

}  // namespace
}  // namespace vantor
