#include "support/debug_image_builder.h"

#include <algorithm>
#include <stdexcept>

namespace vantor::testing {

namespace {

constexpr std::uint8_t kTagVariable = 0, kTagDerivedType = 1, kTagEnd = 2, kTagCommonBlock = 3;
constexpr std::uint32_t kHeaderBytes = 0x400;
constexpr std::uint8_t kCodeFill = 0x8B;  // neither a no-operation nor a breakpoint byte
constexpr std::uint8_t kNoOperation = 0x90;
constexpr std::uint32_t kUndefinedKey = 0xFFFFFFFF;

template <typename T>
void put(std::vector<std::uint8_t>& out, T value) {
  std::uint8_t bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  out.insert(out.end(), bytes, bytes + sizeof value);
}

template <typename T>
void put_at(std::vector<std::uint8_t>& out, std::size_t at, T value) {
  if (out.size() < at + sizeof value) out.resize(at + sizeof value);
  std::memcpy(out.data() + at, &value, sizeof value);
}

void put_text(std::vector<std::uint8_t>& out, const std::string& text) {
  out.insert(out.end(), text.begin(), text.end());
  out.push_back(0);
}

void put_magic(std::vector<std::uint8_t>& out, const std::string& magic) {
  for (std::size_t i = 0; i < 4; ++i) out.push_back(i < magic.size() ? static_cast<std::uint8_t>(magic[i]) : 0);
}

std::uint32_t aligned(std::uint32_t value, std::uint32_t alignment) {
  return (value + alignment - 1) / alignment * alignment;
}

std::uint32_t descriptor_word(const VariableSpec& spec) {
  return (spec.address_type & 0xF) | ((spec.type_code & 0x1F) << 4) | (spec.array ? 1u << 9 : 0u) |
         (spec.attributes & (0xFu << 10));
}

}  // namespace

// ---- specs ----------------------------------------------------------------------------

ArraySpec ArraySpec::fixed(const std::vector<std::pair<std::int64_t, std::int64_t>>& bounds,
                           std::int64_t element_size) {
  ArraySpec spec;
  std::int64_t stride = element_size;
  for (const auto& [start, size] : bounds) {
    spec.dimensions.push_back({BoundSpec::constant(start), BoundSpec::constant(size), BoundSpec::constant(stride), 0});
    stride *= size;
  }
  return spec;
}

VariableSpec VariableSpec::at(std::string name, std::uint32_t address_type, std::uint32_t type_code,
                              std::uint64_t address_value, std::uint32_t size) {
  VariableSpec spec;
  spec.name = std::move(name);
  spec.address_type = address_type;
  spec.type_code = type_code;
  spec.address_value = address_value;
  spec.size = size;
  return spec;
}


// ---- routines -------------------------------------------------------------------------

RoutineBuilder& RoutineBuilder::line(std::int32_t line, std::int32_t offset) {
  lines_.emplace_back(line, offset);
  return *this;
}

std::uint32_t RoutineBuilder::key_of_next_record() const {
  // The stream starts 16 bytes into the block; the key is the position after the tag,
  // counted from the magic.
  return static_cast<std::uint32_t>(16 + stream_.size() + 1 - 4);
}

void RoutineBuilder::write_variable(const VariableSpec& spec) {
  put(stream_, spec.first_word);
  put(stream_, descriptor_word(spec));
  put(stream_, spec.address_value);
  put(stream_, spec.size);
  if (spec.type_key) {
    put(stream_, *spec.type_key);
  } else {
    if (spec.derived_type >= 0) type_key_patches_.emplace_back(stream_.size(), spec.derived_type);
    put(stream_, std::uint32_t{0});
  }
  std::uint32_t common = spec.common_key ? *spec.common_key
                         : spec.common_block >= 0 ? common_keys_.at(static_cast<std::size_t>(spec.common_block))
                                                  : 0;
  put(stream_, common);
  put(stream_, spec.extra_word);
  put(stream_, spec.format_marker);
  put_text(stream_, spec.name);
  if (spec.address_type == 4) stream_.insert(stream_.end(), spec.constant.begin(), spec.constant.end());
  if (!spec.array) return;

  const ArraySpec& array = *spec.array;
  std::int32_t rank = static_cast<std::int32_t>(array.dimensions.size());
  std::uint32_t mask = 0;
  for (std::int32_t d = 0; d < rank; ++d) {
    const DimensionSpec& dimension = array.dimensions[static_cast<std::size_t>(d)];
    const BoundSpec* bounds[3] = {&dimension.start, &dimension.size, &dimension.stride};
    for (int k = 0; k < 3; ++k)
      if (bounds[k]->variable && 3 * d + k < 32) mask |= 1u << (3 * d + k);
  }
  put(stream_, static_cast<std::uint32_t>(rank) | (array.dynamic ? 0x80000000u : 0u));
  put(stream_, mask);
  for (const DimensionSpec& dimension : array.dimensions) {
    for (const BoundSpec* bound : {&dimension.start, &dimension.size, &dimension.stride}) {
      if (array.dynamic && bound->variable) put(stream_, static_cast<std::uint64_t>(bound->address_type));
      put(stream_, bound->value);
    }
    put(stream_, dimension.fourth);
  }
}

RoutineBuilder& RoutineBuilder::variable(const VariableSpec& spec) {
  stream_.push_back(kTagVariable);
  write_variable(spec);
  return *this;
}

int RoutineBuilder::declare_type(const std::string& name) {
  types_.push_back({name, std::nullopt});
  return static_cast<int>(types_.size() - 1);
}

RoutineBuilder& RoutineBuilder::define_type(int handle, const std::vector<VariableSpec>& components) {
  TypeSlot& slot = types_.at(static_cast<std::size_t>(handle));
  slot.key = key_of_next_record();
  stream_.push_back(kTagDerivedType);
  put(stream_, *slot.key);
  put_text(stream_, slot.name);
  put(stream_, static_cast<std::int32_t>(components.size()));
  for (const VariableSpec& component : components) write_variable(component);
  return *this;
}

int RoutineBuilder::derived_type(const std::string& name, const std::vector<VariableSpec>& components) {
  int handle = declare_type(name);
  define_type(handle, components);
  return handle;
}

int RoutineBuilder::common_block(const std::string& name) {
  common_keys_.push_back(key_of_next_record());
  stream_.push_back(kTagCommonBlock);
  put(stream_, common_keys_.back());
  put_text(stream_, name);
  return static_cast<int>(common_keys_.size() - 1);
}

RoutineBuilder& RoutineBuilder::raw_tag(std::uint8_t tag) {
  stream_.push_back(tag);
  return *this;
}

RoutineBuilder& RoutineBuilder::raw_bytes(const std::vector<std::uint8_t>& bytes) {
  stream_.insert(stream_.end(), bytes.begin(), bytes.end());
  return *this;
}

std::uint32_t RoutineBuilder::type_key(int handle) const {
  const auto& key = types_.at(static_cast<std::size_t>(handle)).key;
  return key ? *key : kUndefinedKey;
}

std::vector<std::uint8_t> RoutineBuilder::debug_block() const {
  std::vector<std::uint8_t> stream = stream_;
  for (const auto& [at, handle] : type_key_patches_) put_at(stream, at, type_key(handle));

  std::vector<std::uint8_t> block;
  put(block, lead_word_);
  put_magic(block, block_magic_);
  // From the magic to the line table: the rest of the header, the stream, its end tag.
  std::int32_t stream_size = static_cast<std::int32_t>(12 + stream.size() + 5);
  put(block, stream_size_word_ ? *stream_size_word_ : stream_size);
  put(block, std::uint32_t{0});
  block.insert(block.end(), stream.begin(), stream.end());
  block.push_back(kTagEnd);
  put_magic(block, end_magic_);
  put(block, line_count_word_ ? *line_count_word_ : static_cast<std::int32_t>(lines_.size()));
  for (const auto& [line, offset] : lines_) {
    put(block, line);
    put(block, offset);
  }
  put_text(block, file_name_);
  return block;
}

// ---- the image ------------------------------------------------------------------------

DebugImageBuilder::DebugImageBuilder(Address base, std::uint32_t size_of_image)
    : base_(base), size_of_image_(size_of_image) {}

RoutineBuilder& DebugImageBuilder::routine(const std::string& name, std::uint32_t start_rva, std::uint32_t length) {
  routines_.push_back(std::unique_ptr<RoutineBuilder>(new RoutineBuilder(name, start_rva, length)));
  return *routines_.back();
}

RoutineBuilder& DebugImageBuilder::operator[](const std::string& name) {
  for (auto& routine : routines_)
    if (routine->name() == name) return *routine;
  throw std::out_of_range("no routine " + name);
}

Address DebugImageBuilder::address_of(const std::string& routine) const {
  for (const auto& r : routines_)
    if (r->name() == routine) return base_ + r->start_;
  throw std::out_of_range("no routine " + routine);
}

Address DebugImageBuilder::block_address(const std::string& routine) const {
  return base_ + block_rvas_.at(routine);
}

std::vector<std::uint8_t> DebugImageBuilder::file_bytes() const {
  const std::uint32_t pe = new_header_offset_;
  std::vector<std::uint8_t> file(std::max<std::size_t>(kHeaderBytes, pe + 4 + 20 + 240 + 40), 0);
  file[0] = 'M';
  file[1] = 'Z';
  std::int32_t debug_offset = debug_info_offset_ ? *debug_info_offset_ : with_map_ ? static_cast<std::int32_t>(placed_map_rva_) : 0;
  put_at(file, 28, debug_offset);
  put_at(file, 60, pe);
  for (std::size_t i = 0; i < 4; ++i) file[pe + i] = i < pe_signature_.size() ? static_cast<std::uint8_t>(pe_signature_[i]) : 0;
  const std::size_t header = pe + 4;
  put_at(file, header + 0, std::uint16_t{0x8664});  // x86-64
  put_at(file, header + 2, std::uint16_t{1});       // one section
  put_at(file, header + 16, std::uint16_t{240});    // size of the optional header
  put_at(file, header + 18, std::uint16_t{0x22});   // executable, large-address aware
  const std::size_t optional = header + 20;
  put_at(file, optional + 0, std::uint16_t{0x20B});  // PE32+
  put_at(file, optional + 24, base_);
  put_at(file, optional + 32, std::uint32_t{0x1000});  // section alignment
  put_at(file, optional + 36, std::uint32_t{0x200});   // file alignment
  put_at(file, optional + 56, size_of_image_);
  put_at(file, optional + 60, kHeaderBytes);
  put_at(file, optional + 68, std::uint16_t{3});  // console
  put_at(file, optional + 108, std::uint32_t{16});
  const std::size_t section = optional + 240;
  std::memcpy(file.data() + section, ".text\0\0\0", 8);
  put_at(file, section + 8, size_of_image_ - 0x1000);
  put_at(file, section + 12, std::uint32_t{0x1000});
  return file;
}

std::vector<std::uint8_t> DebugImageBuilder::map_bytes() const {
  std::vector<std::uint8_t> map;
  put_magic(map, map_magic_);
  put(map, map_version_);
  for (const auto& routine : routines_) {
    const RoutineBuilder& r = *routine;
    put_text(map, r.name_);
    Address offset = r.relative_ ? 0 : base_;
    put(map, std::uint64_t{r.relative_ ? 1u : 0u});
    put(map, offset + r.start_);
    put(map, offset + r.start_ + r.length_ - 1);
    Address block = 0;
    if (r.has_block_) block = offset + block_rvas_.at(r.name_);
    put(map, block);
    put(map, r.second_value_);
    put(map, r.frame_offset_);
  }
  map.push_back(0);
  return map;
}

void DebugImageBuilder::install(os::InMemorySystem& system, const std::wstring& path) {
  // The map goes after the code unless placed, the blocks after the map.
  std::uint32_t code_end = 0x1000;
  for (const auto& routine : routines_) code_end = std::max(code_end, routine->start_ + routine->length_);
  placed_map_rva_ = map_rva_ ? *map_rva_ : aligned(code_end, 16);

  std::uint32_t map_size = 9;
  for (const auto& routine : routines_) map_size += static_cast<std::uint32_t>(routine->name_.size() + 1 + 40);
  std::uint32_t block_rva = blocks_rva_ ? *blocks_rva_ : aligned(placed_map_rva_ + map_size, 16);
  std::vector<std::pair<std::uint32_t, std::vector<std::uint8_t>>> blocks;
  block_rvas_.clear();
  for (const auto& routine : routines_) {
    if (!routine->has_block_) continue;
    block_rvas_[routine->name_] = block_rva;
    blocks.emplace_back(block_rva, routine->debug_block());
    block_rva = aligned(block_rva + static_cast<std::uint32_t>(blocks.back().second.size()), 8);
  }

  std::vector<std::uint8_t> file = file_bytes();
  system.poke(base_, file);
  for (const auto& routine : routines_) {
    std::vector<std::uint8_t> code(routine->length_, kCodeFill);
    for (const auto& [line, offset] : routine->lines_)
      if (offset >= 0 && static_cast<std::uint32_t>(offset) < routine->length_) code[static_cast<std::size_t>(offset)] = kNoOperation;
    system.poke(base_ + routine->start_, code);
  }
  if (with_map_) {
    system.poke(base_ + placed_map_rva_, map_bytes());
    for (const auto& [rva, bytes] : blocks) system.poke(base_ + rva, bytes);
  }
  system.add_file(path, std::move(file));
}

}  // namespace vantor::testing
