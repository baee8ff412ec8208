#include "debuginfo/source_locator.h"

#include "os/os.h"

namespace vantor {

namespace {

bool is_separator(wchar_t c) { return c == L'\\' || c == L'/'; }

std::size_t last_separator(const std::wstring& path) { return path.find_last_of(L"\\/"); }

std::wstring directory_of(const std::wstring& path) {
  std::size_t slash = last_separator(path);
  return slash == std::wstring::npos ? std::wstring() : path.substr(0, slash);
}

std::wstring bare_name_of(const std::wstring& path) {
  std::size_t slash = last_separator(path);
  return slash == std::wstring::npos ? path : path.substr(slash + 1);
}

std::wstring joined(const std::wstring& directory, const std::wstring& name) {
  return is_separator(directory.back()) ? directory + name : directory + L"\\" + name;
}

std::wstring search_list(const std::wstring& recorded_name, const SourceSearch& search) {
  std::wstring list = directory_of(recorded_name) + L";.\\";
  if (!search.startup_directories.empty()) list += L";" + search.startup_directories;
  std::wstring source_path = search.source_path;
  if (source_path.empty()) source_path = os::system().environment(L"SOURCEPATH").value_or(L"");
  if (!source_path.empty()) list += L";" + source_path;
  return list;
}

std::wstring find_in_list(const std::wstring& list, const std::wstring& name) {
  os::System& system = os::system();
  std::size_t begin = 0;
  while (begin <= list.size()) {
    std::size_t end = list.find(L';', begin);
    if (end == std::wstring::npos) end = list.size();
    std::wstring directory = list.substr(begin, end - begin);
    if (!directory.empty()) {
      std::wstring candidate = joined(directory, name);
      if (system.file_exists(candidate)) return candidate;
    }
    begin = end + 1;
  }
  return {};
}

}  // namespace

std::int32_t locate_source_file(source_file& file, const SourceSearch& search) {
  if (file.locate_state != kSourceNotLookedFor) return file.locate_state;
  std::wstring path;
  if (!file.recorded_name.empty() && os::system().file_exists(file.recorded_name))
    path = file.recorded_name;
  else if (!file.recorded_name.empty())
    path = find_in_list(search_list(file.recorded_name, search), bare_name_of(file.recorded_name));
  if (path.empty()) {
    file.locate_state = kSourceNotFound;
    return file.locate_state;
  }
  load_source_text(file, path);
  return file.locate_state;
}

bool load_source_text(source_file& file, const std::wstring& path) {
  auto bytes = os::system().read_file(path);
  file.full_path = path;
  file.lines.clear();
  if (!bytes) {
    file.locate_state = kSourceUnreadable;
    return false;
  }
  std::string text(bytes->begin(), bytes->end());
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t end = text.find('\n', begin);
    if (end == std::string::npos) end = text.size();
    std::size_t stop = end;
    if (stop > begin && text[stop - 1] == '\r') --stop;
    file.lines.push_back({text.substr(begin, stop - begin)});
    begin = end + 1;
  }
  file.locate_state = kSourceLoaded;
  return true;
}

}  // namespace vantor
