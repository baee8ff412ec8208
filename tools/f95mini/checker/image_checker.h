// An independent reader of finished images: it parses the PE headers, the routine map
// that the DOS-header word points at, every debug block up to "BARB", the line tables
// and the prologues, and reports every way they differ from the documented format.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace f95check {

struct CheckResult {
  std::vector<std::string> errors;
  int routines = 0;
  int debug_blocks = 0;
  int line_records = 0;
  int variables = 0;
  int derived_types = 0;
  int common_blocks = 0;
  std::vector<std::string> routine_names;
  std::set<std::uint32_t> address_types;  // of every variable record (not components)
  bool ok() const { return errors.empty(); }
};

CheckResult check_image(const std::vector<std::uint8_t>& file);

}  // namespace f95check
