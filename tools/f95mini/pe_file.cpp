#include "f95mini/pe_file.h"

#include <fstream>
#include <iterator>

namespace f95mini {

std::uint32_t PeFile::u32(std::size_t at) const {
  if (at + 4 > bytes_.size()) return 0;
  return bytes_[at] | (bytes_[at + 1] << 8) | (bytes_[at + 2] << 16) | (static_cast<std::uint32_t>(bytes_[at + 3]) << 24);
}

std::uint16_t PeFile::u16(std::size_t at) const {
  if (at + 2 > bytes_.size()) return 0;
  return static_cast<std::uint16_t>(bytes_[at] | (bytes_[at + 1] << 8));
}

bool PeFile::load(const std::string& path, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = "cannot open " + path;
    return false;
  }
  bytes_.assign(std::istreambuf_iterator<char>(in), {});
  if (bytes_.size() < 64 || bytes_[0] != 'M' || bytes_[1] != 'Z') {
    *error = path + " is not a PE image";
    return false;
  }
  std::uint32_t pe = u32(60);
  if (pe + 24 > bytes_.size() || u32(pe) != 0x00004550u) {
    *error = path + " is not a PE image";
    return false;
  }
  std::uint16_t nsections = u16(pe + 6), opt_size = u16(pe + 20);
  std::size_t opt = pe + 24;
  if (u16(opt) != 0x20b) {
    *error = path + " is not a 64-bit image";
    return false;
  }
  export_rva_ = u32(opt + 112);  // data directory 0
  std::size_t sh = opt + opt_size;
  for (int i = 0; i < nsections; ++i, sh += 40) {
    if (sh + 40 > bytes_.size()) break;
    PeSection s;
    for (int k = 0; k < 8 && bytes_[sh + k]; ++k) s.name += static_cast<char>(bytes_[sh + k]);
    s.virtual_size = u32(sh + 8);
    s.virtual_address = u32(sh + 12);
    s.raw_size = u32(sh + 16);
    s.raw_offset = u32(sh + 20);
    sections_.push_back(s);
  }
  return true;
}

const PeSection* PeFile::section(const std::string& name) const {
  for (const auto& s : sections_)
    if (s.name == name) return &s;
  return nullptr;
}

std::optional<std::uint32_t> PeFile::file_offset(std::uint32_t rva) const {
  for (const auto& s : sections_)
    if (rva >= s.virtual_address && rva < s.virtual_address + std::max(s.virtual_size, s.raw_size))
      return rva - s.virtual_address + s.raw_offset;
  return std::nullopt;
}

std::vector<std::string> PeFile::export_names() const {
  std::vector<std::string> names;
  if (!export_rva_) return names;
  auto dir = file_offset(export_rva_);
  if (!dir) return names;
  std::uint32_t count = u32(*dir + 24);
  auto table = file_offset(u32(*dir + 32));
  if (!table) return names;
  for (std::uint32_t i = 0; i < count; ++i) {
    auto at = file_offset(u32(*table + 4 * i));
    if (!at) continue;
    std::string n;
    for (std::size_t k = *at; k < bytes_.size() && bytes_[k]; ++k) n += static_cast<char>(bytes_[k]);
    names.push_back(n);
  }
  return names;
}

bool write_map_word(const std::string& path, std::uint32_t value, std::string* error) {
  std::fstream f(path, std::ios::binary | std::ios::in | std::ios::out);
  if (!f) {
    *error = "cannot open " + path + " for writing";
    return false;
  }
  f.seekp(28);
  char b[4] = {static_cast<char>(value), static_cast<char>(value >> 8), static_cast<char>(value >> 16),
               static_cast<char>(value >> 24)};
  f.write(b, 4);
  return static_cast<bool>(f);
}

}  // namespace f95mini
