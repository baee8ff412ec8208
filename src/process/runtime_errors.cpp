#include "process/runtime_errors.h"

#include <vector>

#include "common/text_format.h"

namespace vantor {

namespace {

std::array<const char*, kRuntimeErrorCount> build_table() {
  std::array<const char*, kRuntimeErrorCount> table{};
  for (std::size_t i = 0; i < RuntimeErrorRowCount; ++i) table[RuntimeErrorRows[i].number] = RuntimeErrorRows[i].text;
  for (auto& text : table)
    if (text == nullptr) text = table[0];
  return table;
}

std::string read_text(TargetMemory& memory, Address address, std::size_t limit) {
  std::vector<char> buffer(limit + 1);
  memory.read_narrow_string(buffer.data(), address, limit);
  return buffer.data();
}

}  // namespace

const char* runtime_error_text(std::int64_t number) {
  static const std::array<const char*, kRuntimeErrorCount> table = build_table();
  if (number < 0 || number >= kRuntimeErrorCount) return nullptr;
  return table[static_cast<std::size_t>(number)];
}

std::string runtime_error_message(std::int64_t number, Address text_address, TargetMemory& memory) {
  if (number == kMissingRoutineError)
    return "Call to missing routine: " + read_text(memory, text_address, kMissingRoutineNameMax);
  if (number == kProgramMessageError) return read_text(memory, text_address, kProgramMessageMax);
  if (number >= 1 && number < kRuntimeErrorCount)
    return format_text("Run-time error %lld: %s", static_cast<long long>(number), runtime_error_text(number));
  return format_text("Run-time error %lld", static_cast<long long>(number));
}

}  // namespace vantor
