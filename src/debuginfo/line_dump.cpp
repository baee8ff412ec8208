#include "debuginfo/line_dump.h"

#include <cstdio>

#include "debuginfo/module.h"
#include "os/os.h"
#include "process/debugged_process.h"
#include "process/user_space_buffer.h"

namespace vantor {

void dump_module_lines(const Module& module, std::vector<std::string>& out, bool with_offsets) {
  bool header_written = false;
  char text[600];
  for (const auto& routine : module.routines()) {
    if (!routine->has_lines()) continue;
    if (!header_written) {
      out.push_back(narrow_from_wide(module.display_name()));
      header_written = true;
    }
    std::snprintf(text, sizeof text, " %s, %d lines", routine->name.c_str(), routine->lines->count());
    out.emplace_back(text);
    const auto& records = routine->lines->records;
    for (std::size_t i = 0; i < records.size(); ++i) {
      int length = std::snprintf(text, sizeof text, "  %d. %d", static_cast<int>(i), records[i].line);
      if (with_offsets)
        std::snprintf(text + length, sizeof text - static_cast<std::size_t>(length), " (+%x)",
                      static_cast<unsigned>(records[i].offset));
      out.emplace_back(text);
    }
    out.emplace_back();
  }
}

std::vector<std::string> dump_process_lines(const DebuggedProcess& process) {
  std::vector<std::string> out;
  for (const auto& module : process.modules()) dump_module_lines(*module, out, true);
  return out;
}

bool write_line_dump(const DebuggedProcess& process, const std::wstring& path) {
  std::string text;
  for (const std::string& line : dump_process_lines(process)) {
    text += line;
    text += '\n';
  }
  return os::system().write_file(path, text);
}

}  // namespace vantor
