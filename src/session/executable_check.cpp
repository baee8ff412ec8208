#include "session/executable_check.h"

#include <algorithm>
#include <cstring>

#include "os/os.h"

namespace vantor {

namespace {
constexpr std::size_t kHeaderOffsetField = 60;
constexpr std::int32_t kLargestHeaderOffset = 1024;
constexpr std::size_t kMachineField = 4;
}  // namespace

ExecutableKind classify_executable(const std::vector<std::uint8_t>& first_bytes) {
  // The header offset may point at the very end of the bytes read; what lies past them
  // reads as zero, so a short file is judged on what it has.
  std::uint8_t bytes[kHeaderBytesRead + 8] = {};
  if (!first_bytes.empty()) std::memcpy(bytes, first_bytes.data(), std::min(first_bytes.size(), kHeaderBytesRead));
  if (bytes[0] != 'M' || bytes[1] != 'Z') return ExecutableKind::kNotExecutable;
  std::int32_t offset;
  std::memcpy(&offset, bytes + kHeaderOffsetField, sizeof offset);
  if (offset < 0 || offset > kLargestHeaderOffset) return ExecutableKind::kDamaged;
  const std::uint8_t* header = bytes + offset;
  if (header[0] != 'P' || header[1] != 'E') return ExecutableKind::kNotExecutable;
  if (header[kMachineField] == 0x4C && header[kMachineField + 1] == 0x01) return ExecutableKind::kI386;
  return ExecutableKind::kOther;
}

ExecutableKind check_executable(const std::wstring& path) {
  auto bytes = os::system().read_file(path, kHeaderBytesRead);
  if (!bytes) return ExecutableKind::kUnreadable;
  return classify_executable(*bytes);
}

const char* load_error_text(ExecutableKind kind) {
  switch (kind) {
    case ExecutableKind::kNotExecutable:
      return "This does not appear to be an executable file";
    case ExecutableKind::kDamaged:
      return "There seems to be something wrong with this executable file";
    default:
      return "";
  }
}

}  // namespace vantor
