#include "stack/prologue_scan.h"

#include <string_view>

#include "disasm/disassembler.h"

namespace vantor {

namespace {

bool starts_with(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

// The decoder writes its operands seven spaces after the mnemonic, so of the two mov
// spellings only the 64-bit form can ever match; both are kept as the prologue forms are.
constexpr std::string_view kStackAllocation = "sub_q       RSP,";
constexpr std::string_view kFrameSizeLoad32 = "mov         RAX,";
constexpr std::string_view kFrameSizeLoad64 = "mov_q       RAX,";
constexpr std::string_view kCall = "call ";
constexpr std::string_view kTrapByte = "int   3";
constexpr std::string_view kNop = "nop";
// The mov is followed by a six-byte call of the probe routine, which lowers the stack
// pointer itself: once past that call the frame is allocated.
constexpr Address kProbeCallLength = 6;

}  // namespace

std::string ProgramCode::decode(Address& address, std::uint64_t& immediate) {
  std::string text;
  disasm::disassemble_in_process(memory_, text, address);
  immediate = disasm::last_immediate();
  return text;
}

PrologueScan scan_prologue(InstructionSource& code, Address routine_start, Address pc, std::uint32_t lead_word) {
  PrologueScan scan;
  Address address = routine_start;
  for (int n = 1; n <= PrologueScan::kMaxInstructions; ++n) {
    scan.reached_limit = n == PrologueScan::kMaxInstructions;
    std::uint64_t immediate = 0;
    std::string text = code.decode(address, immediate);

    if (starts_with(text, kStackAllocation)) {
      if (pc > address) scan.allocation = immediate;
      scan.ended = true;
      return scan;
    }
    if (starts_with(text, kFrameSizeLoad32) || starts_with(text, kFrameSizeLoad64)) {
      Address after_mov = address;
      std::uint64_t frame_size = immediate;
      std::uint64_t ignored = 0;
      if (starts_with(code.decode(address, ignored), kCall)) {
        if (pc > after_mov + kProbeCallLength) scan.allocation = frame_size;
        scan.ended = true;
        return scan;
      }
      address = after_mov;
      continue;
    }
    if (text == kTrapByte || text == kNop) continue;

    scan.allocation = lead_word;
    scan.ended = true;
    return scan;
  }
  return scan;
}

}  // namespace vantor
