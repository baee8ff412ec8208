// Reading a pattern row's text: the pieces that the decoder, the opcode index and the
// tests' sample maker must read the same way.
#pragma once

namespace vantor::disasm::pattern_text {

inline const char* skip_spaces(const char* p) {
  while (*p == ' ') ++p;
  return p;
}

// The next four bit characters read "0100": the row has a REX group here.
inline bool rex_group_follows(const char* p) {
  static constexpr char kRex[] = "0100";
  for (int i = 0; i < 4; ++i) {
    p = skip_spaces(p);
    if (*p++ != kRex[i]) return false;
  }
  return true;
}

// Returns the position after the next eight bit characters; `ones` counts their 1s (two
// or more in a REX group mean REX.W is required).
inline const char* skip_group(const char* p, int& ones) {
  ones = 0;
  for (int i = 0; i < 8; ++i) {
    p = skip_spaces(p);
    if (*p == '\0') break;
    if (*p == '1') ++ones;
    ++p;
  }
  return p;
}

}  // namespace vantor::disasm::pattern_text
