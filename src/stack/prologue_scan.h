// Finding a routine's return-address slot from its prologue. Our compiler's routines keep
// no frame pointer: the only record of how far the stack pointer moved is the allocation
// at the head of the routine. The scan decodes the routine from its first byte and
// recognises the three prologue shapes by the decoder's text:
//   "sub_q       RSP,<size>"                 a frame allocated by an immediate;
//   "mov_q       RAX,<size>" + "call ..."    a large frame, lowered by the stack-probe
//                                            routine that the call reaches;
//   "int   3" or "nop"                       the line-start byte in front of the prologue;
// and anything else means a routine whose frame size is its debug block's lead word.
// The allocation counts only once the program counter is strictly above the instruction
// that made it: a thread stopped on the first instruction after it is unwound without it.
#pragma once

#include <cstdint>
#include <string>

#include "debuginfo/variable_record.h"
#include "process/target_memory.h"

namespace vantor {

// The decoder as the scan sees it: decode the instruction at `address`, advance `address`
// past it, give its text and its immediate operand (meaningful when it has one).
class InstructionSource {
 public:
  virtual ~InstructionSource() = default;
  virtual std::string decode(Address& address, std::uint64_t& immediate) = 0;
};

// The instruction decoder over the debugged program's memory. Give it a cached memory:
// every instruction decoded asks for 16 bytes.
class ProgramCode : public InstructionSource {
 public:
  explicit ProgramCode(TargetMemory& memory) : memory_(memory) {}
  std::string decode(Address& address, std::uint64_t& immediate) override;

 private:
  TargetMemory& memory_;
};

struct PrologueScan {
  static constexpr int kMaxInstructions = 20;

  // True when a prologue shape was recognised: the return address then lies at
  // sp + allocation, where sp is the stack pointer at the program counter.
  bool ended = false;
  std::uint64_t allocation = 0;
  // True when the scan got to its last instruction, whether or not that one ended it; a
  // walk goes no further than such a frame.
  bool reached_limit = false;
};

PrologueScan scan_prologue(InstructionSource& code, Address routine_start, Address pc, std::uint32_t lead_word);

}  // namespace vantor
