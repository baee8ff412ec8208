// Runs a fuzz target where libFuzzer is not available, so that every test run fuzzes a
// little: seeded random mutations of the target's seeds (byte flips, overwrites, inserts,
// cuts and splices of two seeds), bounded by a count and by time.
//   NAME_random SEED_DIRECTORY [COUNT [SECONDS [SEED]]]
// An input that kills the run is written to NAME-crash.bin in the current directory first,
// so that the libFuzzer build of the target can replay it.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" void __sanitizer_set_death_callback(void (*callback)(void)) __attribute__((weak));

namespace {

std::vector<std::uint8_t> current_input;
std::string crash_file;

void save_current_input() {
  if (std::FILE* out = std::fopen(crash_file.c_str(), "wb")) {
    std::fwrite(current_input.data(), 1, current_input.size(), out);
    std::fclose(out);
  }
}

std::vector<std::vector<std::uint8_t>> read_seeds(const std::filesystem::path& directory) {
  std::vector<std::filesystem::path> paths;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(directory, error))
    if (entry.is_regular_file()) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());  // the same seed order on every machine
  std::vector<std::vector<std::uint8_t>> seeds;
  for (const auto& path : paths) {
    std::ifstream in(path, std::ios::binary);
    seeds.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  return seeds;
}

class Mutator {
 public:
  Mutator(const std::vector<std::vector<std::uint8_t>>& seeds, unsigned seed) : seeds_(seeds), random_(seed) {}

  std::vector<std::uint8_t> next() {
    std::vector<std::uint8_t> input = seeds_.empty() ? std::vector<std::uint8_t>{} : pick();
    const unsigned rounds = 1 + below(8);
    for (unsigned i = 0; i < rounds; ++i) mutate(input);
    return input;
  }

 private:
  unsigned below(std::size_t n) { return n == 0 ? 0 : static_cast<unsigned>(random_() % n); }
  const std::vector<std::uint8_t>& pick() { return seeds_[below(seeds_.size())]; }

  void mutate(std::vector<std::uint8_t>& input) {
    // Values that reach the readers' limits: counts, sizes and offsets at their edges.
    static constexpr std::uint32_t kEdges[] = {0, 1, 0x7F, 0x80, 0xFF, 0x7FFF, 0x8000, 0xFFFF, 0x7FFFFFFF,
                                               0x80000000, 0xFFFFFFFF, 0x1000, 16, 12};
    switch (below(7)) {
      case 0:
        if (!input.empty()) input[below(input.size())] ^= static_cast<std::uint8_t>(1u << below(8));
        break;
      case 1:
        if (!input.empty()) input[below(input.size())] = static_cast<std::uint8_t>(random_());
        break;
      case 2:
        if (input.size() >= 4) {
          std::uint32_t value = kEdges[below(std::size(kEdges))];
          std::size_t at = below(input.size() - 3);
          for (int k = 0; k < 4; ++k) input[at + k] = static_cast<std::uint8_t>(value >> (8 * k));
        }
        break;
      case 3: {
        std::size_t at = below(input.size() + 1);
        std::size_t count = 1 + below(16);
        for (std::size_t k = 0; k < count; ++k)
          input.insert(input.begin() + static_cast<std::ptrdiff_t>(at), static_cast<std::uint8_t>(random_()));
        break;
      }
      case 4:
        if (!input.empty()) {
          std::size_t at = below(input.size());
          std::size_t count = std::min<std::size_t>(input.size() - at, 1 + below(32));
          input.erase(input.begin() + static_cast<std::ptrdiff_t>(at),
                      input.begin() + static_cast<std::ptrdiff_t>(at + count));
        }
        break;
      case 5:
        if (!seeds_.empty()) {
          const auto& other = pick();
          std::size_t from = below(other.size());
          std::size_t count = std::min<std::size_t>(other.size() - from, 1 + below(64));
          std::size_t at = below(input.size() + 1);
          input.insert(input.begin() + static_cast<std::ptrdiff_t>(at), other.begin() + static_cast<std::ptrdiff_t>(from),
                       other.begin() + static_cast<std::ptrdiff_t>(from + count));
        }
        break;
      default:
        input.resize(below(input.size() + 1));
        break;
    }
  }

  const std::vector<std::vector<std::uint8_t>>& seeds_;
  std::mt19937 random_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s SEED_DIRECTORY [COUNT [SECONDS [SEED]]]\n", argv[0]);
    return 2;
  }
  const long count = argc > 2 ? std::atol(argv[2]) : 2000;
  const double seconds = argc > 3 ? std::atof(argv[3]) : 10.0;
  const unsigned seed = argc > 4 ? static_cast<unsigned>(std::atol(argv[4])) : 20261122u;
  crash_file = std::filesystem::path(argv[0]).filename().string() + "-crash.bin";
  // Only a sanitizer build has the hook (the benchmark build has none): without it a
  // killing input is not saved, but the run still fails.
  if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(save_current_input);

  const auto seeds = read_seeds(argv[1]);
  if (seeds.empty()) {
    std::fprintf(stderr, "no seeds in %s\n", argv[1]);
    return 2;
  }
  // The seeds themselves first, then their mutations.
  long runs = 0;
  for (const auto& input : seeds) {
    current_input = input;
    LLVMFuzzerTestOneInput(current_input.data(), current_input.size());
    ++runs;
  }
  Mutator mutator(seeds, seed);
  const auto start = std::chrono::steady_clock::now();
  for (; runs < count; ++runs) {
    if (std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() > seconds) break;
    current_input = mutator.next();
    LLVMFuzzerTestOneInput(current_input.data(), current_input.size());
  }
  std::fprintf(stderr, "%ld inputs run (seed %u)\n", runs, seed);
  return 0;
}
