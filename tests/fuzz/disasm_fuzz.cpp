// Fuzz target for the decoder: any bytes, taken as a 16-byte window (short inputs are
// padded with zeros). The line and length must be well formed, and the indexed search
// must find the same row as the search over every row.
//
// `make fuzz` builds it for libFuzzer; the native build also links it with a driver of
// seeded random windows (tests/disasm/fuzz_random_driver.cpp) that ctest runs.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "disasm/decoder.h"
#include "disasm/disassembler.h"

namespace {

// The linear search is slow in sanitized debug builds; the driver may thin it out.
bool compare_with_linear_search = true;

[[noreturn]] void fail(const char* what, const std::uint8_t* window) {
  std::fprintf(stderr, "disassembler fault: %s at", what);
  for (std::size_t i = 0; i < vantor::disasm::kWindowSize; ++i) std::fprintf(stderr, " %02x", window[i]);
  std::fprintf(stderr, "\n");
  std::abort();
}

}  // namespace

void set_linear_comparison(bool on) { compare_with_linear_search = on; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vantor::disasm;
  std::uint8_t window[kWindowSize] = {};
  std::memcpy(window, data, size < kWindowSize ? size : kWindowSize);
  std::string text;
  const std::size_t length = disassemble_bytes(window, 0x7FF612340000, text);
  if (length < 1 || length > kWindowSize) fail("length outside the window", window);
  if (text.empty()) fail("empty line", window);
  if (compare_with_linear_search) {
    const DecodedInstruction indexed = decode_instruction(window, RowSearch::indexed);
    const DecodedInstruction linear = decode_instruction(window, RowSearch::linear);
    if (indexed.row != linear.row || indexed.length != linear.length)
      fail("indexed and linear searches differ", window);
  }
  return 0;
}
