#include "ui/assembler_window.h"

#include "common/messages.h"
#include "ui/window_test.h"

namespace vantor::ui {
namespace {

// Two routines: MAIN at 0x401000, which calls STEP at 0x401020, and one source line
// whose code starts at 0x401004.
class FakeCodeMap : public code_map {
 public:
  std::optional<code_routine> routine_containing(Address address) override {
    if (address >= 0x401000 && address < 0x401020) return code_routine{"MAIN", 0x401000};
    if (address >= 0x401020 && address < 0x401030) return code_routine{"STEP", 0x401020};
    return std::nullopt;
  }
  std::optional<code_routine> routine_named(const std::string& name) override {
    if (name == "step") return code_routine{"STEP", 0x401020};
    return std::nullopt;
  }
  std::optional<code_line> line_starting_at(Address address) override {
    if (address == 0x401004) return code_line{"prog.f95", 3, std::string("    call step()")};
    return std::nullopt;
  }
};

class AssemblerWindowTest : public WindowTest {
 protected:
  AssemblerWindowTest() {
    target.system.poke(0x401000, std::vector<std::uint8_t>{
                                     0x48, 0x83, 0xEC, 0x28,        // 401000 sub rsp, 28
                                     0xE8, 0x17, 0x00, 0x00, 0x00,  // 401004 call 401020
                                     0xCC,                          // 401009 a planted trap
                                     0xC3,                          // 40100a ret
                                 });
    for (Address a = 0x40100b; a < 0x401020; ++a) target.system.poke_value<std::uint8_t>(a, 0x90);
    target.system.poke_value<std::uint8_t>(0x401020, 0xC3);
  }

  std::unique_ptr<assembler_window> make_window(int rows) {
    auto window = std::make_unique<assembler_window>(target.memory, code, [](int frame, Address& pc) {
      if (frame > 1) return false;
      pc = frame == 0 ? 0x401009 : 0x401004;
      return true;
    });
    window->set_location({5, 2, 60, rows});
    return window;
  }

  FakeCodeMap code;
};

TEST_F(AssemblerWindowTest, RowsInterleaveLabelsSourceLinesAndInstructions) {
  auto owned = make_window(7);
  assembler_window& window = *owned;
  std::size_t reads = target.system.counters.reads;
  ASSERT_TRUE(window.show_frame(0));
  EXPECT_EQ(window.title(), "Assembler: MAIN");
  EXPECT_EQ(window.start_address(), 0x401000u) << "near the start: the whole routine from its label";
  EXPECT_EQ(target.system.counters.reads, reads + 2) << "one back-scan, one read for the rows";
  EXPECT_EQ(window.rows(), (std::vector<std::string>{
                               "MAIN:",
                               "00401000 4883ec28                sub_q   RSP,28      +   0",
                               "prog.f95: 3 call step()",
                               "00401004 e817000000              call    STEP        +   4",
                               "00401009 90                      nop                 +   9",
                               "0040100a c3                      ret                 +   a",
                               "0040100b 90                      nop                 +   b",
                           }));
  EXPECT_EQ(window.rows()[1].find('+'), 60u - 7) << "the offset sits 7 columns before the right edge";
  EXPECT_EQ(window.rows()[1].find("RSP"), window.rows()[1].find("sub_q") + 8);
  EXPECT_EQ(window.row_attribute(2), kRowSourceLine);
  EXPECT_EQ(window.row_attribute(4), kRowCurrent);
  EXPECT_EQ(window.row_addresses(),
            (std::vector<Address>{0x401000, 0x401000, 0x401004, 0x401004, 0x401009, 0x40100a, 0x40100b}));
  EXPECT_TRUE(window.shows_current_frame());

  window.show_frame(1);  // the caller's frame: its call selected, the trap still current
  EXPECT_FALSE(window.shows_current_frame());
  EXPECT_EQ(window.row_attribute(3), kRowSelected);
  EXPECT_EQ(window.row_attribute(4), kRowCurrent);
}

TEST_F(AssemblerWindowTest, ScrollingGoesByWholeInstructions) {
  auto owned = make_window(3);
  assembler_window& window = *owned;
  window.show_address(0x401000);
  window.handle_command(kCommandLineDown);
  EXPECT_EQ(window.start_address(), 0x401004u);
  window.handle_command(kCommandLineDown);
  EXPECT_EQ(window.start_address(), 0x401009u);
  window.handle_command(kCommandLineUp);  // back over the five-byte call, not one byte
  EXPECT_EQ(window.start_address(), 0x401004u);
  window.handle_command(kCommandPageDown);  // to the last row drawn
  EXPECT_EQ(window.start_address(), window.row_addresses().front());
  EXPECT_EQ(window.rows()[0].substr(0, 11), "00401009 90");

  window.show_address(0x401000);
  window.handle_command(kCommandLineUp);  // before any known routine: a byte at a time
  EXPECT_EQ(window.start_address(), 0x400fffu);
  EXPECT_EQ(window.rows()[0], "00400fff ??");
}

TEST_F(AssemblerWindowTest, GotoRoutineAsksForItsName) {
  auto owned = make_window(3);
  assembler_window& window = *owned;
  ConsoleMode = false;
  library.text_answers = {std::string("step"), std::string("nowhere")};
  window.handle_popup_choice(kPopupGotoRoutine);
  EXPECT_EQ(library.prompts[0].caption, "Goto routine");
  EXPECT_EQ(library.prompts[0].question, "Type the routine name");
  EXPECT_EQ(window.start_address(), 0x401020u);
  EXPECT_EQ(window.rows()[0], "STEP:");
  window.handle_popup_choice(kPopupGotoRoutine);
  EXPECT_EQ(window.start_address(), 0x401020u);
  ASSERT_EQ(target.system.message_boxes.size(), 1u);
}

}  // namespace
}  // namespace vantor::ui
