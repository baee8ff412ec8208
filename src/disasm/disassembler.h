// The disassembler: one line of assembler text per x86-64 instruction, for the assembler
// window, plus each instruction's length and immediate for the code that scans routine
// prologues and steps over instructions.
//
// Lines look like "sub_q       RSP,28", "mov_q       RAX,[fffffff8]$", "call       401000":
// the lower-case mnemonic (its suffix gives the operation width; registers are always
// named whole), seven spaces, then the operands; hexadecimal without a prefix. A 0xCC
// byte reads "int   3" (length 1); bytes no row matches give
// "db     xx,xx,xx,xx,xx" of the first five bytes and length 1, so a caller walking
// forward resynchronises one byte at a time.
//
// Not reentrant: the last immediate and the memory set by disassemble_in_process are
// module state (the debugger has one thread).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "process/target_memory.h"

namespace vantor::disasm {

// Decodes the instruction at `address`, writes its line to `text` and advances `address`
// by its length. The 16 bytes are read through the memory set by disassemble_in_process,
// or else straight from the debugger's own address space.
void disassemble(std::string& text, Address& address);

// The same, reading the debugged program's memory (one read of 16 bytes; an unreadable
// tail reads as zeros).
void disassemble_in_process(TargetMemory& memory, std::string& text, Address& address);

// The immediate of the last decoded instruction, sign-extended to 64 bits; 0 after one
// without an immediate, unchanged by a 0xCC byte, which no row decodes.
std::uint64_t last_immediate();

// "%8.8x:%8.8x" of the address's two halves when `full`, else "%x:%8.8x".
std::string format_code_address(Address address, bool full);

// Decodes from a buffer of 16 bytes taken at `address`; returns the length.
std::size_t disassemble_bytes(const std::uint8_t* bytes16, Address address, std::string& text);

}  // namespace vantor::disasm
