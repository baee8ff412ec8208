// Test support: instructions made to match a given pattern row, so rows can be checked
// one at a time. Free bits are random; where the row allows an optional REX byte the
// sample has one or not at random, with random X and B bits where the row writes 0; a
// memory operand gets a ModRM that is not register-direct, with its SIB byte and
// displacement.
#pragma once

#include <array>
#include <cstdint>
#include <random>

#include "disasm/decoder.h"
#include "disasm/pattern_text.h"

namespace vantor::disasm::testing {

struct RowSample {
  std::array<std::uint8_t, kWindowSize> bytes{};
  std::size_t length = 0;
};

class RowSampler {
 public:
  explicit RowSampler(std::uint32_t seed) : random_(seed) {}

  // False when no instruction can match the row (it holds a letter outside the alphabet)
  // or the row runs past the window.
  bool sample(const char* p, RowSample& out) {
    out = RowSample{};
    cursor_ = 0;
    bytes_ = &out.bytes;
    bool rex_checked = false;
    bool rex_present = false;
    std::size_t rex_position = 0;
    unsigned shift_by_one = 0;
    int memory_bits = 0;
    for (;;) {
      while (*p == ' ') ++p;
      if (*p == '\0') break;
      if (!rex_checked && cursor_ % 8 == 0 && cursor_ / 8 == count_prefixes(out.bytes.data()) &&
          starts_rex_group(p)) {
        rex_checked = true;
        int ones = 0;
        const char* after = skip_group(p, ones);
        if (ones < 2 && coin()) {
          p = after;
          continue;
        }
        rex_present = true;
        rex_position = cursor_;
      }
      const char c = *p++;
      if (cursor_ >= 8 * kWindowSize) return false;
      switch (c) {
        case '0':
          put(rex_present && (cursor_ == rex_position + 6 || cursor_ == rex_position + 7) ? coin() : 0);
          break;
        case '1': put(1); break;
        case 'R': case 'r': case 'X': case 'x': case 'C': put(coin()); break;
        case 'N':
          shift_by_one = coin();
          put(shift_by_one);
          break;
        case 'M': case 'm':
          put(coin());
          if (++memory_bits == 5 && !finish_memory_operand()) return false;
          break;
        case 'I':
          if (!shift_by_one && !put_bytes(1)) return false;
          break;
        case 'J': case 'j': if (!put_bytes(2)) return false; break;
        case 'K': case 'k': if (!put_bytes(4)) return false; break;
        case 'L': if (!put_bytes(8)) return false; break;
        case 'i': if (!put_bytes(1)) return false; break;
        default: return false;
      }
    }
    out.length = cursor_ / 8;
    for (std::size_t i = out.length; i < kWindowSize; ++i) out.bytes[i] = byte();
    return cursor_ % 8 == 0 && out.length > 0;
  }

  std::uint8_t byte() { return static_cast<std::uint8_t>(random_() & 0xFF); }
  unsigned coin() { return random_() & 1u; }
  std::mt19937& engine() { return random_; }

 private:
  static bool starts_rex_group(const char* p) { return pattern_text::rex_group_follows(p); }
  static const char* skip_group(const char* p, int& ones) { return pattern_text::skip_group(p, ones); }

  void put(unsigned bit) {
    std::uint8_t& b = (*bytes_)[cursor_ / 8];
    const std::uint8_t mask = static_cast<std::uint8_t>(0x80u >> (cursor_ % 8));
    b = static_cast<std::uint8_t>(bit ? (b | mask) : (b & ~mask));
    ++cursor_;
  }
  bool put_bytes(std::size_t count) {
    if (cursor_ % 8 != 0 || cursor_ / 8 + count > kWindowSize) return false;
    for (std::size_t i = 0; i < count; ++i) (*bytes_)[cursor_ / 8 + i] = byte();
    cursor_ += 8 * count;
    return true;
  }
  bool finish_memory_operand() {
    if (cursor_ % 8 != 0) return false;
    std::uint8_t& modrm = (*bytes_)[cursor_ / 8 - 1];
    if (modrm >> 6 == 3) modrm = static_cast<std::uint8_t>((modrm & 0x3F) | ((random_() % 3) << 6));
    const unsigned mod = modrm >> 6;
    const unsigned rm = modrm & 7;
    bool displacement32 = mod == 0 && rm == 5;
    if (rm == 4) {
      if (!put_bytes(1)) return false;
      displacement32 = mod == 0 && ((*bytes_)[cursor_ / 8 - 1] & 7) == 5;
    }
    if (mod == 1) return put_bytes(1);
    if (mod == 2 || displacement32) return put_bytes(4);
    return true;
  }

  std::mt19937 random_;
  std::array<std::uint8_t, kWindowSize>* bytes_ = nullptr;
  std::size_t cursor_ = 0;
};

}  // namespace vantor::disasm::testing
