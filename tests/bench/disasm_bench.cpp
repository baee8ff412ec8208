// Decode throughput over real code: the .text section of a Windows binary (Wine's ntdll
// unless VANTOR_BENCH_BINARY names another), walked instruction by instruction the way
// the assembler window walks it. Reports instructions per second with the opcode index
// and with the search over every row, and for whole lines (decode plus text).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "disasm/decoder.h"
#include "disasm/disassembler.h"

namespace {

using vantor::disasm::kWindowSize;

std::uint32_t little32(const std::vector<std::uint8_t>& file, std::size_t at) {
  return at + 4 <= file.size() ? file[at] | file[at + 1] << 8 | file[at + 2] << 16 |
                                     static_cast<std::uint32_t>(file[at + 3]) << 24
                               : 0;
}

// The raw bytes of the image's .text section, padded with a window of zeros.
std::vector<std::uint8_t> code_section(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const std::vector<std::uint8_t> file{std::istreambuf_iterator<char>(in), {}};
  std::vector<std::uint8_t> code;
  const std::uint32_t pe = little32(file, 0x3C);
  if (little32(file, pe) != 0x00004550) return code;  // "PE\0\0"
  const std::size_t sections = file[pe + 6] | file[pe + 7] << 8;
  const std::size_t optional_size = file[pe + 20] | file[pe + 21] << 8;
  for (std::size_t i = 0; i < sections; ++i) {
    const std::size_t header = pe + 24 + optional_size + 40 * i;
    if (header + 40 > file.size() || std::memcmp(&file[header], ".text", 6) != 0) continue;
    const std::uint32_t size = little32(file, header + 16);
    const std::uint32_t offset = little32(file, header + 20);
    if (offset + size > file.size()) break;
    code.assign(file.begin() + offset, file.begin() + offset + size);
  }
  code.resize(code.size() + kWindowSize, 0);
  return code;
}

const std::vector<std::uint8_t>& code() {
  static const std::vector<std::uint8_t> bytes = [] {
    const char* path = std::getenv("VANTOR_BENCH_BINARY");
    return code_section(path ? path : "/usr/lib/x86_64-linux-gnu/wine/x86_64-windows/ntdll.dll");
  }();
  return bytes;
}

template <typename Step>
void walk_code(benchmark::State& state, Step step) {
  const std::vector<std::uint8_t>& bytes = code();
  if (bytes.size() <= kWindowSize) {
    state.SkipWithError("no .text section to decode (set VANTOR_BENCH_BINARY)");
    return;
  }
  const std::size_t end = bytes.size() - kWindowSize;
  std::size_t at = 0;
  std::int64_t instructions = 0;
  for (auto _ : state) {
    at += step(&bytes[at], at);
    if (at >= end) at = 0;
    ++instructions;
  }
  state.SetItemsProcessed(instructions);
}

void BM_Decode(benchmark::State& state, vantor::disasm::RowSearch search) {
  walk_code(state, [search](const std::uint8_t* window, std::size_t) {
    const auto decoded = vantor::disasm::decode_instruction(window, search);
    benchmark::DoNotOptimize(decoded);
    return decoded.length;
  });
}

void BM_LineWithIndex(benchmark::State& state) {
  std::string text;
  walk_code(state, [&text](const std::uint8_t* window, std::size_t at) {
    const std::size_t length = vantor::disasm::disassemble_bytes(window, 0x170001000 + at, text);
    benchmark::DoNotOptimize(text.data());
    return length;
  });
}

}  // namespace

BENCHMARK_CAPTURE(BM_Decode, WithIndex, vantor::disasm::RowSearch::indexed);
BENCHMARK_CAPTURE(BM_Decode, WithoutIndex, vantor::disasm::RowSearch::linear);
BENCHMARK(BM_LineWithIndex);
