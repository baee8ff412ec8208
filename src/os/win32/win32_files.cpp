// Image files (mapping, final paths) and the plain files the debugger reads and writes.
#include <windows.h>

#include <algorithm>

#include "os/win32/win32_system.h"

namespace vantor::os {

namespace {

HANDLE native_handle(Handle handle) { return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(handle)); }
Handle opaque_handle(HANDLE handle) { return static_cast<Handle>(reinterpret_cast<std::uintptr_t>(handle)); }

// Opens a file for plain reading or writing; INVALID_HANDLE_VALUE on failure. A directory
// fails to open here, which is what every caller wants.
HANDLE open_plain(const std::wstring& path, DWORD access, DWORD disposition) {
  return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool write_all(HANDLE file, const std::string& text) {
  DWORD written = 0;
  return WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) && written == text.size();
}

}  // namespace

Handle Win32System::open_file_for_reading(const std::wstring& path, std::uint32_t& error) {
  HANDLE file =
      CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    error = GetLastError();
    return 0;
  }
  return opaque_handle(file);
}

std::wstring Win32System::final_path(Handle file) {
  wchar_t buffer[512];
  DWORD length = GetFinalPathNameByHandleW(native_handle(file), buffer, 511, FILE_NAME_OPENED | VOLUME_NAME_DOS);
  if (length == 0 || length >= 511) return {};
  return std::wstring(buffer, length);
}

Handle Win32System::create_file_mapping(Handle file, std::uint32_t& error) {
  LARGE_INTEGER size;
  if (!GetFileSizeEx(native_handle(file), &size)) {
    error = GetLastError();
    return 0;
  }
  HANDLE mapping = CreateFileMappingW(native_handle(file), nullptr, PAGE_READONLY, 0, 0, nullptr);
  if (mapping == nullptr) {
    error = GetLastError();
    return 0;
  }
  mapping_sizes_[opaque_handle(mapping)] = static_cast<std::uint64_t>(size.QuadPart);
  return opaque_handle(mapping);
}

MappedView Win32System::map_view(Handle mapping, std::uint32_t& error) {
  void* view = MapViewOfFile(native_handle(mapping), FILE_MAP_READ, 0, 0, 0);
  if (view == nullptr) {
    error = GetLastError();
    return {};
  }
  auto it = mapping_sizes_.find(mapping);
  return {static_cast<const std::uint8_t*>(view), it == mapping_sizes_.end() ? 0 : static_cast<std::size_t>(it->second)};
}

void Win32System::unmap_view(const MappedView& view) {
  if (view.data != nullptr) UnmapViewOfFile(view.data);
}

bool Win32System::file_exists(const std::wstring& path) {
  DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

std::optional<std::vector<std::uint8_t>> Win32System::read_file(const std::wstring& path, std::size_t max_bytes) {
  HANDLE file = open_plain(path, GENERIC_READ, OPEN_EXISTING);
  if (file == INVALID_HANDLE_VALUE) return std::nullopt;
  std::vector<std::uint8_t> bytes;
  std::uint8_t chunk[65536];
  bool ok = true;
  while (bytes.size() < max_bytes) {
    DWORD want = static_cast<DWORD>(std::min<std::size_t>(sizeof chunk, max_bytes - bytes.size()));
    DWORD got = 0;
    if (!ReadFile(file, chunk, want, &got, nullptr)) {
      ok = false;
      break;
    }
    if (got == 0) break;
    bytes.insert(bytes.end(), chunk, chunk + got);
  }
  CloseHandle(file);
  if (!ok) return std::nullopt;
  return bytes;
}

bool Win32System::append_file(const std::wstring& path, const std::string& text) {
  HANDLE file = open_plain(path, FILE_APPEND_DATA, OPEN_ALWAYS);
  if (file == INVALID_HANDLE_VALUE) return false;
  bool ok = write_all(file, text);
  CloseHandle(file);
  return ok;
}

bool Win32System::write_file(const std::wstring& path, const std::string& text) {
  HANDLE file = open_plain(path, GENERIC_WRITE, CREATE_ALWAYS);
  if (file == INVALID_HANDLE_VALUE) return false;
  bool ok = write_all(file, text);
  CloseHandle(file);
  return ok;
}

bool Win32System::delete_file(const std::wstring& path) { return DeleteFileW(path.c_str()) != 0; }

}  // namespace vantor::os
