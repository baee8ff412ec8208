#include "disasm/decoder.h"

#include "disasm/pattern_index.h"
#include "disasm/pattern_table.h"
#include "disasm/pattern_text.h"

namespace vantor::disasm {

namespace {

using pattern_text::rex_group_follows;
using pattern_text::skip_group;
using pattern_text::skip_spaces;

constexpr std::size_t kWindowBits = kWindowSize * 8;

bool is_counted_prefix(std::uint8_t byte) {
  return byte == 0xF2 || byte == 0xF3 || byte == 0x66 || byte == 0x67;
}

class BitReader {
 public:
  explicit BitReader(const std::uint8_t* window) : window_(window) {}
  unsigned bit(std::size_t position) const {
    return (window_[position >> 3] >> (7 - (position & 7))) & 1u;
  }
  std::uint8_t byte(std::size_t index) const { return window_[index]; }
  // Little-endian value of `size` bytes at byte `index`; false if they pass the window.
  bool little_endian(std::size_t index, std::size_t size, std::uint64_t& value) const {
    if (index + size > kWindowSize) return false;
    value = 0;
    for (std::size_t i = size; i-- > 0;) value = (value << 8) | window_[index + i];
    return true;
  }

 private:
  const std::uint8_t* window_;
};

std::uint64_t sign_extend(std::uint64_t value, std::size_t size) {
  const unsigned shift = 64 - 8 * static_cast<unsigned>(size);
  return shift == 0 ? value
                    : static_cast<std::uint64_t>(static_cast<std::int64_t>(value << shift) >> shift);
}

struct RexState {
  bool present = false;
  std::size_t position = 0;  // bit position of the REX byte when present
  unsigned x = 0;
  unsigned b = 0;
};

// Decodes the ModRM byte that ends at `cursor` as a memory operand, moving the cursor past
// any SIB byte and displacement. A register-direct ModRM is not a memory operand: the
// row fails, so that a register form of the instruction or the "db" line shows it.
bool decode_memory_operand(const BitReader& bits, const RexState& rex, std::size_t& cursor,
                           MemoryOperand& memory) {
  if (cursor % 8 != 0) return false;
  const std::uint8_t modrm = bits.byte(cursor / 8 - 1);
  const unsigned mod = modrm >> 6;
  const unsigned rm = modrm & 7;
  if (mod == 3) return false;
  memory = MemoryOperand{};
  bool displacement32 = false;
  if (rm != 4) {
    if (rm == 5 && mod == 0) {
      memory.rip_relative = true;
      displacement32 = true;
    } else {
      memory.base = static_cast<int>(rm + 8 * rex.b);
    }
  } else {
    if (cursor / 8 >= kWindowSize) return false;
    const std::uint8_t sib = bits.byte(cursor / 8);
    cursor += 8;
    memory.scale = 1u << (sib >> 6);
    const unsigned index = ((sib >> 3) & 7) + 8 * rex.x;
    const unsigned base = sib & 7;
    if (base == 5 && mod == 0) {
      displacement32 = true;
    } else {
      memory.base = static_cast<int>(base + 8 * rex.b);
    }
    if (index != 4) memory.index = static_cast<int>(index);
  }
  std::size_t size = 0;
  if (mod == 1) size = 1;
  if (mod == 2 || displacement32) size = 4;
  if (size != 0) {
    std::uint64_t value = 0;
    if (!bits.little_endian(cursor / 8, size, value)) return false;
    memory.displacement = static_cast<std::uint32_t>(sign_extend(value, size));
    cursor += 8 * size;
  }
  return true;
}

void add_bit(Operand& operand, OperandKind kind, unsigned bit) {
  operand.kind = kind;
  operand.number = (operand.number << 1) | bit;
}

// Walks one row over the instruction's bits; true when the row reaches its end.
bool match_row(const char* p, const std::uint8_t* window, std::size_t rex_position,
               DecodedInstruction& out) {
  const BitReader bits(window);
  out = DecodedInstruction{};
  RexState rex;
  bool rex_checked = false;
  int memory_bits = 0;
  std::size_t cursor = 0;

  // Takes a whole immediate or displacement of `size` bytes at the (byte-aligned) cursor.
  auto take = [&](std::size_t size, std::uint64_t& value) {
    if (cursor % 8 != 0 || !bits.little_endian(cursor / 8, size, value)) return false;
    cursor += 8 * size;
    value = sign_extend(value, size);
    return true;
  };

  for (;;) {
    p = skip_spaces(p);
    if (*p == '\0') break;
    if (!rex_checked && cursor == rex_position && rex_group_follows(p)) {
      rex_checked = true;
      if (bits.byte(cursor / 8) >> 4 == 0x4) {
        rex.present = true;
        rex.position = cursor;
        rex.x = bits.bit(cursor + 6);
        rex.b = bits.bit(cursor + 7);
      } else {
        int ones = 0;
        const char* after = skip_group(p, ones);
        if (ones < 2) {
          p = after;
          continue;
        }
      }
    }
    const char c = *p++;
    std::uint64_t value = 0;
    switch (c) {
      case 'I':
        if (out.by_one) break;
        [[fallthrough]];
      case 'J':
      case 'K':
      case 'L': {
        const std::size_t size = c == 'I' ? 1 : c == 'J' ? 2 : c == 'K' ? 4 : 8;
        if (!take(size, value)) return false;
        out.has_immediate = true;
        out.immediate = value;
        break;
      }
      case 'i':
      case 'j':
      case 'k': {
        const std::size_t size = c == 'i' ? 1 : c == 'j' ? 2 : 4;
        if (!take(size, value)) return false;
        out.has_branch = true;
        out.branch_displacement = static_cast<std::int64_t>(value);
        break;
      }
      default: {
        if (cursor >= kWindowBits) return false;
        const unsigned bit = bits.bit(cursor);
        switch (c) {
          case '0':
            if (bit != 0 && !(rex.present && (cursor == rex.position + 6 ||
                                              cursor == rex.position + 7)))
              return false;
            break;
          case '1':
            if (bit != 1) return false;
            break;
          case 'R': add_bit(out.first, OperandKind::general, bit); break;
          case 'r': add_bit(out.second, OperandKind::general, bit); break;
          case 'X': add_bit(out.first, OperandKind::xmm, bit); break;
          case 'x': add_bit(out.second, OperandKind::xmm, bit); break;
          case 'N':
            out.by_one = bit != 0;
            out.first.number = rex.b;
            break;
          case 'C':
            out.by_cl = bit != 0;
            out.first.number = rex.b;
            break;
          case 'M':
          case 'm':
            (c == 'M' ? out.first : out.second).kind = OperandKind::memory;
            if (++memory_bits == 5) {
              ++cursor;
              if (!decode_memory_operand(bits, rex, cursor, out.memory)) return false;
              continue;
            }
            break;
          default:
            return false;  // a letter this decoder does not take
        }
        ++cursor;
      }
    }
  }
  out.length = cursor / 8;
  out.mnemonic = Mnemonic::NONE;
  return out.length > 0;
}

}  // namespace

std::size_t count_prefixes(const std::uint8_t* window) {
  std::size_t count = 0;
  while (count < kMaxCountedPrefixes && is_counted_prefix(window[count])) ++count;
  return count;
}

DecodedInstruction decode_instruction(const std::uint8_t* window, RowSearch search) {
  DecodedInstruction result;
  if (window[0] == 0xCC) {
    result.breakpoint = true;
    return result;
  }
  const std::size_t prefixes = count_prefixes(window);
  const std::size_t rex_position = 8 * prefixes;
  const auto table = pattern_table();
  auto try_row = [&](std::size_t row) {
    if (!match_row(table[row].bits, window, rex_position, result)) return false;
    result.row = static_cast<int>(row);
    result.mnemonic = table[row].mnemonic;
    return true;
  };
  if (search == RowSearch::linear) {
    for (std::size_t row = 0; table[row].mnemonic != Mnemonic::NONE; ++row)
      if (try_row(row)) return result;
  } else {
    for (const std::uint16_t row : PatternIndex::get().candidates(window, prefixes))
      if (try_row(row)) return result;
  }
  result = DecodedInstruction{};
  return result;
}

}  // namespace vantor::disasm
