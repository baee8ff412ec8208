#include "disasm/disassembler.h"

#include <cstdio>
#include <cstring>

#include "disasm/decoder.h"
#include "disasm/instruction_text.h"

namespace vantor::disasm {

namespace {

TargetMemory* process_memory = nullptr;
std::uint64_t immediate_of_last = 0;

// Clears the process memory on every way out of disassemble_in_process.
class ProcessMemoryScope {
 public:
  explicit ProcessMemoryScope(TargetMemory& memory) { process_memory = &memory; }
  ~ProcessMemoryScope() { process_memory = nullptr; }
  ProcessMemoryScope(const ProcessMemoryScope&) = delete;
  ProcessMemoryScope& operator=(const ProcessMemoryScope&) = delete;
};

}  // namespace

std::size_t disassemble_bytes(const std::uint8_t* bytes16, Address address, std::string& text) {
  const DecodedInstruction instruction = decode_instruction(bytes16);
  if (!instruction.breakpoint) immediate_of_last = instruction.immediate;
  format_instruction(instruction, address, bytes16, text);
  return instruction.length;
}

void disassemble(std::string& text, Address& address) {
  std::uint8_t bytes[kWindowSize] = {};
  if (process_memory) {
    process_memory->read(address, bytes, sizeof bytes);
  } else {
    std::memcpy(bytes, reinterpret_cast<const void*>(static_cast<std::uintptr_t>(address)),
                sizeof bytes);
  }
  address += disassemble_bytes(bytes, address, text);
}

void disassemble_in_process(TargetMemory& memory, std::string& text, Address& address) {
  ProcessMemoryScope scope(memory);
  disassemble(text, address);
}

std::uint64_t last_immediate() { return immediate_of_last; }

std::string format_code_address(Address address, bool full) {
  char text[24];
  std::snprintf(text, sizeof text, full ? "%8.8x:%8.8x" : "%x:%8.8x",
                static_cast<unsigned>(address >> 32), static_cast<unsigned>(address));
  return text;
}

}  // namespace vantor::disasm
