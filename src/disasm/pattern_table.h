// The pattern table: one row per supported encoding, tried in order by the decoder.
//
// A row's text is read left to right, one character per bit of the instruction (most
// significant bit of each byte first), prefixes included; spaces only lay it out:
//   0 1        the bit must be 0 or 1 (a 0 at the X or B bit of a present REX byte
//              accepts either value)
//   R r        one bit of the first or second general register (REX bit first, then the
//              three field bits)
//   X x        the same for the first or second XMM register
//   M m        one bit of the ModRM mod and r/m fields of a memory operand that is the
//              first or second operand; the fifth of them completes the ModRM byte
//   N C        the shift group's by-one/by-CL bit and its CL bit
//   I J K L    an 8-, 16-, 32- or 64-bit immediate (I is absent when N is 1)
//   i j k      an 8-, 16- or 32-bit branch displacement
// Any other letter makes the row fail where it stands: rows written with them record
// encodings this decoder does not show (VEX fields d, v and P; x87 stack registers S;
// MMX registers d) and never match.
//
// When a group "0100 ...." stands where a REX prefix may be (right after the counted
// prefixes), an instruction without REX skips that group unless the group asks for
// REX.W. The first row that matches wins, so a row must come before any more general
// row that would also match its bytes.
#pragma once

#include <cstddef>
#include <span>

#include "disasm/mnemonics.h"

namespace vantor::disasm {

struct PatternRow {
  Mnemonic mnemonic;  // Mnemonic::NONE ends the table
  const char* bits;
};

// Every row, including the end marker.
std::span<const PatternRow> pattern_table();

// True when the row holds a letter outside the alphabet, so that it can never match.
bool is_unmatchable(const char* bits);

}  // namespace vantor::disasm
