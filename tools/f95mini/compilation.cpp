#include "f95mini/compilation.h"

#include <cctype>
#include <cstring>

namespace f95mini {

std::int64_t Compilation::static_alloc(std::int64_t size, int align) {
  std::int64_t at = static_cast<std::int64_t>(static_data.size());
  if (align > 1) at = (at + align - 1) / align * align;
  static_data.resize(static_cast<size_t>(at + size), 0);
  return at;
}

void Compilation::static_init(std::int64_t offset, const std::vector<std::uint8_t>& bytes) {
  std::memcpy(static_data.data() + offset, bytes.data(), bytes.size());
}

ModuleInfo* Compilation::find_module(const std::string& name) {
  for (auto& m : modules)
    if (m->name == name) return m.get();
  return nullptr;
}

CommonInfo& Compilation::common(const std::string& name) {
  auto it = commons.find(name);
  if (it != commons.end()) return it->second;
  CommonInfo& c = commons[name];
  c.name = name;
  c.symbol = "__common_" + (name.empty() ? std::string("_BLANK") : name);
  return c;
}

std::string Compilation::new_label(const char* prefix) { return prefix + std::to_string(++label_counter_); }

std::string Compilation::string_literal(const std::string& s, bool nul_terminated) {
  std::string key = s + (nul_terminated ? std::string(1, '\0') + "z" : std::string(1, '\0') + "n");
  auto it = strings_.find(key);
  if (it != strings_.end()) return it->second;
  std::string label = new_label(".LS");
  strings_[key] = label;
  rdata += label + ":\n";
  std::vector<std::uint8_t> bytes(s.begin(), s.end());
  if (nul_terminated || bytes.empty()) bytes.push_back(0);
  write_bytes(bytes, rdata);
  return label;
}

std::string Compilation::real_literal(double v, int kind) {
  std::uint64_t bits = 0;
  if (kind == 4) {
    float f = static_cast<float>(v);
    std::uint32_t b;
    std::memcpy(&b, &f, 4);
    bits = b;
  } else {
    std::memcpy(&bits, &v, 8);
  }
  auto key = std::make_pair(bits, kind);
  auto it = reals_.find(key);
  if (it != reals_.end()) return it->second;
  std::string label = new_label(".LR");
  reals_[key] = label;
  rdata += "\t.p2align 3\n" + label + ":\n\t.quad " + std::to_string(bits) + "\n";
  return label;
}

std::string Compilation::mask_literal(std::uint64_t lo, std::uint64_t hi) {
  std::string label = new_label(".LM");
  rdata += "\t.p2align 4\n" + label + ":\n\t.quad " + std::to_string(lo) + ", " + std::to_string(hi) + "\n";
  return label;
}

}  // namespace f95mini
