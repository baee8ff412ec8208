// Ini files, message boxes, the command interpreter, the environment, the clock, the idle
// wait and code-page conversions.
#include <windows.h>

#include <cstdlib>
#include <vector>

#include "os/win32/win32_system.h"

namespace vantor::os {

namespace {
HANDLE native_handle(Handle handle) { return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(handle)); }
Handle opaque_handle(HANDLE handle) { return static_cast<Handle>(reinterpret_cast<std::uintptr_t>(handle)); }
}  // namespace

std::uint32_t Win32System::profile_int(const std::string& section, const std::string& key, std::uint32_t fallback,
                                       const std::string& file) {
  return GetPrivateProfileIntA(section.c_str(), key.c_str(), static_cast<INT>(fallback), file.c_str());
}

std::string Win32System::profile_string(const std::string& section, const std::string& key,
                                        const std::string& fallback, std::size_t capacity, const std::string& file) {
  if (capacity == 0) return {};
  std::vector<char> buffer(capacity, '\0');
  DWORD length = GetPrivateProfileStringA(section.c_str(), key.c_str(), fallback.c_str(), buffer.data(),
                                          static_cast<DWORD>(capacity), file.c_str());
  return std::string(buffer.data(), length);
}

bool Win32System::write_profile_string(const std::string& section, const std::string& key, const std::string& value,
                                       const std::string& file) {
  return WritePrivateProfileStringA(section.c_str(), key.c_str(), value.c_str(), file.c_str()) != 0;
}

int Win32System::message_box(const std::wstring& text, const std::wstring& title, std::uint32_t flags) {
  return MessageBoxW(nullptr, text.c_str(), title.c_str(), flags);
}

int Win32System::run_shell_command(const std::wstring& command) { return _wsystem(command.c_str()); }

std::optional<std::wstring> Win32System::environment(const std::wstring& name) {
  DWORD size = GetEnvironmentVariableW(name.c_str(), nullptr, 0);
  if (size == 0) return std::nullopt;
  std::vector<wchar_t> buffer(size, L'\0');
  DWORD length = GetEnvironmentVariableW(name.c_str(), buffer.data(), size);
  if (length == 0 || length >= size) return std::nullopt;
  return std::wstring(buffer.data(), length);
}

std::uint64_t Win32System::milliseconds() { return GetTickCount64(); }

Handle Win32System::create_event() { return opaque_handle(CreateEventW(nullptr, FALSE, FALSE, nullptr)); }

void Win32System::wait_for_input(Handle event, std::uint32_t timeout_ms) {
  HANDLE native = native_handle(event);
  MsgWaitForMultipleObjects(native != nullptr ? 1 : 0, native != nullptr ? &native : nullptr, FALSE, timeout_ms,
                            QS_ALLINPUT);
}

void Win32System::end_debugger(int status) { std::exit(status); }

std::wstring Win32System::current_directory() {
  DWORD size = GetCurrentDirectoryW(0, nullptr);
  if (size == 0) return {};
  std::vector<wchar_t> buffer(size, L'\0');
  DWORD length = GetCurrentDirectoryW(size, buffer.data());
  return std::wstring(buffer.data(), length < size ? length : 0);
}

std::wstring Win32System::wide_from_oem(const std::string& text) {
  if (text.empty()) return {};
  int length = MultiByteToWideChar(CP_OEMCP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
  if (length <= 0) return {};
  std::wstring out(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_OEMCP, 0, text.data(), static_cast<int>(text.size()), out.data(), length);
  return out;
}

std::string Win32System::oem_from_wide(const std::wstring& text) {
  if (text.empty()) return {};
  int length =
      WideCharToMultiByte(CP_OEMCP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, "?", nullptr);
  if (length <= 0) return {};
  std::string out(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_OEMCP, 0, text.data(), static_cast<int>(text.size()), out.data(), length, "?", nullptr);
  return out;
}

}  // namespace vantor::os
