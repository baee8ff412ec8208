// Just enough of the PE format for the driver: section lookup, export names of a DLL,
// and the DOS-header word that locates the routine map.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace f95mini {

struct PeSection {
  std::string name;
  std::uint32_t virtual_address = 0, virtual_size = 0, raw_offset = 0, raw_size = 0;
};

class PeFile {
 public:
  // Reads the file; false (with a reason) when it is not a PE32+ image.
  bool load(const std::string& path, std::string* error);
  const PeSection* section(const std::string& name) const;
  std::vector<std::string> export_names() const;
  std::optional<std::uint32_t> file_offset(std::uint32_t rva) const;

 private:
  std::vector<std::uint8_t> bytes_;
  std::vector<PeSection> sections_;
  std::uint32_t export_rva_ = 0;
  std::uint32_t u32(std::size_t at) const;
  std::uint16_t u16(std::size_t at) const;
};

// Writes `value` into the reserved DOS-header word at file offset 28.
bool write_map_word(const std::string& path, std::uint32_t value, std::string* error);

}  // namespace f95mini
