#include "disasm/pattern_index.h"

#include "disasm/decoder.h"
#include "disasm/pattern_table.h"
#include "disasm/pattern_text.h"

namespace vantor::disasm {

namespace {

using pattern_text::rex_group_follows;
using pattern_text::skip_group;
using pattern_text::skip_spaces;

constexpr std::uint8_t kCountedPrefixes[] = {0xF2, 0xF3, 0x66, 0x67};

bool is_counted_prefix(unsigned byte) {
  for (const std::uint8_t prefix : kCountedPrefixes)
    if (byte == prefix) return true;
  return false;
}

// The bits a row fixes in the first bytes of an instruction, for one assumed prefix
// count and REX presence.
struct FixedBits {
  std::array<std::uint8_t, kWindowSize> known{};
  std::array<std::uint8_t, kWindowSize> value{};

  bool fix(std::size_t position, unsigned bit) {
    const std::size_t byte = position / 8;
    const std::uint8_t mask = static_cast<std::uint8_t>(0x80u >> (position % 8));
    const std::uint8_t wanted = bit ? mask : 0;
    if ((known[byte] & mask) && (value[byte] & mask) != wanted) return false;
    known[byte] |= mask;
    value[byte] |= wanted;
    return true;
  }
  bool allows(std::size_t byte, unsigned v) const {
    return (v & known[byte]) == value[byte];
  }
};

// Follows the row the way the decoder would until the key bytes are passed, fixing the
// bits it requires; false when the row contradicts itself. Where the row's reading comes
// to depend on the instruction's data (past a ModRM byte, an immediate that the N bit may
// drop), the bytes further on are left free.
bool read_row(const char* p, std::size_t prefixes, bool rex, FixedBits& fixed) {
  const std::size_t rex_position = 8 * prefixes;
  const std::size_t stop = 8 * (prefixes + (rex ? 1 : 0) + 2);
  bool rex_present = false;
  bool rex_checked = false;
  bool shift_count_bit = false;
  int memory_bits = 0;
  std::size_t cursor = 0;
  for (;;) {
    p = skip_spaces(p);
    if (*p == '\0' || cursor >= stop) return true;
    if (!rex_checked && cursor == rex_position && rex_group_follows(p)) {
      rex_checked = true;
      if (rex) {
        rex_present = true;
      } else {
        int ones = 0;
        const char* q = skip_group(p, ones);
        if (ones < 2) {
          p = q;
          continue;
        }
      }
    }
    switch (const char c = *p++) {
      case 'I':
        if (shift_count_bit) return true;
        cursor += 8;
        break;
      case 'J': case 'j': cursor += 16; break;
      case 'K': case 'k': cursor += 32; break;
      case 'L': cursor += 64; break;
      case 'i': cursor += 8; break;
      case '0':
        if (!(rex_present && (cursor == rex_position + 6 || cursor == rex_position + 7)) &&
            !fixed.fix(cursor, 0))
          return false;
        ++cursor;
        break;
      case '1':
        if (!fixed.fix(cursor, 1)) return false;
        ++cursor;
        break;
      case 'N':
        shift_count_bit = true;
        ++cursor;
        break;
      case 'M': case 'm':
        ++cursor;
        // Past the ModRM byte the cursor moves by what the byte holds.
        if (++memory_bits == 5) return true;
        break;
      default:
        (void)c;
        ++cursor;  // R r X x C: a free bit
    }
  }
}

}  // namespace

unsigned PatternIndex::key_of(const std::uint8_t* window, std::size_t prefix_count) {
  std::size_t p = prefix_count;
  if (window[p] >> 4 == 0x4) ++p;
  return window[p] == 0x0F ? 256u + window[p + 1] : window[p];
}

std::bitset<PatternIndex::kKeyCount> PatternIndex::keys_of_row(const char* bits) {
  std::bitset<kKeyCount> keys;
  if (is_unmatchable(bits)) return keys;  // such a row never matches
  for (std::size_t prefixes = 0; prefixes <= kMaxCountedPrefixes; ++prefixes) {
    for (const bool rex : {false, true}) {
      FixedBits fixed;
      if (!read_row(bits, prefixes, rex, fixed)) continue;
      bool possible = true;
      for (std::size_t i = 0; i < prefixes && possible; ++i) {
        possible = false;
        for (const std::uint8_t prefix : kCountedPrefixes)
          if (fixed.allows(i, prefix)) possible = true;
      }
      if (rex && possible) {
        possible = false;
        for (unsigned v = 0x40; v <= 0x4F; ++v)
          if (fixed.allows(prefixes, v)) possible = true;
      }
      if (!possible) continue;
      const std::size_t opcode = prefixes + (rex ? 1 : 0);
      for (unsigned v = 0; v < 256; ++v) {
        if (!fixed.allows(opcode, v)) continue;
        if (!rex && (v >> 4 == 0x4 || (prefixes < kMaxCountedPrefixes && is_counted_prefix(v))))
          continue;
        if (v != 0x0F) {
          keys.set(v);
          continue;
        }
        for (unsigned w = 0; w < 256; ++w)
          if (fixed.allows(opcode + 1, w)) keys.set(256 + w);
      }
    }
  }
  return keys;
}

PatternIndex::PatternIndex() {
  const auto table = pattern_table();
  std::vector<std::bitset<kKeyCount>> row_keys;
  for (std::size_t row = 0; table[row].mnemonic != Mnemonic::NONE; ++row)
    row_keys.push_back(keys_of_row(table[row].bits));
  for (std::size_t key = 0; key < kKeyCount; ++key) {
    start_[key] = static_cast<std::uint32_t>(rows_.size());
    for (std::size_t row = 0; row < row_keys.size(); ++row)
      if (row_keys[row].test(key)) rows_.push_back(static_cast<std::uint16_t>(row));
  }
  start_[kKeyCount] = static_cast<std::uint32_t>(rows_.size());
}

const PatternIndex& PatternIndex::get() {
  static const PatternIndex index;
  return index;
}

std::span<const std::uint16_t> PatternIndex::rows_for_key(unsigned key) const {
  if (key >= kKeyCount) return {};
  return {rows_.data() + start_[key], rows_.data() + start_[key + 1]};
}

}  // namespace vantor::disasm
