// Decoding one instruction against the pattern table, apart from its text: which row
// matched, the operands it named, its immediate and branch displacement, its length.
#pragma once

#include <cstddef>
#include <cstdint>

#include "disasm/mnemonics.h"

namespace vantor::disasm {

// Every decode looks at exactly this many bytes and never beyond them.
inline constexpr std::size_t kWindowSize = 16;
inline constexpr std::size_t kMaxCountedPrefixes = 5;

// Both searches take the first matching row in table order; the indexed one only tries
// the rows that can match the instruction's opcode, the linear one tries them all.
enum class RowSearch { indexed, linear };

enum class OperandKind : std::uint8_t { none, general, xmm, memory };

struct Operand {
  OperandKind kind = OperandKind::none;
  unsigned number = 0;  // register number 0..15 for general and xmm operands
};

struct MemoryOperand {
  bool rip_relative = false;
  int base = -1;   // register number, or -1 when the address has no base
  int index = -1;  // register number, or -1 when there is no index
  unsigned scale = 1;
  std::uint32_t displacement = 0;  // sign-extended to 32 bits; 0 when there is none
};

struct DecodedInstruction {
  std::size_t length = 1;
  bool breakpoint = false;  // a 0xCC byte, taken before any row is tried
  int row = -1;             // index of the matching row, -1 when none matched
  Mnemonic mnemonic = Mnemonic::NONE;
  Operand first;
  Operand second;
  MemoryOperand memory;
  bool has_immediate = false;
  std::uint64_t immediate = 0;  // sign-extended to 64 bits (except a 64-bit one)
  bool has_branch = false;
  std::int64_t branch_displacement = 0;
  bool by_one = false;  // the shift group's N bit: no immediate count
  bool by_cl = false;   // the shift group's C bit: count in CL

  bool matched() const { return row >= 0; }
};

// Leading F2, F3, 66 and 67 bytes, at most kMaxCountedPrefixes. A REX prefix can only
// stand right after them.
std::size_t count_prefixes(const std::uint8_t* window);

// Decodes the instruction at the start of `window` (kWindowSize bytes).
DecodedInstruction decode_instruction(const std::uint8_t* window,
                                      RowSearch search = RowSearch::indexed);

}  // namespace vantor::disasm
