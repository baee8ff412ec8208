// An index over the pattern table by opcode, so that a decode tries only the rows that
// can match the instruction's opcode, still in table order, and so finds the same first
// match as a walk over every row.
//
// The key of an instruction is the first byte after its counted prefixes and its REX
// byte; for the two-byte opcodes (0x0F) it is 256 plus the byte after the 0x0F. A row is
// filed under every key of an instruction it could match: its fixed bits are followed
// through each possible prefix count, with and without REX, the way the decoder would
// read them; where the reading would come to depend on the instruction's data
// (past a ModRM byte, say), the bytes further on are taken as free.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vantor::disasm {

class PatternIndex {
 public:
  static constexpr std::size_t kKeyCount = 512;

  static const PatternIndex& get();

  static unsigned key_of(const std::uint8_t* window, std::size_t prefix_count);
  // The keys a row is filed under: every key of an instruction the row could match.
  static std::bitset<kKeyCount> keys_of_row(const char* bits);

  // Row numbers in table order.
  std::span<const std::uint16_t> rows_for_key(unsigned key) const;
  std::span<const std::uint16_t> candidates(const std::uint8_t* window,
                                            std::size_t prefix_count) const {
    return rows_for_key(key_of(window, prefix_count));
  }

 private:
  PatternIndex();

  std::vector<std::uint16_t> rows_;
  std::array<std::uint32_t, kKeyCount + 1> start_{};
};

}  // namespace vantor::disasm
