#include "ui/dump_window.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "common/messages.h"
#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

namespace {
// Columns of a line: the address, then " xx" for each byte.
constexpr int kAddressColumns = 16;
constexpr int kByteColumns = 3;
constexpr int kDefaultLines = 16;

bool valid_width(int bytes) { return bytes == 16 || bytes == 8 || bytes == 4 || bytes == 2 || bytes == 1; }
}  // namespace

std::string dump_address_text(Address address) {
  char text[24];
  std::snprintf(text, sizeof text, "%016llX", static_cast<unsigned long long>(address));
  return text;
}

dump_window::dump_window(TargetMemory& memory, Address address, std::string expression, int frame_index,
                         data_break_setter set_break)
    : frame_window(kDumpKind, "Memory Dump: " + expression, layout_settings::position_only(kMemDumpWindowX),
                   frame_index, expression),
      memory_(memory),
      address_(address),
      bytes_per_line_(get_setting_int(kMemDumpWindowBytesWide)),
      set_break_(std::move(set_break)) {
  if (!valid_width(bytes_per_line_)) bytes_per_line_ = 16;
  set_location({location().x, location().y, kAddressColumns + 16 * kByteColumns + 2, kDefaultLines});
}

bool dump_window::set_bytes_per_line(int bytes) {
  if (!valid_width(bytes)) return false;
  bytes_per_line_ = bytes;
  set_setting_int(kMemDumpWindowBytesWide, bytes);
  refresh();
  return true;
}

void dump_window::fill_rows(window_rows& rows) {
  int lines = visible_rows();
  std::size_t width = static_cast<std::size_t>(bytes_per_line_);
  std::vector<std::uint8_t> bytes(width * static_cast<std::size_t>(lines));
  std::vector<bool> readable(bytes.size(), false);
  std::size_t got = memory_.read(address_, bytes.data(), bytes.size());
  for (std::size_t i = 0; i < got && i < bytes.size(); ++i) readable[i] = true;
  // A short read stops at the first unreadable page; the lines after it may still be
  // readable, so they are read one by one.
  for (std::size_t line_start = (got / width + (got % width ? 1 : 0)) * width; line_start < bytes.size();
       line_start += width) {
    std::size_t n = memory_.read(address_ + line_start, &bytes[line_start], width);
    for (std::size_t i = 0; i < n && i < width; ++i) readable[line_start + i] = true;
  }
  for (int line = 0; line < lines; ++line) {
    std::size_t start = static_cast<std::size_t>(line) * width;
    std::string text = dump_address_text(address_ + start);
    for (std::size_t i = start; i < start + width; ++i) {
      char byte[8];
      if (readable[i])
        std::snprintf(byte, sizeof byte, " %02x", bytes[i]);
      else
        std::snprintf(byte, sizeof byte, " ??");
      text += byte;
    }
    rows.add(std::move(text));
  }
}

bool dump_window::handle_command(int code) {
  std::int64_t step = 0;
  switch (code) {
    case kCommandLineUp:
      step = -bytes_per_line_;
      break;
    case kCommandLineDown:
      step = bytes_per_line_;
      break;
    case kCommandPageUp:
      step = -static_cast<std::int64_t>(bytes_per_line_) * visible_rows();
      break;
    case kCommandPageDown:
      step = static_cast<std::int64_t>(bytes_per_line_) * visible_rows();
      break;
    default:
      return false;
  }
  // The address space has ends: a move back past the start stops at 0, and a move
  // forward that would wrap does not happen.
  if (step < 0)
    address_ = address_ < static_cast<Address>(-step) ? 0 : address_ - static_cast<Address>(-step);
  else if (address_ <= UINT64_MAX - static_cast<Address>(step))
    address_ += static_cast<Address>(step);
  refresh();
  return true;
}

bool dump_window::handle_popup_choice(int choice) {
  switch (choice) {
    case kPopupDump16Bytes:
      return set_bytes_per_line(16);
    case kPopupDump8Bytes:
    case kPopupDump4Bytes:
    case kPopupDump2Bytes:
    case kPopupDump1Byte:
      return set_bytes_per_line(choice);
    case kPopupDumpWriteBreak:
      ask_data_break(false);
      return true;
    case kPopupDumpUseBreak:
      ask_data_break(true);
      return true;
    default:
      return false;
  }
}

void dump_window::ask_data_break(bool use) {
  Address where = address_ + static_cast<Address>(std::max(selected_row(), 0)) * static_cast<Address>(bytes_per_line_);
  auto bytes = winlib::window_library().prompt_number(use ? "Use databreak" : "Write databreak",
                                                      "How many bytes to cover?", location().x, location().y, 20);
  if (!bytes || !set_break_) return;
  if (*bytes <= 0) return;
  set_break_(use, where, static_cast<int>(*bytes));
}

std::optional<Address> dump_window::byte_address_at(int row, int column) const {
  if (row < 0 || row >= row_count() || column < kAddressColumns) return std::nullopt;
  int index = (column - kAddressColumns) / kByteColumns;
  if (index >= bytes_per_line_) return std::nullopt;
  return address_ + static_cast<Address>(row) * static_cast<Address>(bytes_per_line_) + static_cast<Address>(index);
}

bool dump_window::edit_byte(int row, int column) {
  auto where = byte_address_at(row, column);
  if (!where) return false;
  auto value = winlib::window_library().prompt_number("New byte value", "Type the new value for the byte",
                                                      location().x, location().y, 20);
  // A byte's value, written either way round: 0 to 255 or -128 to -1.
  if (!value || *value < -128 || *value > 255) return false;
  auto byte = static_cast<std::uint8_t>(*value);
  if (memory_.write(*where, &byte, 1) != 1) {
    ShowErrorMessage("Cannot write to this address");
    return false;
  }
  refresh();
  return true;
}

}  // namespace vantor::ui
