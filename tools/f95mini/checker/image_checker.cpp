#include "f95mini/checker/image_checker.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>

namespace f95check {
namespace {

struct Section {
  std::string name;
  std::uint32_t rva = 0, vsize = 0, raw = 0, raw_size = 0, flags = 0;
};

class Image {
 public:
  explicit Image(const std::vector<std::uint8_t>& f) : f_(f) {}

  bool parse(std::vector<std::string>& errors) {
    if (f_.size() < 64 || f_[0] != 'M' || f_[1] != 'Z') return bad(errors, "no MZ header");
    std::uint32_t pe = le32(60);
    if (pe + 24 > f_.size() || std::memcmp(&f_[pe], "PE\0\0", 4) != 0) return bad(errors, "no PE signature");
    if (le16(pe + 4) != 0x8664) return bad(errors, "machine is not x86-64");
    std::uint16_t count = le16(pe + 6), opt_size = le16(pe + 20);
    std::size_t opt = pe + 24;
    if (le16(opt) != 0x20b) return bad(errors, "optional header is not PE32+");
    size_of_image_ = le32(opt + 56);
    size_of_headers_ = le32(opt + 60);
    for (std::size_t i = 0, at = opt + opt_size; i < count; ++i, at += 40) {
      if (at + 40 > f_.size()) return bad(errors, "section table runs past the file");
      Section s;
      for (int k = 0; k < 8 && f_[at + k]; ++k) s.name += static_cast<char>(f_[at + k]);
      s.vsize = le32(at + 8);
      s.rva = le32(at + 12);
      s.raw_size = le32(at + 16);
      s.raw = le32(at + 20);
      s.flags = le32(at + 36);
      sections_.push_back(s);
    }
    return true;
  }

  // File offset of an RVA inside a section's initialised data, or -1.
  long long offset(std::uint64_t rva) const {
    if (rva < size_of_headers_) return static_cast<long long>(rva);  // the headers are mapped as they are
    for (const auto& s : sections_)
      if (rva >= s.rva && rva < s.rva + std::min(s.vsize ? s.vsize : s.raw_size, s.raw_size))
        return static_cast<long long>(rva - s.rva + s.raw);
    return -1;
  }
  bool executable(std::uint64_t rva) const {
    for (const auto& s : sections_)
      if (rva >= s.rva && rva < s.rva + s.vsize) return (s.flags & 0x20000000u) != 0;
    return false;
  }
  std::uint16_t le16(std::size_t at) const { return at + 2 <= f_.size() ? static_cast<std::uint16_t>(f_[at] | f_[at + 1] << 8) : 0; }
  std::uint32_t le32(std::size_t at) const {
    return at + 4 <= f_.size() ? static_cast<std::uint32_t>(f_[at] | f_[at + 1] << 8 | f_[at + 2] << 16) | static_cast<std::uint32_t>(f_[at + 3]) << 24 : 0;
  }
  std::uint64_t le64(std::size_t at) const { return le32(at) | static_cast<std::uint64_t>(le32(at + 4)) << 32; }
  std::size_t size() const { return f_.size(); }
  std::uint8_t byte(std::size_t at) const { return at < f_.size() ? f_[at] : 0; }

 private:
  static bool bad(std::vector<std::string>& errors, const std::string& e) {
    errors.push_back(e);
    return false;
  }
  const std::vector<std::uint8_t>& f_;
  std::vector<Section> sections_;
  std::uint32_t size_of_image_ = 0;
  std::uint32_t size_of_headers_ = 0;
};

// A cursor over the file that records the first overrun as an error.
class Reader {
 public:
  Reader(const Image& img, std::size_t at, std::vector<std::string>& errors, std::string where)
      : img_(img), at_(at), errors_(errors), where_(std::move(where)) {}
  bool fits(std::size_t n) {
    if (at_ + n <= img_.size()) return true;
    if (!overrun_) errors_.push_back(where_ + ": runs past the end of the file");
    overrun_ = true;
    return false;
  }
  std::uint8_t u8() { return fits(1) ? img_.byte(at_++) : 0; }
  std::uint32_t u32() {
    if (!fits(4)) return 0;
    std::uint32_t v = img_.le32(at_);
    at_ += 4;
    return v;
  }
  std::uint64_t u64() {
    if (!fits(8)) return 0;
    std::uint64_t v = img_.le64(at_);
    at_ += 8;
    return v;
  }
  std::string cstr(std::size_t max) {
    std::string s;
    while (fits(1)) {
      std::uint8_t c = img_.byte(at_++);
      if (!c) return s;
      s += static_cast<char>(c);
      if (s.size() > max) {
        errors_.push_back(where_ + ": name longer than " + std::to_string(max) + " characters");
        overrun_ = true;
        return s;
      }
    }
    return s;
  }
  void skip(std::size_t n) {
    if (fits(n)) at_ += n;
  }
  std::size_t at() const { return at_; }
  bool failed() const { return overrun_; }

 private:
  const Image& img_;
  std::size_t at_;
  std::vector<std::string>& errors_;
  std::string where_;
  bool overrun_ = false;
};

constexpr std::uint32_t kTypeCodeCount = 17;
const std::set<std::uint32_t> kVariableAddressTypes = {1, 3, 4, 5, 7, 8, 9, 11, 12};
const std::set<std::uint32_t> kBoundAddressTypes = {0, 1, 3, 5, 7, 9};

struct BlockCheck {
  std::set<std::uint32_t> type_keys, common_keys, wanted_type_keys, address_types;
  int variables = 0;
};

void check_variable(Reader& r, const std::string& where, bool component, BlockCheck& bc, std::vector<std::string>& errors) {
  r.u32();
  std::uint32_t word = r.u32();
  r.u64();
  std::uint32_t size = r.u32();
  std::uint32_t type_key = r.u32(), common_key = r.u32();
  r.u32();
  std::uint32_t marker = r.u32();
  std::string name = r.cstr(255);
  if (r.failed()) return;
  std::string w = where + " variable " + name;
  std::uint32_t at = word & 0xF, code = (word >> 4) & 0x1F;
  if (name.empty()) errors.push_back(where + ": a variable without a name");
  if (marker != 0) errors.push_back(w + ": format marker " + std::to_string(marker));
  if (word & ~0x3FFFu) errors.push_back(w + ": unknown bits in the descriptor word");
  if (component ? at != 0 : !kVariableAddressTypes.count(at))
    errors.push_back(w + ": address type " + std::to_string(at));
  if (code >= kTypeCodeCount) errors.push_back(w + ": type code " + std::to_string(code));
  if (code == 14) bc.wanted_type_keys.insert(type_key);
  if (!component) bc.address_types.insert(at);
  if (at == 8 && !bc.common_keys.count(common_key)) errors.push_back(w + ": COMMON key " + std::to_string(common_key) + " has no block record before it");
  if (at == 4) r.skip(size);
  if (word & (1u << 9)) {
    std::uint32_t rank_word = r.u32(), mask = r.u32();
    bool dynamic = (rank_word & 0x80000000u) != 0;
    std::uint32_t rank = rank_word & 0xF;
    if (rank < 1 || rank > 7) errors.push_back(w + ": rank " + std::to_string(rank));
    if (!dynamic && mask) errors.push_back(w + ": a static descriptor with variable bounds");
    for (std::uint32_t d = 0; d < rank && !r.failed(); ++d) {
      for (int k = 0; k < 3; ++k) {
        if (dynamic && (mask >> (3 * d + k) & 1)) {
          std::uint64_t t = r.u64();
          if (!kBoundAddressTypes.count(static_cast<std::uint32_t>(t & 0xFF)) || (t >> 8))
            errors.push_back(w + ": bound address type " + std::to_string(t));
        }
        r.u64();
      }
      r.u64();
    }
  }
  ++bc.variables;
}

}  // namespace

CheckResult check_image(const std::vector<std::uint8_t>& file) {
  CheckResult res;
  auto& errors = res.errors;
  Image img(file);
  if (!img.parse(errors)) return res;
  std::uint32_t map_rva = img.le32(28);
  if (static_cast<std::int32_t>(map_rva) < 1) {
    errors.push_back("the DOS-header word at offset 28 does not locate a routine map");
    return res;
  }
  long long map_at = img.offset(map_rva);
  if (map_at < 0) {
    errors.push_back("the routine map's address is outside every section");
    return res;
  }
  Reader m(img, static_cast<std::size_t>(map_at), errors, "routine map");
  std::uint32_t magic = m.u32();
  if (std::memcmp(&magic, "QUOR", 4) != 0) {
    errors.push_back("the routine map does not start with QUOR");
    return res;
  }
  std::uint32_t version = m.u32();
  if (version != 2) errors.push_back("routine map version " + std::to_string(version));
  std::set<std::string> names;
  for (;;) {
    std::string name = m.cstr(511);
    if (m.failed() || name.empty()) break;
    std::uint64_t flags = m.u64(), start = m.u64(), end = m.u64(), block = m.u64();
    m.u32();
    std::int32_t frame_offset = static_cast<std::int32_t>(m.u32());
    if (m.failed()) break;
    ++res.routines;
    res.routine_names.push_back(name);
    names.insert(name);
    std::string w = "routine " + name;
    if (!(flags & 1)) errors.push_back(w + ": addresses are not marked relative");
    if (frame_offset != 32) errors.push_back(w + ": frame offset " + std::to_string(frame_offset));
    if (end < start || !img.executable(start) || !img.executable(end))
      errors.push_back(w + ": code range is not inside executable code");
    long long code = img.offset(start);
    if (code < 0) continue;
    // Prologue: an optional line-start byte, then sub rsp,imm8 / sub rsp,imm32 /
    // mov rax,imm64 followed by call [rip+disp32].
    std::size_t p = static_cast<std::size_t>(code);
    if (img.byte(p) == 0x90) ++p;
    bool prologue = (img.byte(p) == 0x48 && img.byte(p + 1) == 0x83 && img.byte(p + 2) == 0xEC) ||
                    (img.byte(p) == 0x48 && img.byte(p + 1) == 0x81 && img.byte(p + 2) == 0xEC) ||
                    (img.byte(p) == 0x48 && img.byte(p + 1) == 0xB8 && img.byte(p + 10) == 0xFF && img.byte(p + 11) == 0x15);
    if (!prologue) errors.push_back(w + ": prologue is not one of the documented forms");
    if (!block) continue;
    long long b = img.offset(block);
    if (b < 0) {
      errors.push_back(w + ": debug block outside every section");
      continue;
    }
    ++res.debug_blocks;
    Reader r(img, static_cast<std::size_t>(b), errors, w + " debug block");
    r.u32();  // lead word
    std::uint32_t rhub = r.u32();
    if (std::memcmp(&rhub, "RHUB", 4) != 0) {
      errors.push_back(w + ": debug block magic is not RHUB");
      continue;
    }
    std::uint32_t distance = r.u32();
    r.u32();
    BlockCheck bc;
    bool ended = false;
    while (!r.failed() && !ended) {
      std::size_t tag_at = r.at();
      std::uint8_t tag = r.u8();
      std::uint32_t key = static_cast<std::uint32_t>(tag_at + 1 - static_cast<std::size_t>(b) - 4);
      switch (tag) {
        case 0: check_variable(r, w, false, bc, errors); break;
        case 1: {
          if (r.u32() != key) errors.push_back(w + ": type record key differs from its position");
          std::string tname = r.cstr(255);
          std::uint32_t members = r.u32();
          for (std::uint32_t i = 0; i < members && !r.failed(); ++i) check_variable(r, w + " type " + tname, true, bc, errors);
          bc.type_keys.insert(key);
          ++res.derived_types;
          break;
        }
        case 3:
          if (r.u32() != key) errors.push_back(w + ": COMMON record key differs from its position");
          r.cstr(255);
          bc.common_keys.insert(key);
          ++res.common_blocks;
          break;
        case 2: {
          std::uint32_t barb = r.u32();
          if (std::memcmp(&barb, "BARB", 4) != 0) errors.push_back(w + ": symbol stream does not end with BARB");
          ended = true;
          break;
        }
        default:
          errors.push_back(w + ": unknown tag " + std::to_string(tag));
          ended = true;
      }
    }
    res.variables += bc.variables;
    res.address_types.insert(bc.address_types.begin(), bc.address_types.end());
    for (std::uint32_t k : bc.wanted_type_keys)
      if (!bc.type_keys.count(k)) errors.push_back(w + ": derived type key " + std::to_string(k) + " has no type record");
    if (r.failed()) continue;
    std::size_t lines_at = static_cast<std::size_t>(b) + 4 + distance;
    if (r.at() != lines_at) errors.push_back(w + ": the line table does not follow BARB at the recorded distance");
    Reader l(img, lines_at, errors, w + " line table");
    std::int32_t count = static_cast<std::int32_t>(l.u32());
    if (count < 0) errors.push_back(w + ": negative line count");
    std::int64_t previous = -1;
    for (std::int32_t i = 0; i < count && !l.failed(); ++i) {
      std::int32_t line = static_cast<std::int32_t>(l.u32());
      std::uint32_t off = l.u32();
      ++res.line_records;
      std::string lw = w + ": line record " + std::to_string(i) + " (line " + std::to_string(line) + ")";
      if (i == 0 && off != 0) errors.push_back(lw + " is not at offset 0");
      if (static_cast<std::int64_t>(off) <= previous) errors.push_back(lw + " is not in ascending offset order");
      previous = off;
      if (line < 1) errors.push_back(lw + " has no line number");
      if (start + off > end) errors.push_back(lw + " lies outside the routine");
      else if (img.byte(static_cast<std::size_t>(code) + off) != 0x90) errors.push_back(lw + " does not point at 0x90");
    }
    std::string source = l.cstr(1023);
    if (!l.failed() && source.empty()) errors.push_back(w + ": no source file name");
  }
  for (const char* needed : {"__get_common_info", "exit"})
    if (!names.count(needed)) errors.push_back(std::string("the map has no entry for ") + needed);
  return res;
}

}  // namespace f95check
