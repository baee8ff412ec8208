// Golden files: hex bytes in, exact length and line out, one file per instruction family
// under tests/disasm/golden. Each case line reads
//     <hex bytes> | <length> | <line>
// "# ..." lines and blank lines are kept as they are; "@ <hex>" sets the address the
// following cases are decoded at (branch targets depend on it).
//
// With VANTOR_REBASE=1 in the environment the runner writes what the decoder produces
// back into the files instead of comparing, for review with git diff.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "disasm/disassembler.h"

namespace vantor::disasm {
namespace {

namespace fs = std::filesystem;

fs::path golden_folder() { return fs::path(VANTOR_SOURCE_DIR) / "tests" / "disasm" / "golden"; }

std::vector<std::string> golden_files() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(golden_folder()))
    if (entry.path().extension() == ".txt") names.push_back(entry.path().stem().string());
  std::sort(names.begin(), names.end());
  return names;
}

std::string trim(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

struct Case {
  std::vector<std::uint8_t> bytes;
  std::string length;
  std::string text;
};

bool parse_case(const std::string& line, Case& c) {
  const std::size_t bar1 = line.find('|');
  const std::size_t bar2 = bar1 == std::string::npos ? bar1 : line.find('|', bar1 + 1);
  if (bar2 == std::string::npos) return false;
  std::istringstream hex(line.substr(0, bar1));
  std::string byte;
  while (hex >> byte) {
    if (byte.size() != 2 || byte.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
      return false;
    c.bytes.push_back(static_cast<std::uint8_t>(std::stoul(byte, nullptr, 16)));
  }
  c.length = trim(line.substr(bar1 + 1, bar2 - bar1 - 1));
  c.text = line.substr(bar2 + 1);
  if (!c.text.empty() && c.text[0] == ' ') c.text.erase(0, 1);
  while (!c.text.empty() && c.text.back() == ' ') c.text.pop_back();
  return !c.bytes.empty() && c.bytes.size() <= 16;
}

std::string case_line(const Case& c, std::size_t length, const std::string& text) {
  std::string hex;
  char piece[4];
  for (const std::uint8_t b : c.bytes) {
    std::snprintf(piece, sizeof piece, "%02x ", b);
    hex += piece;
  }
  hex.resize(std::max<std::size_t>(hex.size(), 48), ' ');
  return hex + "| " + (length < 10 ? " " : "") + std::to_string(length) + " | " + text;
}

class GoldenFile : public ::testing::TestWithParam<std::string> {};

TEST_P(GoldenFile, DecodesAsRecorded) {
  const fs::path path = golden_folder() / (GetParam() + ".txt");
  std::ifstream in(path);
  ASSERT_TRUE(in) << path;
  const char* rebase_setting = std::getenv("VANTOR_REBASE");
  const bool rebase = rebase_setting && std::string(rebase_setting) == "1";
  std::vector<std::string> rewritten;
  std::string line;
  Address address = 0x140001000;
  int cases = 0;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.empty() || line[0] == '#') {
      rewritten.push_back(line);
      continue;
    }
    if (line[0] == '@') {
      address = std::stoull(line.substr(1), nullptr, 16);
      rewritten.push_back(line);
      continue;
    }
    Case c;
    ASSERT_TRUE(parse_case(line, c)) << path.filename() << ":" << number << " unreadable: " << line;
    std::uint8_t window[16] = {};
    std::copy(c.bytes.begin(), c.bytes.end(), window);
    std::string text;
    const std::size_t length = disassemble_bytes(window, address, text);
    ++cases;
    rewritten.push_back(case_line(c, length, text));
    if (!rebase) {
      EXPECT_EQ(c.length + " | " + c.text, std::to_string(length) + " | " + text)
          << path.filename() << ":" << number << "  " << line.substr(0, line.find('|'));
    }
  }
  EXPECT_GT(cases, 0) << path;
  if (rebase) {
    std::ofstream out(path);
    for (const std::string& kept : rewritten) out << kept << "\n";
    std::printf("rebased %s\n", path.c_str());
  }
}

INSTANTIATE_TEST_SUITE_P(Families, GoldenFile, ::testing::ValuesIn(golden_files()),
                         [](const auto& info) { return info.param; });

}  // namespace
}  // namespace vantor::disasm
