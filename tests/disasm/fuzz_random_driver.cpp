// Runs the fuzz target over seeded random windows where libFuzzer is not available:
//   disasm_fuzz_random [COUNT [SEED]]
// Half the windows start with prefix, REX and escape bytes, as real instructions do; one
// in sixteen is also checked against the search over every row.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
void set_linear_comparison(bool on);

int main(int argc, char** argv) {
  const long count = argc > 1 ? std::atol(argv[1]) : 200000;
  const unsigned seed = argc > 2 ? static_cast<unsigned>(std::atol(argv[2])) : 20240611u;
  std::mt19937 random(seed);
  static constexpr std::uint8_t kLeads[] = {0x66, 0x67, 0xF2, 0xF3, 0xF0, 0x65, 0x2E, 0x40,
                                            0x41, 0x44, 0x48, 0x49, 0x4C, 0x4F, 0x0F, 0xC4,
                                            0xC5, 0xD8, 0xD9, 0xDD, 0xDF, 0xFF, 0xF7, 0x81};
  std::uint8_t window[16];
  for (long i = 0; i < count; ++i) {
    for (std::uint8_t& b : window) b = static_cast<std::uint8_t>(random());
    if (i % 2) {
      const unsigned leads = random() % 4;
      for (unsigned k = 0; k < leads; ++k) window[k] = kLeads[random() % sizeof kLeads];
    }
    set_linear_comparison(i % 16 == 0);
    LLVMFuzzerTestOneInput(window, sizeof window);
  }
  std::printf("%ld windows decoded\n", count);
  return 0;
}
