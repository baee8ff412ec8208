// The assembler line of a decoded instruction.
#pragma once

#include <cstdint>
#include <string>

#include "disasm/decoder.h"
#include "process/target_memory.h"

namespace vantor::disasm {

// Register name table: 0 "NO REGISTER", 1 "RIP", 16..31 the general registers by their
// 64-bit names, 32..47 "XMM0".."XMM15"; anything else has no name ("").
const char* register_name(unsigned index);
inline constexpr unsigned kGeneralRegisterBase = 16;
inline constexpr unsigned kXmmRegisterBase = 32;

// Writes the line for `instruction`, which was decoded from `window` at `address`.
void format_instruction(const DecodedInstruction& instruction, Address address,
                        const std::uint8_t* window, std::string& text);

}  // namespace vantor::disasm
