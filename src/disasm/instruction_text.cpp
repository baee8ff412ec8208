#include "disasm/instruction_text.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace vantor::disasm {

namespace {

constexpr const char* kGeneralNames[16] = {"RAX", "RCX", "RDX", "RBX", "RSP", "RBP",
                                           "RSI", "RDI", "R8",  "R9",  "R10", "R11",
                                           "R12", "R13", "R14", "R15"};
constexpr const char* kXmmNames[16] = {"XMM0",  "XMM1",  "XMM2",  "XMM3", "XMM4",  "XMM5",
                                       "XMM6",  "XMM7",  "XMM8",  "XMM9", "XMM10", "XMM11",
                                       "XMM12", "XMM13", "XMM14", "XMM15"};

// A fixed line buffer: a piece that does not fit is cut and later pieces are dropped.
class Line {
 public:
  void append(const char* piece) {
    while (*piece && length_ + 1 < sizeof(text_)) text_[length_++] = *piece++;
    text_[length_] = '\0';
  }
  template <typename... Args>
  void appendf(const char* format, Args... args) {
    char piece[40];
    std::snprintf(piece, sizeof piece, format, args...);
    append(piece);
  }
  char last() const { return length_ ? text_[length_ - 1] : '\0'; }
  // Replaces the first occurrence of `from` with `to` (which is not longer).
  void replace_first(const char* from, const char* to) {
    char* at = std::strstr(text_, from);
    if (!at) return;
    const std::size_t from_length = std::strlen(from);
    const std::size_t to_length = std::strlen(to);
    std::memcpy(at, to, to_length);
    std::memmove(at + to_length, at + from_length, std::strlen(at + from_length) + 1);
    length_ -= from_length - to_length;
  }
  const char* c_str() const { return text_; }
  std::size_t size() const { return length_; }

 private:
  char text_[160] = "";
  std::size_t length_ = 0;
};

void append_memory(Line& line, const MemoryOperand& memory) {
  char inside[48] = "";
  if (memory.rip_relative) {
    std::strcat(inside, register_name(1));
  } else if (memory.base >= 0) {
    std::strcat(inside, kGeneralNames[memory.base & 15]);
  }
  if (memory.index >= 0) {
    std::strcat(inside, memory.scale == 1 ? "+" : memory.scale == 2 ? "+2*"
                                                : memory.scale == 4 ? "+4*" : "+8*");
    std::strcat(inside, kGeneralNames[memory.index & 15]);
  }
  line.append("[");
  if (memory.displacement != 0) line.appendf(inside[0] ? "%x+" : "%x", memory.displacement);
  line.append(inside);
  line.append("]");
}

void append_operand(Line& line, const Operand& operand, const MemoryOperand& memory) {
  switch (operand.kind) {
    case OperandKind::general: line.append(kGeneralNames[operand.number & 15]); break;
    case OperandKind::xmm: line.append(kXmmNames[operand.number & 15]); break;
    case OperandKind::memory: append_memory(line, memory); break;
    case OperandKind::none: break;
  }
}

void append_lower(Line& line, const char* name) {
  char lower[24];
  std::size_t i = 0;
  for (; name[i] && i + 1 < sizeof lower; ++i)
    lower[i] = (name[i] >= 'A' && name[i] <= 'Z') ? static_cast<char>(name[i] + 32) : name[i];
  lower[i] = '\0';
  line.append(lower);
}

}  // namespace

const char* register_name(unsigned index) {
  if (index == 0) return "NO REGISTER";
  if (index == 1) return "RIP";
  if (index >= kGeneralRegisterBase && index < kGeneralRegisterBase + 16)
    return kGeneralNames[index - kGeneralRegisterBase];
  if (index >= kXmmRegisterBase && index < kXmmRegisterBase + 16)
    return kXmmNames[index - kXmmRegisterBase];
  return "";
}

void format_instruction(const DecodedInstruction& instruction, Address address,
                        const std::uint8_t* window, std::string& text) {
  Line line;
  if (instruction.breakpoint) {
    line.append("int   3");
  } else if (!instruction.matched()) {
    line.appendf("db     %2.2x,%2.2x,%2.2x,%2.2x,%2.2x", window[0], window[1], window[2],
                 window[3], window[4]);
  } else {
    const MnemonicInfo& info = mnemonic_info(instruction.mnemonic);
    const bool has_first = instruction.first.kind != OperandKind::none;
    const bool has_second = instruction.second.kind != OperandKind::none;
    append_lower(line, info.name);
    if (has_first || has_second || instruction.has_immediate || instruction.has_branch)
      line.append("       ");
    if (instruction.has_branch) {
      const Address target = address + instruction.length +
                             static_cast<std::uint64_t>(instruction.branch_displacement);
      line.appendf("%" PRIx64, target);
    }
    append_operand(line, instruction.first, instruction.memory);
    if (has_first && (has_second || instruction.has_immediate)) line.append(",");
    append_operand(line, instruction.second, instruction.memory);
    if (instruction.has_immediate) {
      if (line.last() != ',' && line.last() != ' ') line.append(",");
      if (info.operand_size == 8)
        line.appendf("%" PRIx64, instruction.immediate);
      else
        line.appendf("%x", static_cast<std::uint32_t>(instruction.immediate));
    } else if (instruction.by_one) {
      line.append(instruction.by_cl ? ",cl" : ",1");
    }
    // The assembler window shows frame-relative operands as [offset]$.
    line.replace_first("+RBP]", "]$");
    line.replace_first("RBP]", "]$");
  }
  text.assign(line.c_str(), line.size());
}

}  // namespace vantor::disasm
