#include "ui/ignored_exceptions.h"

#include <cctype>

#include "os/os.h"
#include "ui/settings.h"

namespace vantor::ui {

namespace {
int hex_digit_value(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}
}  // namespace

std::string ignored_exception_key(int index) { return "IgnoreException-" + std::to_string(index); }

std::uint32_t exception_code_from_text(const std::string& text) {
  if (text.empty() || hex_digit_value(text[0]) < 0) return 0;
  std::size_t i = 0;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && hex_digit_value(text[2]) >= 0) i = 2;
  std::uint64_t value = 0;
  for (; i < text.size() && hex_digit_value(text[i]) >= 0; ++i) {
    value = value * 16 + static_cast<std::uint64_t>(hex_digit_value(text[i]));
    if (value > 0xFFFFFFFFu) return 0xFFFFFFFFu;
  }
  return static_cast<std::uint32_t>(value);
}

std::vector<std::uint32_t> load_ignored_exceptions() {
  std::vector<std::uint32_t> codes;
  auto& system = os::system();
  for (int index = 0; index < kIgnoredExceptionKeys; ++index) {
    std::string text = system.profile_string(kSettingsSection, ignored_exception_key(index), "",
                                             kSettingTextLimit + 1, settings_file_path());
    if (std::uint32_t code = exception_code_from_text(text)) codes.push_back(code);
  }
  return codes;
}

}  // namespace vantor::ui
