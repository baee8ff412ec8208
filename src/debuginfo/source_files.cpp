#include "debuginfo/source_files.h"

#include <algorithm>
#include <cwctype>

#include "debuginfo/module.h"
#include "process/debugged_process.h"
#include "process/user_space_buffer.h"

namespace vantor {

namespace {

bool equal_ignoring_case(const std::wstring& a, const std::wstring& b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](wchar_t x, wchar_t y) {
           return std::towlower(static_cast<std::wint_t>(x)) == std::towlower(static_cast<std::wint_t>(y));
         });
}

}  // namespace

source_file* register_routine(std::vector<std::unique_ptr<source_file>>& files, Module& module, MapEntry& routine) {
  if (!routine.lines) return nullptr;
  std::wstring name = wide_from_narrow(routine.lines->file_name);
  // Routines of one file come together in the map, so the search runs from the newest.
  for (auto it = files.rbegin(); it != files.rend(); ++it) {
    source_file& file = **it;
    if (file.module == &module && equal_ignoring_case(file.recorded_name, name)) {
      file.routines.push_back(&routine);
      return &file;
    }
  }
  auto file = std::make_unique<source_file>();
  file->module = &module;
  file->recorded_name = std::move(name);
  file->routines.push_back(&routine);
  files.push_back(std::move(file));
  return files.back().get();
}

void forget_module_sources(std::vector<std::unique_ptr<source_file>>& files, const Module& module) {
  // A file's routines all come from the module that reported it.
  for (auto& file : files)
    if (file->module == &module) {
      file->routines.clear();
      file->module = nullptr;
    }
}

std::int32_t line_of_offset(const LineTable* table, std::int64_t offset) {
  if (!table || table->records.empty()) return 0;
  const auto& records = table->records;
  for (std::size_t i = 0; i < records.size(); ++i) {
    std::int64_t after_trap = static_cast<std::int64_t>(records[i].offset) + 1;
    if (after_trap < offset) continue;
    if (after_trap == offset) return records[i].line;
    return records[i == 0 ? 0 : i - 1].line;
  }
  return records.back().line;
}

std::int32_t line_of_address(const MapEntry& routine, Address pc) {
  return line_of_offset(routine.lines.get(), static_cast<std::int64_t>(pc - routine.start));
}

Address address_of_line(const DebuggedProcess& process, std::string_view file, std::int32_t line, bool whole_path) {
  for (const auto& module : process.modules()) {
    Address address = whole_path ? module->line_address(file, line) : module->line_address_by_bare_name(file, line);
    if (address) return address;
  }
  return 0;
}

}  // namespace vantor
