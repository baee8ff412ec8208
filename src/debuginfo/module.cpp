#include "debuginfo/module.h"

#include <cstring>

#include "common/console.h"
#include "debuginfo/symbol_stream.h"
#include "process/debugged_process.h"

namespace vantor {

namespace {

// Where the PE headers are found and how large the parts read here are.
constexpr std::size_t kNewHeaderOffsetField = 60;
constexpr std::size_t kSignatureSize = 4;
constexpr std::size_t kFileHeaderSize = 20;
constexpr std::size_t kOptionalHeaderSize = 240;  // the 64-bit optional header
constexpr std::size_t kSizeOfImageField = 56;

std::uint32_t u32_at(const std::uint8_t* p) {
  std::uint32_t value;
  std::memcpy(&value, p, 4);
  return value;
}

}  // namespace

std::string_view bare_file_name(std::string_view path) {
  std::size_t slash = path.rfind('\\');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

Module::Module(DebuggedProcess& process, os::Handle file, const std::wstring& file_name, Address load_base,
               bool main_image)
    : process_(process), load_base_(load_base), main_image_(main_image) {
  if (open_image(file, file_name)) read_routine_map();
}

Module::~Module() {
  routines_.clear();
  os::System& system = os::system();
  if (view_.data) system.unmap_view(view_);
  if (mapping_) system.close_handle(mapping_);
  if (file_) system.close_handle(file_);
}

bool Module::open_image(os::Handle file, const std::wstring& file_name) {
  os::System& system = os::system();
  std::uint32_t error = 0;
  if (!file_name.empty()) {
    path_ = file_name;
    file_ = system.open_file_for_reading(file_name, error);
    owns_file_ = true;
  } else {
    file_ = file;
    path_ = system.final_path(file);
  }

  mapping_ = system.create_file_mapping(file_, error);
  if (!mapping_) {
    console_print("CreateFileMapping returned %x\n", error);
    return false;
  }
  view_ = system.map_view(mapping_, error);
  if (!view_.data) {
    console_print("MapViewOfFile returned %x\n", error);
    system.close_handle(mapping_);
    mapping_ = 0;
    return false;
  }

  // Only the low 16 bits of the new-header offset count, taken as a signed value: an
  // offset above 32,767 turns negative and the image is refused.
  std::int64_t new_header = -1;
  if (view_.size >= kNewHeaderOffsetField + 2) {
    std::int16_t low_bits;
    std::memcpy(&low_bits, view_.data + kNewHeaderOffsetField, 2);
    new_header = low_bits;
  }
  bool headers_fit = new_header >= 0 && static_cast<std::size_t>(new_header) + kSignatureSize + kFileHeaderSize +
                                                kOptionalHeaderSize <= view_.size;
  if (!headers_fit || std::memcmp(view_.data + new_header, "PE\0\0", 4) != 0) {
    system.unmap_view(view_);
    view_ = {};
    system.close_handle(mapping_);
    mapping_ = 0;
    console_print("Not PE file\n");
    return false;
  }

  file_header_ = view_.data + new_header + kSignatureSize;
  optional_header_ = file_header_ + kFileHeaderSize;
  first_section_ = optional_header_ + kOptionalHeaderSize;
  end_address_ = load_base_ + u32_at(optional_header_ + kSizeOfImageField);
  return true;
}

// ---- lookups ------------------------------------------------------------------------

MapEntry* Module::routine_at(Address address) const {
  for (const auto& routine : routines_)
    if (routine->start <= address && address <= routine->end) return routine.get();
  return nullptr;
}

Address Module::routine_start(const std::string& name) const {
  for (const auto& routine : routines_)
    if (routine->name == name) return routine->start;
  return 0;
}

Address Module::line_address_matching(std::string_view file, std::int32_t line, bool whole_path) const {
  for (const auto& routine : routines_) {
    if (!routine->lines) continue;
    std::string_view recorded = routine->lines->file_name;
    if (!equal_ignoring_case(whole_path ? recorded : bare_file_name(recorded), file)) continue;
    for (const LineRecord& record : routine->lines->records)
      if (record.line == line) return routine->start + static_cast<Address>(static_cast<std::int64_t>(record.offset));
  }
  return 0;
}

Address Module::line_address(std::string_view file, std::int32_t line) const {
  return line_address_matching(file, line, true);
}

Address Module::line_address_by_bare_name(std::string_view file, std::int32_t line) const {
  return line_address_matching(file, line, false);
}

bool Module::has_source_file(std::string_view name, bool whole_path) const {
  for (const auto& routine : routines_) {
    if (!routine->lines) continue;
    std::string_view recorded = routine->lines->file_name;
    if (equal_ignoring_case(whole_path ? recorded : bare_file_name(recorded), name)) return true;
  }
  return false;
}

void Module::collect_routines(std::string_view text, std::vector<routine_match>& out) {
  for (const auto& routine : routines_) {
    if (routine->lower_name.find(text) == std::string::npos) continue;
    routine_match match;
    match.name = routine->name;
    match.start = routine->start;
    match.has_lines = routine->has_lines();
    if (match.has_lines) {
      match.first_line = routine->lines->records.front();
      match.file_name = routine->lines->file_name;
    }
    match.module = this;
    out.push_back(std::move(match));
  }
}

std::wstring Module::display_name() const {
  std::size_t slash = path_.rfind(L'\\');
  return slash == std::wstring::npos ? path_ : path_.substr(slash + 1);
}

bool Module::load_symbols(MapEntry& routine) { return load_routine_symbols(process_, routine); }

}  // namespace vantor
