// Compares the decoder with binutils' objdump over the code of real binaries: for every
// instruction objdump lists, the decoder reads the same bytes at the same address and the
// two must agree on the length, the mnemonic family and any branch target.
//
//   disasm_oracle [--objdump PATH] [--show N] BINARY-OR-FOLDER...
//
// A folder stands for the .exe and .dll files under it.
// Prints, per binary, how many instructions fall in the families the pattern table
// covers and the agreement rates over them, then each class of disagreement with a few
// examples. A disagreement is "by design" when the instruction is of a kind the decoder
// deliberately leaves undecoded (see design_class); any other one fails the run, as does
// any differing branch target or operand (registers in order, displacement, the low
// byte of an immediate) of an instruction whose length and family agree, and any
// instruction outside the covered families that the decoder decodes as something.
// Exits with 77 when no binary exists.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "disasm/decoder.h"
#include "disasm/instruction_text.h"
#include "disasm/pattern_table.h"

namespace {

using vantor::disasm::DecodedInstruction;
using vantor::disasm::Mnemonic;

struct Listed {
  std::uint64_t address = 0;
  std::vector<std::uint8_t> bytes;
  std::vector<std::string> prefixes;  // lock, rep, data16, cs, rex.W, ...
  std::string mnemonic;
  std::string operands;
};

bool is_prefix_word(const std::string& word) {
  static const std::set<std::string> kWords = {
      "lock", "rep", "repz", "repe", "repnz", "repne", "data16", "addr32", "cs", "ds",
      "es",   "ss",  "fs",   "gs",   "notrack", "bnd", "rex", "xacquire", "xrelease"};
  return kWords.count(word) || word.rfind("rex.", 0) == 0;
}

// Parses "  addr:\tbytes\tmnemonic operands" lines of `objdump -d -z -M intel --insn-width=16`.
std::vector<Listed> run_objdump(const std::string& objdump, const std::string& binary) {
  std::vector<Listed> listed;
  const std::string command =
      objdump + " -d -z -M intel --insn-width=16 '" + binary + "' 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return listed;
  char buffer[4096];
  while (std::fgets(buffer, sizeof buffer, pipe)) {
    std::string line(buffer);
    if (!line.empty() && line.back() == '\n') line.pop_back();
    const std::size_t colon = line.find(":\t");
    if (colon == std::string::npos) continue;
    const std::size_t tab = line.find('\t', colon + 2);
    if (tab == std::string::npos) continue;
    Listed item;
    item.address = std::strtoull(line.c_str(), nullptr, 16);
    std::istringstream bytes(line.substr(colon + 2, tab - colon - 2));
    std::string hex;
    while (bytes >> hex) item.bytes.push_back(static_cast<std::uint8_t>(std::strtoul(hex.c_str(), nullptr, 16)));
    std::string text = line.substr(tab + 1);
    const std::size_t comment = text.find("  #");
    if (comment != std::string::npos) text.erase(comment);
    // Symbol names after branch targets ("<name+0x10>") are not operands.
    for (std::size_t open; (open = text.find(" <")) != std::string::npos;)
      text.erase(open, text.find('>', open) == std::string::npos ? std::string::npos
                                                                 : text.find('>', open) + 1 - open);
    std::istringstream words(text);
    std::string word;
    while (words >> word && is_prefix_word(word)) item.prefixes.push_back(word);
    item.mnemonic = word;
    std::getline(words, item.operands);
    item.operands.erase(0, item.operands.find_first_not_of(' '));
    while (!item.operands.empty() && item.operands.back() == ' ') item.operands.pop_back();
    // Bytes objdump could not make an instruction of (".byte", often data in the code).
    if (item.bytes.empty() || item.mnemonic.empty() || item.mnemonic == ".byte") continue;
    listed.push_back(std::move(item));
  }
  pclose(pipe);
  return listed;
}

bool has_prefix(const Listed& item, const char* prefix) {
  return std::find(item.prefixes.begin(), item.prefixes.end(), prefix) != item.prefixes.end();
}

// objdump's name for an instruction, folded onto the family names used below.
std::string objdump_family(const Listed& item) {
  std::string m = item.mnemonic;
  // Moves with a segment register or a 64-bit absolute address have no operand the
  // pattern notation can name; they stay outside the table.
  if (m == "mov" || m == "movabs") {
    static const char* kSegmentRegisters[] = {"cs", "ds", "es", "fs", "gs", "ss"};
    for (const char* reg : kSegmentRegisters) {
      const std::size_t at = item.operands.find(reg);
      const std::size_t end = at + 2;
      if (at != std::string::npos && (at == 0 || item.operands[at - 1] == ',') &&
          (end == item.operands.size() || item.operands[end] == ','))
        return "mov sreg";
    }
    if (item.bytes[0] >= 0xA0 && item.bytes[0] <= 0xA3) return "mov moffs";
    if (item.bytes.size() > 1 && item.bytes[0] >> 4 == 4 && item.bytes[1] >= 0xA0 && item.bytes[1] <= 0xA3)
      return "mov moffs";
  }
  if (m == "movabs") return "mov";
  if (m == "movsxd") return "movsx";
  if (m == "xchg" && item.operands == "ax,ax") return "nop";
  if (m == "fnstsw" || m == "fstsw") return "fnstsw";
  if (m == "fninit") return "finit";
  if (m == "pushfq") return "pushf";
  if (m == "popfq") return "popf";
  if (m == "sal") return "shl";
  if (m == "ret" || m == "nop") return m;
  static const char* kPredicates[] = {"eq", "lt", "le", "unord", "neq", "nlt", "nle", "ord"};
  if (m.size() > 5 && m.rfind("cmp", 0) == 0 && m.compare(m.size() - 2, 2, "ps") * m.compare(m.size() - 2, 2, "pd") == 0)
    for (const char* p : kPredicates)
      if (m == std::string("cmp") + p + m.substr(m.size() - 2)) return "cmp" + m.substr(m.size() - 2);
  if (m == "movs" || m == "stos" || m == "lods" || m == "scas" || m == "cmps") {
    if (has_prefix(item, "rep") || has_prefix(item, "repz") || has_prefix(item, "repe"))
      return m == "cmps" ? "repe_cmps" : "rep_" + m;
    if (has_prefix(item, "repnz") || has_prefix(item, "repne")) return "repne_" + m;
  }
  return m;
}

// The family of one of our mnemonics: the name without its width suffixes, with our
// spellings of x87 and conversion names folded onto objdump's.
std::string our_family(Mnemonic mnemonic) {
  std::string name = vantor::disasm::mnemonic_info(mnemonic).name;
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  static const std::map<std::string, std::string> kSpelling = {
      {"jmpi", "jmp"},          {"cti", "cli"},           {"fstswax", "fnstsw"},
      {"popfq", "popf"},        {"prefetchta", "prefetchnta"}, {"wait", "fwait"},
      {"qfld", "fld"},          {"cvtsq2sd", "cvtsi2sd"}, {"cvtsq2ss", "cvtsi2ss"},
      {"cvtsd2sq", "cvtsd2si"}, {"cvttsd2sq", "cvttsd2si"}, {"cvtss2sq", "cvtss2si"},
      {"cvttss2sq", "cvttss2si"}, {"sal", "shl"}};
  for (;;) {
    const std::size_t n = name.size();
    if (n > 2 && name[n - 2] == '_' && (name[n - 1] == 'b' || name[n - 1] == 'h' ||
                                        name[n - 1] == 'q' || name[n - 1] == 's'))
      name.resize(n - 2);
    else if (n > 4 && name[n - 4] == '_' && std::isdigit(static_cast<unsigned char>(name[n - 3])) &&
             name[n - 2] == '_')
      name.resize(n - 4);
    else
      break;
  }
  if (name.size() > 2 && name[0] == 'd' && name[1] == 'f') name.erase(0, 1);
  const auto spelled = kSpelling.find(name);
  return spelled == kSpelling.end() ? name : spelled->second;
}

// Families some row can actually produce.
std::set<std::string> covered_families() {
  std::set<std::string> families;
  for (const auto& row : vantor::disasm::pattern_table()) {
    if (row.mnemonic == Mnemonic::NONE) break;
    if (vantor::disasm::is_unmatchable(row.bits)) continue;
    families.insert(our_family(row.mnemonic));
  }
  families.insert("int3");
  return families;
}
std::string hex_bytes(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  char piece[4];
  for (const std::uint8_t b : bytes) {
    std::snprintf(piece, sizeof piece, "%s%02x", text.empty() ? "" : " ", b);
    text += piece;
  }
  return text;
}

std::vector<std::string> words_of(const std::string& text);

bool is_byte_register(const std::string& word) {
  static const std::set<std::string> kNames = {"al", "cl", "dl", "bl", "ah", "ch", "dh", "bh",
                                               "spl", "bpl", "sil", "dil"};
  return kNames.count(word) || (word.size() > 2 && word[0] == 'r' && word.back() == 'b' &&
                                std::isdigit(static_cast<unsigned char>(word[1])));
}

// The kinds of instruction the decoder leaves undecoded on purpose, named; empty for any
// other. Only consulted for instructions the two disagree on.
std::string design_class(const Listed& item, const std::string& family) {
  const std::vector<std::uint8_t>& bytes = item.bytes;
  std::size_t at = 0;
  bool lock = false, segment = false, address_size = false;
  for (; at < bytes.size(); ++at) {
    const std::uint8_t b = bytes[at];
    if (b == 0xF0) lock = true;
    else if (b == 0x26 || b == 0x2E || b == 0x36 || b == 0x3E || b == 0x64 || b == 0x65) segment = true;
    else if (b == 0x67) address_size = true;
    else if (b != 0x66 && b != 0xF2 && b != 0xF3) break;
  }
  const bool rex = at < bytes.size() && bytes[at] >> 4 == 4;
  if (lock && rex && (bytes[at] & 3)) return "lock prefix before a REX with X or B (that REX is not read)";
  if (lock) return "lock prefix on a form without a locked row";
  // No compiler puts a REX on a short jump or an INT n; objdump meets these where its
  // linear sweep reads data between routines.
  if (rex && at + 1 < bytes.size() && ((bytes[at + 1] >> 4) == 7 || bytes[at + 1] == 0xCD))
    return "REX before a short jump or INT n (data read as code)";
  if (segment) return "segment override (only loads through GS have rows)";
  if (address_size) return "address-size prefix (32-bit address registers have no names)";
  if (bytes[0] == 0x9B && bytes.size() > 1) return "wait that objdump joins to the x87 instruction after it";
  if (item.operands.find("FWORD") != std::string::npos) return "far jump or call through memory";
  const std::vector<std::string> words = words_of(item.operands);
  if (family[0] == 'f') {
    for (const std::string& word : words)
      if (word == "st") return "x87 stack-register form (never decoded)";
    if (item.operands.find("PTR") != std::string::npos) return "x87 memory operand of a size without a row";
  }
  if (rex && (bytes[at] & 8))
    for (const std::string& word : words)
      if (is_byte_register(word) || word == "BYTE") return "byte operation with a redundant REX.W";
  if (family == "rep_movs" && std::find(bytes.begin(), bytes.begin() + static_cast<long>(at), 0x66) != bytes.begin() + static_cast<long>(at))
    return "repeated word move (the mnemonic table has no REP_MOVS_H)";
  return "";
}

// ---- operands -------------------------------------------------------------------------
// Registers are compared in order of appearance, by their 64-bit names; displacements and
// the low byte of immediates by value.

std::string canonical_register(const std::string& name) {
  static const std::map<std::string, std::string> kNames = [] {
    std::map<std::string, std::string> names;
    const char* const rows[][5] = {
        {"RAX", "rax", "eax", "ax", "al"},   {"RCX", "rcx", "ecx", "cx", "cl"},
        {"RDX", "rdx", "edx", "dx", "dl"},   {"RBX", "rbx", "ebx", "bx", "bl"},
        {"RSP", "rsp", "esp", "sp", "spl"},  {"RBP", "rbp", "ebp", "bp", "bpl"},
        {"RSI", "rsi", "esi", "si", "sil"},  {"RDI", "rdi", "edi", "di", "dil"}};
    for (const auto& row : rows)
      for (int i = 1; i < 5; ++i) names[row[i]] = row[0];
    names["ah"] = "RSP";  // without REX, byte registers 4-7 are AH, CH, DH, BH
    names["ch"] = "RBP";
    names["dh"] = "RSI";
    names["bh"] = "RDI";
    char lower[8], upper[8];
    for (int n = 8; n < 16; ++n) {
      std::snprintf(upper, sizeof upper, "R%d", n);
      for (const char* suffix : {"", "d", "w", "b", "l"}) {
        std::snprintf(lower, sizeof lower, "r%d%s", n, suffix);
        names[lower] = upper;
      }
    }
    for (int n = 0; n < 16; ++n) {
      std::snprintf(lower, sizeof lower, "xmm%d", n);
      std::snprintf(upper, sizeof upper, "XMM%d", n);
      names[lower] = upper;
    }
    names["rip"] = "RIP";
    return names;
  }();
  const auto found = kNames.find(name);
  return found == kNames.end() ? "" : found->second;
}

std::vector<std::string> words_of(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  for (const char c : text + " ") {
    if (std::isalnum(static_cast<unsigned char>(c))) {
      word += c;
    } else {
      if (!word.empty()) words.push_back(word);
      word.clear();
    }
  }
  return words;
}

std::vector<std::string> objdump_registers(const std::string& operands) {
  std::vector<std::string> registers;
  for (const std::string& word : words_of(operands)) {
    const std::string name = canonical_register(word);
    if (!name.empty()) registers.push_back(name);
  }
  return registers;
}

std::vector<std::string> our_registers(const std::string& text) {
  std::string operands = text.substr(std::min(text.size(), text.find(' ')));
  // The frame-relative form stands for RBP at the end of the brackets (twice over when
  // both base and index were RBP).
  for (std::size_t frame; (frame = operands.find("]$")) != std::string::npos;)
    operands.replace(frame, 2, "+RBP]");
  std::vector<std::string> registers;
  for (const std::string& word : words_of(operands)) {
    if (!std::isupper(static_cast<unsigned char>(word[0]))) continue;  // hex digits, cl
    std::string lower = word;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (canonical_register(lower) == word) registers.push_back(word);
  }
  return registers;
}

// The displacement objdump shows inside brackets, or after a segment with no brackets.
bool objdump_displacement(const std::string& operands, std::uint32_t& displacement) {
  const std::size_t close = operands.find(']');
  std::size_t end = close;
  if (close == std::string::npos) {
    const std::size_t colon = operands.find(":0x");
    if (colon == std::string::npos) return false;
    displacement = static_cast<std::uint32_t>(std::strtoull(operands.c_str() + colon + 1, nullptr, 16));
    return true;
  }
  const std::size_t open = operands.rfind('[', close);
  const std::size_t sign = operands.find_last_of("+-", end);
  if (sign == std::string::npos || sign < open || operands.compare(sign + 1, 2, "0x") != 0) {
    displacement = 0;
    return true;
  }
  const std::uint64_t value = std::strtoull(operands.c_str() + sign + 1, nullptr, 16);
  displacement = static_cast<std::uint32_t>(operands[sign] == '-' ? 0 - value : value);
  return true;
}

bool objdump_immediate(const std::string& operands, std::uint64_t& value) {
  const std::size_t comma = operands.rfind(',');
  const std::string last = operands.substr(comma == std::string::npos ? 0 : comma + 1);
  if (last.rfind("0x", 0) != 0) return false;
  value = std::strtoull(last.c_str(), nullptr, 16);
  return true;
}

std::size_t opcode_offset(const std::vector<std::uint8_t>& bytes) {
  std::size_t at = 0;
  while (at < bytes.size() && (bytes[at] == 0x66 || bytes[at] == 0x67 || bytes[at] == 0xF2 ||
                               bytes[at] == 0xF3 || bytes[at] == 0xF0 || bytes[at] == 0x65))
    ++at;
  if (at < bytes.size() && bytes[at] >> 4 == 4) ++at;
  return at;
}

// Empty when the operands agree, else what differs.
std::string operand_difference(const Listed& item, const std::string& family,
                               const DecodedInstruction& ours, const std::string& our_text) {
  // Operands this notation leaves implicit, and x87 stack registers, are not compared.
  static const std::set<std::string> kImplicit = {
      "movs", "stos", "lods", "scas", "cmps", "rep_movs", "rep_stos", "repe_cmps", "repne_scas"};
  if (kImplicit.count(family) || family[0] == 'f') return "";
  if (item.mnemonic == "xchg" && family == "nop") return "";  // 66 90 names no operands
  std::vector<std::string> theirs = objdump_registers(item.operands);
  const std::size_t op = opcode_offset(item.bytes);
  const std::uint8_t opcode = op < item.bytes.size() ? item.bytes[op] : 0;
  const bool rex_b = op > 0 && item.bytes[op - 1] >> 4 == 4 && (item.bytes[op - 1] & 1);
  const bool accumulator_immediate = opcode < 0x40 && (opcode & 7) >= 4 && (opcode & 7) <= 5;
  const bool accumulator_exchange = (opcode >= 0x91 && opcode <= 0x97) || (opcode == 0x90 && rex_b);
  if ((accumulator_immediate || opcode == 0xA8 || opcode == 0xA9) && !theirs.empty())
    theirs.erase(theirs.begin());
  if (accumulator_exchange)
    for (auto it = theirs.begin(); it != theirs.end(); ++it)
      if (*it == "RAX") {
        theirs.erase(it);
        break;
      }
  if (ours.by_cl && !theirs.empty() && theirs.back() == "RCX") theirs.pop_back();
  const std::vector<std::string> mine = our_registers(our_text);
  if (mine != theirs) return "registers";
  const bool memory = ours.first.kind == vantor::disasm::OperandKind::memory ||
                      ours.second.kind == vantor::disasm::OperandKind::memory;
  std::uint32_t displacement = 0;
  if (memory && objdump_displacement(item.operands, displacement) &&
      displacement != ours.memory.displacement)
    return "displacement";
  std::uint64_t immediate = 0;
  if (ours.has_immediate && !ours.by_one && objdump_immediate(item.operands, immediate) &&
      (immediate & 0xFF) != (ours.immediate & 0xFF))
    return "immediate";
  return "";
}

struct Disagreement {
  std::size_t count = 0;
  std::vector<std::string> examples;
};

struct Report {
  std::size_t listed = 0, covered = 0, length_ok = 0, family_ok = 0, by_design = 0,
              unexplained = 0, branches = 0, branch_ok = 0, operands_checked = 0,
              operands_ok = 0, vex = 0, uncovered = 0, uncovered_decoded = 0;
  std::map<std::string, Disagreement> classes;

  void note(const std::string& key, const std::string& example, std::size_t show) {
    Disagreement& d = classes[key];
    ++d.count;
    if (d.examples.size() < show) d.examples.push_back(example);
  }
};

double percent(std::size_t part, std::size_t whole) {
  return whole ? 100.0 * static_cast<double>(part) / static_cast<double>(whole) : 100.0;
}

Report compare(const std::vector<Listed>& listed, const std::set<std::string>& families,
               std::size_t show) {
  Report report;
  report.listed = listed.size();
  for (std::size_t i = 0; i < listed.size(); ++i) {
    const Listed& item = listed[i];
    std::uint8_t window[vantor::disasm::kWindowSize] = {};
    std::size_t filled = 0;
    for (std::size_t j = i; j < listed.size() && filled < sizeof window; ++j) {
      if (j > i && listed[j].address != listed[j - 1].address + listed[j - 1].bytes.size()) break;
      for (const std::uint8_t b : listed[j].bytes)
        if (filled < sizeof window) window[filled++] = b;
    }
    const DecodedInstruction ours = vantor::disasm::decode_instruction(window);
    // At the end of a section the window runs out; what the decoder makes of the zeros
    // that fill it says nothing.
    if (ours.length > filled) continue;
    std::string our_text;
    vantor::disasm::format_instruction(ours, item.address, window, our_text);
    const std::string theirs = objdump_family(item);
    const std::string mine = ours.breakpoint ? "int3" : ours.matched() ? our_family(ours.mnemonic) : "db";
    const std::string example = hex_bytes(item.bytes) + "  |  " + item.mnemonic + " " +
                                item.operands + "  |  " + our_text;
    const bool vex = (item.bytes[0] == 0xC4 || item.bytes[0] == 0xC5) && item.mnemonic[0] == 'v';
    if (vex) ++report.vex;
    if (!families.count(theirs)) {
      ++report.uncovered;
      if (ours.matched() && !vex) {
        const std::string design = design_class(item, theirs);
        if (!design.empty()) {
          ++report.by_design;
          report.note("by design, " + design + ": " + theirs + " as " + mine, example, show);
        } else {
          ++report.uncovered_decoded;
          report.note("decoded an instruction outside the table: " + theirs + " as " + mine,
                      example, show);
        }
      }
      continue;
    }
    ++report.covered;
    const bool length_ok = ours.length == item.bytes.size();
    const bool family_ok = mine == theirs;
    report.length_ok += length_ok;
    report.family_ok += family_ok;
    if (ours.has_branch && length_ok) {
      ++report.branches;
      const std::uint64_t target = item.address + ours.length +
                                   static_cast<std::uint64_t>(ours.branch_displacement);
      if (std::strtoull(item.operands.c_str(), nullptr, 16) == target) ++report.branch_ok;
      else report.note("branch target differs: " + theirs, example, show);
    }
    if (length_ok && family_ok) {
      ++report.operands_checked;
      const std::string difference = operand_difference(item, theirs, ours, our_text);
      if (difference.empty()) ++report.operands_ok;
      else report.note(difference + " differ: " + theirs, example, show);
    }
    if (!length_ok || !family_ok) {
      const std::string design = design_class(item, theirs);
      if (!design.empty()) {
        ++report.by_design;
        report.note("by design, " + design + ": " + theirs + " as " + mine, example, show);
      } else {
        ++report.unexplained;
        report.note(std::string(length_ok ? "family" : "length") + " differs: " + theirs + " as " + mine,
                    example, show);
      }
    }
  }
  return report;
}

// The decoder reads 64-bit code only; a 32-bit image (a debuggee built to test the
// refusal of such programs) would be compared in the wrong mode.
bool is_x64_image(const std::string& binary) {
  FILE* f = std::fopen(binary.c_str(), "rb");
  if (!f) return false;
  unsigned char header[4096] = {};
  const std::size_t got = std::fread(header, 1, sizeof header, f);
  std::fclose(f);
  if (got < 0x40 || header[0] != 'M' || header[1] != 'Z') return false;
  const std::size_t pe = header[0x3c] | (header[0x3d] << 8);
  if (pe + 6 > got || header[pe] != 'P' || header[pe + 1] != 'E') return false;
  return (header[pe + 4] | (header[pe + 5] << 8)) == 0x8664;
}

}  // namespace

int main(int argc, char** argv) {
  std::string objdump = "objdump";
  std::size_t show = 2;
  std::vector<std::string> binaries;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--objdump" && i + 1 < argc) objdump = argv[++i];
    else if (arg == "--show" && i + 1 < argc) show = static_cast<std::size_t>(std::atoi(argv[++i]));
    else if (std::filesystem::is_directory(arg)) {
      std::vector<std::string> found;
      for (const auto& entry : std::filesystem::recursive_directory_iterator(arg)) {
        const std::string extension = entry.path().extension().string();
        if (extension == ".exe" || extension == ".dll") found.push_back(entry.path().string());
      }
      std::sort(found.begin(), found.end());
      binaries.insert(binaries.end(), found.begin(), found.end());
    } else {
      binaries.push_back(arg);
    }
  }
  const std::set<std::string> families = covered_families();
  int checked = 0;
  bool failed = false;
  for (const std::string& binary : binaries) {
    if (FILE* f = std::fopen(binary.c_str(), "rb")) {
      std::fclose(f);
    } else {
      std::printf("%s: not found, skipped\n", binary.c_str());
      continue;
    }
    if (!is_x64_image(binary)) {
      std::printf("%s: not an x86-64 image, skipped\n", binary.c_str());
      continue;
    }
    const std::vector<Listed> listed = run_objdump(objdump, binary);
    if (listed.empty()) {
      std::printf("%s: objdump listed no instructions, skipped\n", binary.c_str());
      continue;
    }
    ++checked;
    const Report r = compare(listed, families, show);
    std::printf("%s\n  %zu instructions, %zu in covered families, %zu outside (%zu VEX)\n",
                binary.c_str(), r.listed, r.covered, r.uncovered, r.vex);
    std::printf("  length agreement %.3f%%, family agreement %.3f%%; %zu disagreements by design, "
                "%zu unexplained (length agreement %.3f%% without the by-design ones)\n",
                percent(r.length_ok, r.covered), percent(r.family_ok, r.covered), r.by_design,
                r.unexplained, percent(r.covered - r.by_design - r.unexplained, r.covered - r.by_design));
    std::printf("  branch targets %zu/%zu\n", r.branch_ok, r.branches);
    std::printf("  operand agreement %.3f%% of %zu\n", percent(r.operands_ok, r.operands_checked),
                r.operands_checked);
    std::printf("  outside the table but decoded: %zu\n", r.uncovered_decoded);
    std::vector<std::pair<std::string, Disagreement>> classes(r.classes.begin(), r.classes.end());
    std::sort(classes.begin(), classes.end(),
              [](const auto& a, const auto& b) { return a.second.count > b.second.count; });
    for (const auto& [key, d] : classes) {
      std::printf("    %6zu  %s\n", d.count, key.c_str());
      for (const std::string& example : d.examples) std::printf("              %s\n", example.c_str());
    }
    if (r.unexplained != 0 || r.branch_ok != r.branches || r.operands_ok != r.operands_checked ||
        r.uncovered_decoded != 0) {
      std::printf("  FAILED: an unexplained disagreement, branch target or operand, or a decode "
                  "outside the table\n");
      failed = true;
    }
  }
  if (checked == 0) {
    std::printf("no binary to compare with\n");
    return 77;
  }
  return failed ? 1 : 0;
}
