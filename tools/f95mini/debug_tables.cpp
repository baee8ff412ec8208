#include "f95mini/debug_tables.h"

#include <cctype>
#include <cstdio>

namespace f95mini {
namespace {

constexpr std::uint8_t kTagVariable = 0;
constexpr std::uint8_t kTagType = 1;
constexpr std::uint8_t kTagEnd = 2;
constexpr std::uint8_t kTagCommon = 3;
constexpr std::uint8_t kTagUnknown = 9;
constexpr std::size_t kStreamStart = 16;  // block offset of the first tag

void put32(std::vector<std::uint8_t>& b, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}
void put64(std::vector<std::uint8_t>& b, std::uint64_t v) {
  for (int i = 0; i < 8; ++i) b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}
void patch32(std::vector<std::uint8_t>& b, std::size_t at, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b[at + i] = static_cast<std::uint8_t>(v >> (8 * i));
}
void put_name(std::vector<std::uint8_t>& b, const std::string& name) {
  for (char c : name) b.push_back(static_cast<std::uint8_t>(std::toupper(static_cast<unsigned char>(c))));
  b.push_back(0);
}

void put_array(std::vector<std::uint8_t>& b, const ArrayRecord& a) {
  std::uint32_t rank = static_cast<std::uint32_t>(a.dims.size());
  std::uint32_t mask = 0;
  for (std::size_t d = 0; d < a.dims.size(); ++d) {
    const BoundRecord* bounds[3] = {&a.dims[d].start, &a.dims[d].size, &a.dims[d].stride};
    for (int k = 0; k < 3; ++k)
      if (bounds[k]->variable) mask |= 1u << (3 * d + k);
  }
  put32(b, a.dynamic ? (rank | 0x80000000u) : rank);
  put32(b, mask);
  for (const auto& dim : a.dims) {
    const BoundRecord* bounds[3] = {&dim.start, &dim.size, &dim.stride};
    for (const BoundRecord* bound : bounds) {
      if (a.dynamic && bound->variable) put64(b, bound->address_type);
      put64(b, static_cast<std::uint64_t>(bound->value));
    }
    put64(b, static_cast<std::uint64_t>(dim.fourth));
  }
}

// Key of a tag-1/tag-3 record whose tag byte is at `tag_at` within the stream.
std::uint32_t key_of(std::size_t tag_at) { return static_cast<std::uint32_t>(kStreamStart + tag_at + 1 - 4); }

}  // namespace

std::vector<std::uint8_t> variable_record_bytes(const VariableRecord& v, std::uint32_t type_key,
                                                std::uint32_t common_key, bool old_format) {
  std::vector<std::uint8_t> b;
  std::uint32_t word = (v.address_type & 0xF) | ((v.type_code & 0x1F) << 4) | (v.attributes & 0x3C00);
  if (v.array) word |= kArrayDescriptorFollows;
  put32(b, 0);
  put32(b, word);
  put64(b, static_cast<std::uint64_t>(v.value));
  put32(b, v.size);
  put32(b, type_key);
  put32(b, common_key);
  put32(b, 0);
  put32(b, old_format ? 1 : 0);
  put_name(b, v.name);
  if (v.address_type == kAddrConstant) b.insert(b.end(), v.constant.begin(), v.constant.end());
  if (v.array) put_array(b, *v.array);
  return b;
}

std::vector<std::uint8_t> symbol_stream(const DebugBlock& block) {
  std::vector<std::uint8_t> s;
  std::vector<std::uint32_t> common_keys;
  for (const auto& name : block.commons) {
    common_keys.push_back(key_of(s.size()));
    s.push_back(kTagCommon);
    put32(s, common_keys.back());
    put_name(s, name);
  }
  if (block.broken.bad_tag) s.push_back(kTagUnknown);
  // Type keys are known only once the variables are laid out: remember where they go.
  std::vector<std::pair<std::size_t, int>> type_fixups;
  auto record = [&](const VariableRecord& v) {
    std::size_t at = s.size();
    std::uint32_t common_key = v.common_index >= 0 ? common_keys.at(v.common_index) : 0;
    auto bytes = variable_record_bytes(v, 0, common_key, block.broken.old_format);
    s.insert(s.end(), bytes.begin(), bytes.end());
    if (v.type_index >= 0) type_fixups.emplace_back(at + 20, v.type_index);
  };
  for (const auto& v : block.variables) {
    s.push_back(kTagVariable);
    record(v);
  }
  std::vector<std::uint32_t> type_keys;
  for (const auto& t : block.types) {
    type_keys.push_back(key_of(s.size()));
    s.push_back(kTagType);
    put32(s, type_keys.back());
    put_name(s, t.name);
    put32(s, static_cast<std::uint32_t>(t.members.size()));
    for (const auto& m : t.members) record(m);
  }
  for (const auto& [at, index] : type_fixups) patch32(s, at, type_keys.at(index));
  s.push_back(kTagEnd);
  for (char c : std::string("BARB")) s.push_back(static_cast<std::uint8_t>(c));
  return s;
}

void write_bytes(const std::vector<std::uint8_t>& bytes, std::string& out) {
  for (std::size_t i = 0; i < bytes.size(); i += 32) {
    out += "\t.byte ";
    for (std::size_t j = i; j < bytes.size() && j < i + 32; ++j) {
      if (j != i) out += ',';
      out += std::to_string(bytes[j]);
    }
    out += '\n';
  }
}

static std::string asm_string(const std::string& s) {
  std::string r = "\"";
  for (unsigned char c : s) {
    if (c == '"' || c == '\\') {
      r += '\\';
      r += static_cast<char>(c);
    } else if (c < 32 || c > 126) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\%03o", c);
      r += buf;
    } else {
      r += static_cast<char>(c);
    }
  }
  return r + "\"";
}

void write_debug_block(const DebugBlock& block, const std::string& block_label, std::string& out) {
  std::vector<std::uint8_t> stream = symbol_stream(block);
  out += block_label + ":\n";
  if (!block.lead_symbol.empty()) out += "\t.rva " + block.lead_symbol + "\n";
  else out += "\t.long " + std::to_string(block.lead_value) + "\n";
  out += block.broken.bad_magic ? "\t.ascii \"HUBR\"\n" : "\t.ascii \"RHUB\"\n";
  // Distance from the magic to the line count: magic, this word, the unused word, stream.
  out += "\t.long " + std::to_string(12 + stream.size()) + "\n\t.long 0\n";
  write_bytes(stream, out);
  out += "\t.long " + std::to_string(block.lines.size()) + "\n";
  for (const auto& l : block.lines)
    out += "\t.long " + std::to_string(l.line) + ", " + l.label + "-" + block.start_label + "\n";
  out += "\t.asciz " + asm_string(block.file_name) + "\n";
}

void write_routine_map(const std::vector<MapEntryText>& entries, std::uint32_t version, std::string& out) {
  out += "\t.ascii \"QUOR\"\n\t.long " + std::to_string(version) + "\n";
  for (const auto& e : entries) {
    out += "\t.asciz " + asm_string(e.name) + "\n";
    out += "\t.quad 1\n";  // flags: addresses are relative to the load base
    out += "\t.rva " + e.start_label + "\n\t.long 0\n";
    out += "\t.rva " + e.last_byte_label + "\n\t.long 0\n";
    if (e.block_label.empty()) out += "\t.quad 0\n";
    else out += "\t.rva " + e.block_label + "\n\t.long 0\n";
    out += "\t.long 0\n";                                           // second value
    out += "\t.long " + std::to_string(kFrameOffset) + "\n";        // frame offset
  }
  out += "\t.byte 0\n";
}

}  // namespace f95mini
