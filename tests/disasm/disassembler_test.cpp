// The disassembler's entry points: the lines other parts of the debugger compare against,
// where the bytes come from, the last immediate and the code-address format.
#include "disasm/disassembler.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "support/fake_target.h"

namespace vantor::disasm {
namespace {

struct Decoded {
  std::string text;
  std::size_t length;
};

Decoded decode(std::vector<std::uint8_t> bytes, Address address = 0x140001000) {
  std::array<std::uint8_t, 16> window{};
  std::copy(bytes.begin(), bytes.end(), window.begin());
  Decoded result;
  result.length = disassemble_bytes(window.data(), address, result.text);
  return result;
}

// The lines themselves are pinned by the golden files; here, what they leave behind.
TEST(DisassemblerLines, TheLastImmediateIsWhatTheStackWalkerReadsOfAPrologue) {
  EXPECT_EQ(decode({0x48, 0x83, 0xEC, 0x28}).text, "sub_q       RSP,28");
  EXPECT_EQ(last_immediate(), 0x28u);
  decode({0x48, 0x81, 0xEC, 0x88, 0x01, 0x00, 0x00});
  EXPECT_EQ(last_immediate(), 0x188u);
  decode({0x48, 0xB8, 0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11});
  EXPECT_EQ(last_immediate(), 0x1122334455667788u);
  decode({0x48, 0x83, 0xEC, 0x10});
  const Decoded d = decode({0xCC, 0x83, 0xEC, 0x28});
  EXPECT_EQ(d.length, 1u);
  EXPECT_EQ(last_immediate(), 0x10u) << "a breakpoint byte leaves the last immediate alone";
  const Decoded vex = decode({0xC5, 0xF8, 0x58, 0xC1, 0x90, 0x90});
  EXPECT_EQ(vex.text, "db     c5,f8,58,c1,90");
  EXPECT_EQ(last_immediate(), 0u);
}

TEST(DisassemblerSources, ReadsOwnAddressSpaceWithoutAProcess) {
  static const std::uint8_t code[32] = {0x48, 0x83, 0xEC, 0x28, 0x55, 0xC3};
  Address address = reinterpret_cast<std::uintptr_t>(code);
  std::string text;
  disassemble(text, address);
  EXPECT_EQ(text, "sub_q       RSP,28");
  disassemble(text, address);
  EXPECT_EQ(text, "push       RBP");
  disassemble(text, address);
  EXPECT_EQ(text, "ret");
  EXPECT_EQ(address, reinterpret_cast<std::uintptr_t>(code) + 6);
}

TEST(DisassemblerSources, ReadsTheProcessInOneCallAndForgetsItAfterwards) {
  testing::FakeTarget target;
  constexpr Address kCode = 0x140001000;
  target.system.poke(kCode, {0x48, 0x8B, 0x45, 0xF8, 0xE8, 0x00, 0x00, 0x00, 0x00});
  Address address = kCode;
  std::string text;
  const auto reads = target.system.counters.reads;
  disassemble_in_process(target.memory, text, address);
  EXPECT_EQ(text, "mov_q       RAX,[fffffff8]$");
  EXPECT_EQ(address, kCode + 4);
  EXPECT_EQ(target.system.counters.reads, reads + 1);
  disassemble_in_process(target.memory, text, address);
  EXPECT_EQ(text, "call       140001009");

  // Afterwards the debugger's own memory is read again, not the process.
  static const std::uint8_t own[16] = {0x90};
  Address own_address = reinterpret_cast<std::uintptr_t>(own);
  disassemble(text, own_address);
  EXPECT_EQ(text, "nop");
  EXPECT_EQ(target.system.counters.reads, reads + 2);
}

TEST(DisassemblerSources, UnreadableProcessMemoryStillGivesALine) {
  testing::FakeTarget target;
  constexpr Address kPageEnd = 0x10000;
  target.system.poke(kPageEnd - 2, {0x48, 0x83});  // the rest of the instruction is unmapped
  Address address = kPageEnd - 2;
  std::string text;
  disassemble_in_process(target.memory, text, address);
  EXPECT_FALSE(text.empty());
  EXPECT_GT(address, kPageEnd - 2);
}

TEST(CodeAddress, FullAndShortForms) {
  EXPECT_EQ(format_code_address(0x00007FF612345678, true), "00007ff6:12345678");
  EXPECT_EQ(format_code_address(0x00007FF612345678, false), "7ff6:12345678");
  EXPECT_EQ(format_code_address(0x401000, false), "0:00401000");
  EXPECT_EQ(format_code_address(0x401000, true), "00000000:00401000");
}

}  // namespace
}  // namespace vantor::disasm
