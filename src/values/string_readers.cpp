#include "values/string_readers.h"

#include <algorithm>
#include <new>
#include <vector>

namespace vantor {

void escape_character(std::uint8_t byte, std::string& output) {
  switch (byte) {
    case 0xFF: output += "\\xff"; break;
    case 0x00: output += "\\0"; break;
    case 0x09: output += "\\t"; break;
    case 0x0A: output += "\\n"; break;
    case 0x0D: output += "\\r"; break;
    case 0x1A: output += "\\x1a"; break;
    case 0x22: output += "\\\""; break;
    case 0x27: output += "\\'"; break;
    case 0x5C: output += "\\\\"; break;
    default: output += static_cast<char>(byte); break;
  }
}

namespace {

constexpr std::size_t kStringBlock = 64;

// One block of the string; a block that runs into unreadable memory is read byte by byte
// up to the first byte that fails, so a string ending just before a hole is still shown.
std::size_t read_block(TargetMemory& memory, Address address, std::uint8_t* block) {
  if (memory.read(address, block, kStringBlock) == kStringBlock) return kStringBlock;
  std::size_t n = 0;
  while (n < kStringBlock && memory.read(address + n, block + n, 1) == 1) ++n;
  return n;
}

void copy_fortran_characters(const std::uint8_t* bytes, TextBuffer& output, std::int64_t length) {
  if (length <= 0 || length >= kFortranStringLimit) return;
  std::string text(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
  for (char& c : text)
    if (c == '\0' || c == '\t' || c == '\n' || c == '\r') c = '?';
  output.append(text);
}

}  // namespace

void c_string_from_process(TargetMemory& memory, Address address, TextBuffer& output, std::int64_t count) {
  std::string text;
  std::uint8_t block[kStringBlock];
  std::int64_t taken = 0;
  bool done = false;
  while (!done && text.size() < kCStringTextLimit) {
    std::size_t got = read_block(memory, address + static_cast<Address>(taken), block);
    if (got == 0) break;
    for (std::size_t i = 0; i < got; ++i) {
      if (count == 0 && block[i] == 0) {
        done = true;
        break;
      }
      escape_character(block[i], text);
      ++taken;
      if ((count > 0 && taken >= count) || text.size() >= kCStringTextLimit) {
        done = true;
        break;
      }
    }
    if (got < kStringBlock) break;
  }
  if (text.size() > kCStringTextLimit) text.resize(kCStringTextLimit);
  if (text.size() == 60) text += "...";
  output.append(text);
}

void fortran_string_from_process(TargetMemory& memory, Address address, TextBuffer& output, std::int64_t length) {
  if (length > kFortranStringLimit) length = kFortranStringLimit;
  if (length <= 0) return;
  std::vector<std::uint8_t> bytes;
  try {
    bytes.assign(static_cast<std::size_t>(length), 0);
  } catch (const std::bad_alloc&) {
    output.append("Not enough memory to display string");
    return;
  }
  memory.read(address, bytes.data(), bytes.size());
  copy_fortran_characters(bytes.data(), output, length);
}

void fortran_string_from_constant(const std::uint8_t* bytes, TextBuffer& output, std::int64_t length) {
  if (bytes == nullptr) return;
  copy_fortran_characters(bytes, output, std::min(length, kFortranStringLimit));
}

}  // namespace vantor
