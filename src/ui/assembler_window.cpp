#include "ui/assembler_window.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "common/messages.h"
#include "disasm/disassembler.h"
#include "ui/settings.h"
#include "ui/window_kinds.h"

namespace vantor::ui {

namespace {

constexpr std::size_t kLongestInstruction = 15;
constexpr std::size_t kDecodeWindow = 16;
constexpr int kByteColumns = 12;          // instruction bytes shown before the mnemonic
constexpr int kOperandColumn = 8;         // operands start this far after the mnemonic
constexpr int kOffsetFromRightEdge = 7;   // where "+%4x" is written
constexpr std::size_t kLongestBackScan = 4096;  // bytes decoded to find earlier instructions
constexpr std::uint8_t kTrapByte = 0xCC;

// One decoded instruction, with a breakpoint byte shown as the no-operation it replaced.
struct decoded {
  std::size_t length = 1;
  std::string text;
  std::uint8_t first_byte = 0;
};

decoded decode_at(const std::uint8_t* bytes, std::size_t available, Address address) {
  std::uint8_t window[kDecodeWindow] = {};
  std::copy(bytes, bytes + std::min(available, kDecodeWindow), window);
  decoded out;
  if (window[0] == kTrapByte) {
    out.text = "nop";
    out.first_byte = 0x90;
    return out;
  }
  out.length = disasm::disassemble_bytes(window, address, out.text);
  if (out.length == 0) out.length = 1;
  out.first_byte = window[0];
  return out;
}

std::string trim_left(const std::string& text) {
  std::size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
  return text.substr(i);
}

}  // namespace

assembler_window::assembler_window(TargetMemory& memory, code_map& code, frame_locator locate)
    : source_base_window(kAssemblerKind, "Assembler", layout_settings::consecutive(kAsmWindowX)),
      memory_(memory),
      code_(code),
      locate_(std::move(locate)) {}

void assembler_window::show_address(Address address) {
  auto routine = code_.routine_containing(address);
  routine_start_ = routine ? routine->start : 0;
  set_title(routine ? "Assembler: " + routine->name : "Assembler");
  start_ = address;
  // Start where the reader sees how the routine got here: at its start when the address
  // is near enough to be on the first page, else a third of a page above the address.
  if (routine && address > routine->start && address - routine->start <= kLongestBackScan) {
    std::vector<Address> starts;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(address - routine->start));
    std::size_t got = memory_.read(routine->start, bytes.data(), bytes.size());
    for (std::size_t at = 0; at < got;) {
      starts.push_back(routine->start + at);
      at += decode_at(&bytes[at], got - at, routine->start + at).length;
    }
    int lead = std::max(visible_rows() / 3, 1);
    if (static_cast<int>(starts.size()) + 2 < visible_rows())
      start_ = routine->start;
    else if (!starts.empty())
      start_ = starts[starts.size() - std::min(starts.size(), static_cast<std::size_t>(lead))];
  }
  refresh();
}

bool assembler_window::show_frame(int frame_index) {
  Address pc = 0;
  if (!locate_ || !locate_(frame_index, pc)) return false;
  frame_index_ = frame_index;
  Address ip = 0;
  instruction_pointer_ = locate_(0, ip) ? ip : 0;
  selected_address_ = pc;
  show_address(pc);
  return true;
}

bool assembler_window::show_routine(const std::string& name) {
  auto routine = code_.routine_named(name);
  if (!routine) return false;
  show_address(routine->start);
  return true;
}

void assembler_window::select_address(Address address) {
  selected_address_ = address;
  refresh();
}

void assembler_window::fill_rows(window_rows& rows) {
  row_addresses_.clear();
  int wanted = visible_rows();
  std::vector<std::uint8_t> code(std::min<std::size_t>(static_cast<std::size_t>(wanted) * kLongestInstruction +
                                                           kDecodeWindow,
                                                       16 * 1024));
  std::size_t got = memory_.read(start_, code.data(), code.size());

  Address address = start_;
  bool label_written = false, line_written = false;
  while (rows.text.size() < static_cast<std::size_t>(wanted)) {
    row_addresses_.push_back(address);
    if (!label_written) {
      label_written = true;
      auto routine = code_.routine_containing(address);
      if (routine && routine->start == address) {
        rows.add(routine->name + ":");
        continue;
      }
    }
    if (!line_written) {
      line_written = true;
      if (auto line = code_.line_starting_at(address)) {
        std::string text = line->file + ": " + std::to_string(line->line);
        if (line->text) text += " " + trim_left(*line->text);
        if (static_cast<int>(text.size()) > visible_columns()) text.resize(static_cast<std::size_t>(visible_columns()));
        rows.add(text, kRowSourceLine);
        continue;
      }
    }
    label_written = line_written = false;

    char field[32];
    if (address >= 0x7fffffff)
      std::snprintf(field, sizeof field, "%016llX ", static_cast<unsigned long long>(address));
    else
      std::snprintf(field, sizeof field, "%08llx ", static_cast<unsigned long long>(address));
    std::string text = field;
    std::size_t offset = static_cast<std::size_t>(address - start_);
    if (offset >= got) {
      rows.add(text + "??");
      address += 1;
      continue;
    }
    decoded instruction = decode_at(&code[offset], got - offset, address);
    for (std::size_t i = 0; i < instruction.length; ++i) {
      std::snprintf(field, sizeof field, "%02x", i == 0 ? instruction.first_byte : code[offset + i]);
      text += field;
    }
    for (std::size_t i = instruction.length; i < static_cast<std::size_t>(kByteColumns); ++i) text += "  ";

    std::size_t space = instruction.text.find(' ');
    std::string mnemonic = instruction.text.substr(0, space);
    std::string operands = space == std::string::npos ? "" : trim_left(instruction.text.substr(space));
    if (mnemonic == "call" && !operands.empty() && std::isxdigit(static_cast<unsigned char>(operands[0]))) {
      Address target = std::strtoull(operands.c_str(), nullptr, 16);
      if (auto routine = code_.routine_containing(target)) operands = routine->name;
    }
    text += mnemonic;
    if (!operands.empty()) {
      text.append(mnemonic.size() < static_cast<std::size_t>(kOperandColumn) ? kOperandColumn - mnemonic.size() : 1,
                  ' ');
      text += operands;
    }
    if (routine_start_ != 0 && address >= routine_start_) {
      int column = visible_columns() - kOffsetFromRightEdge;
      text.append(static_cast<int>(text.size()) < column ? static_cast<std::size_t>(column) - text.size() : 1, ' ');
      std::snprintf(field, sizeof field, "+%4llx", static_cast<unsigned long long>(address - routine_start_));
      text += field;
    }
    int attribute = address == instruction_pointer_ ? kRowCurrent : address == selected_address_ ? kRowSelected : kRowPlain;
    rows.add(std::move(text), attribute);
    address += instruction.length;
  }
}

Address assembler_window::next_instruction(Address address) {
  std::uint8_t bytes[kDecodeWindow] = {};
  std::size_t got = memory_.read(address, bytes, sizeof bytes);
  if (got == 0) return address + 1;
  return address + decode_at(bytes, got, address).length;
}

Address assembler_window::previous_instruction(Address address) {
  if (address == 0) return 0;
  // x86 code cannot be decoded backwards: decode forward from the routine's start and
  // take the instruction that ends where this one begins.
  auto routine = code_.routine_containing(address - 1);
  if (!routine || address - routine->start > kLongestBackScan) return address - 1;
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(address - routine->start));
  std::size_t got = memory_.read(routine->start, bytes.data(), bytes.size());
  Address previous = address - 1;
  for (std::size_t at = 0; at < got;) {
    std::size_t length = decode_at(&bytes[at], got - at, routine->start + at).length;
    if (at + length >= bytes.size()) {
      previous = routine->start + at;
      break;
    }
    at += length;
  }
  return previous;
}

bool assembler_window::handle_command(int code) {
  switch (code) {
    case kCommandLineDown:
      start_ = next_instruction(start_);
      break;
    case kCommandLineUp:
      start_ = previous_instruction(start_);
      break;
    case kCommandPageDown:
      if (!row_addresses_.empty()) start_ = row_addresses_.back();
      break;
    case kCommandPageUp:
      for (int i = 1; i < visible_rows(); ++i) start_ = previous_instruction(start_);
      break;
    default:
      return false;
  }
  refresh();
  return true;
}

bool assembler_window::handle_popup_choice(int choice) {
  if (choice != kPopupGotoRoutine) return false;
  auto name = winlib::window_library().prompt_text("Goto routine", "Type the routine name", location().x,
                                                   location().y, 30);
  if (name && !show_routine(*name)) ShowInformationMessage("Routine not found: " + *name);
  return true;
}

}  // namespace vantor::ui
