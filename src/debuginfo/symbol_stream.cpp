#include "debuginfo/symbol_stream.h"

#include <cstdio>
#include <map>
#include <vector>

#include "common/console.h"
#include "common/messages.h"
#include "debuginfo/debug_table_memory.h"
#include "os/os.h"
#include "process/user_space_buffer.h"

namespace vantor {

namespace {

// The magics as 32-bit values of their bytes in memory order.
constexpr std::uint32_t kRhub = 0x42554852;  // "RHUB"
constexpr std::uint32_t kBarb = 0x42524142;  // "BARB"
constexpr std::int32_t kStreamStart = 16;
// A stream this large is a corrupt size word, not a routine's symbols.
constexpr std::int32_t kLargestStream = 1 << 26;

constexpr std::uint32_t kTagVariable = 0;
constexpr std::uint32_t kTagDerivedType = 1;
constexpr std::uint32_t kTagEnd = 2;
constexpr std::uint32_t kTagCommonBlock = 3;

constexpr std::uint32_t kAddressTypeConstant = 4;
constexpr std::uint32_t kAddressTypeCommon = 8;
constexpr std::uint32_t kTypeCodeDerived = 14;

constexpr std::int32_t kVariableHeaderSize = 36;
constexpr int kLongestName = 255;

class SymbolStreamReader {
 public:
  SymbolStreamReader(TargetMemory& memory, MapEntry& routine) : memory_(memory), routine_(routine) {}
  bool read();

 private:
  std::unique_ptr<VariableRecord> read_variable();
  std::unique_ptr<ArrayDescriptorRecord> read_array_descriptor();
  bool read_derived_type();
  void read_common_block();
  void use_derived_type(VariableRecord& variable);
  void define_derived_type(const DerivedTypeRecord* type);

  // Types and blocks are known by the position of the byte after their tag, counted from
  // the block's magic.
  std::uint32_t key_here() const { return static_cast<std::uint32_t>(buffer_->cursor_address() - block_ - 4); }
  std::int64_t bytes_left() const {
    return static_cast<std::int64_t>(stream_end_) - static_cast<std::int64_t>(buffer_->cursor_address());
  }

  TargetMemory& memory_;
  MapEntry& routine_;
  UserSpaceBuffer* buffer_ = nullptr;
  Address block_ = 0;
  Address stream_end_ = 0;  // where the line table starts

  // A variable may use a derived type before the type's record arrives: it then waits
  // under the type's key and is filled in when the record is registered.
  struct TypeReference {
    const DerivedTypeRecord* type = nullptr;
    std::vector<const DerivedTypeRecord**> waiting;
  };
  std::map<std::uint32_t, TypeReference> types_;
  std::vector<CommonBlockRecord*> commons_;
};

bool SymbolStreamReader::read() {
  block_ = routine_.debug_block;
  DebugTableMemory memory(memory_);
  UserSpaceBuffer buffer(memory, block_, kDebugTableChunkSize);
  buffer_ = &buffer;

  buffer.read_32();  // the lead word, kept by the map reader
  std::uint32_t rhub = 0;
  buffer.read_block(&rhub, 4);
  VANTOR_ASSERT(rhub == kRhub, "rhub == 'BUHR'", "StackFrame");
  if (rhub != kRhub) return false;
  std::int32_t stream_size = buffer.read_32();
  if (stream_size < kStreamStart - 4 || stream_size > kLargestStream) return false;
  stream_end_ = block_ + 4 + static_cast<Address>(stream_size);
  // The whole stream is held at once, so positions inside the block stay valid.
  buffer.ensure(stream_size + 16, true);
  buffer.read_32();  // not used

  routine_.symbols = std::make_unique<F95SymbolTable>();
  for (;;) {
    if (bytes_left() <= 0) return false;  // no end tag before the line table
    std::uint32_t tag = buffer.read_unsigned_byte();
    switch (tag) {
      case kTagVariable: {
        auto variable = read_variable();
        if (!variable) return false;
        routine_.symbols->add_variable(std::move(variable));
        break;
      }
      case kTagDerivedType:
        if (!read_derived_type()) return false;
        break;
      case kTagCommonBlock:
        read_common_block();
        break;
      case kTagEnd: {
        std::uint32_t barb = 0;
        buffer.read_block(&barb, 4);
        VANTOR_ASSERT(barb == kBarb, "barb == 'BRAB'", "StackFrame");
        routine_.symbols_loaded = true;
        return true;
      }
      default:
        console_print("unexpected tag %d\n", static_cast<int>(tag));
        os::system().end_debugger(1);
        return false;
    }
  }
}

std::unique_ptr<VariableRecord> SymbolStreamReader::read_variable() {
  UserSpaceBuffer& buffer = *buffer_;
  auto variable = std::make_unique<VariableRecord>();
  variable->first_word = static_cast<std::uint32_t>(buffer.read_32());
  variable->descriptor = static_cast<std::uint32_t>(buffer.read_32());
  variable->address_value = buffer.read_64();
  variable->size = static_cast<std::uint32_t>(buffer.read_32());
  variable->type_key = static_cast<std::uint32_t>(buffer.read_32());
  variable->common_key = static_cast<std::uint32_t>(buffer.read_32());
  variable->extra_word = static_cast<std::uint32_t>(buffer.read_32());
  if (buffer.read_32() != 0) {
    char text[kLongestName + 128];
    std::snprintf(text, sizeof text, "%s compiled with old debug information, please recompile ",
                  routine_.name.c_str());
    ShowInformationMessage(text);
    return nullptr;
  }
  char name[kLongestName + 1];
  buffer.read_string(name, sizeof name);
  variable->name = name;

  if (variable->address_type() == kAddressTypeConstant) {
    if (variable->size > bytes_left()) return nullptr;
    variable->constant_value.resize(variable->size);
    buffer.read_block(variable->constant_value.data(), static_cast<std::int32_t>(variable->size));
  }
  if (variable->type_code() == kTypeCodeDerived) use_derived_type(*variable);
  if (variable->address_type() == kAddressTypeCommon)
    for (CommonBlockRecord* block : commons_)
      if (block->key == variable->common_key) {
        variable->common = block;
        break;
      }
  if (variable->has_array_descriptor()) variable->array = read_array_descriptor();
  return variable;
}

std::unique_ptr<ArrayDescriptorRecord> SymbolStreamReader::read_array_descriptor() {
  UserSpaceBuffer& buffer = *buffer_;
  auto descriptor = std::make_unique<ArrayDescriptorRecord>();
  std::int32_t rank_word = buffer.read_32();
  std::uint32_t mask = static_cast<std::uint32_t>(buffer.read_32());
  descriptor->rank = rank_word & 0xF;
  descriptor->dynamic = rank_word < 0;
  for (std::int32_t d = 0; d < descriptor->rank; ++d) {
    ArrayDimension& dimension = descriptor->dimensions[static_cast<std::size_t>(d)];
    for (int k = 0; k < 3; ++k) {
      int bit = 3 * d + k;
      bool variable_bound = bit < 32 && ((mask >> bit) & 1) != 0;
      ArrayBound& bound = dimension.bounds[static_cast<std::size_t>(k)];
      if (descriptor->dynamic) {
        // A variable bound of a dynamic descriptor carries its own address type.
        bound.kind = variable_bound ? static_cast<std::int32_t>(buffer.read_64() & 0xFF) : kBoundConstant;
        bound.value = static_cast<std::int64_t>(buffer.read_64());
      } else {
        bound.kind = variable_bound ? kBoundVariableStatic : kBoundConstant;
        bound.value = static_cast<std::int64_t>(buffer.read_64());
      }
    }
    dimension.fourth = static_cast<std::int64_t>(buffer.read_64());
  }
  return descriptor;
}

bool SymbolStreamReader::read_derived_type() {
  UserSpaceBuffer& buffer = *buffer_;
  auto type = std::make_unique<DerivedTypeRecord>();
  type->key = key_here();
  buffer.read_32();  // the key as the compiler stored it; the record's position is what counts
  char name[kLongestName + 1];
  buffer.read_string(name, sizeof name);
  type->name = name;
  std::int32_t count = buffer.read_32();
  // Every component takes at least its header and a name's zero byte.
  if (count < 0 || count > bytes_left() / (kVariableHeaderSize + 1)) return false;
  for (std::int32_t i = 0; i < count; ++i) {
    auto component = read_variable();
    if (!component) return false;
    type->components.push_back(std::move(component));
  }
  define_derived_type(routine_.symbols->add_derived_type(std::move(type)));
  return true;
}

void SymbolStreamReader::read_common_block() {
  auto block = std::make_unique<CommonBlockRecord>();
  block->key = key_here();
  buffer_->read_32();  // the stored key, as for types
  char name[kLongestName + 1];
  buffer_->read_string(name, sizeof name);
  block->name = std::string("/") + name + "/";
  commons_.push_back(routine_.symbols->add_common_block(std::move(block)));
}

void SymbolStreamReader::use_derived_type(VariableRecord& variable) {
  TypeReference& reference = types_[variable.type_key];
  if (reference.type)
    variable.structure = reference.type;
  else
    reference.waiting.push_back(&variable.structure);
}

void SymbolStreamReader::define_derived_type(const DerivedTypeRecord* type) {
  TypeReference& reference = types_[type->key];
  VANTOR_ASSERT(!reference.type, "!so->struct_info", "StackFrame");
  if (reference.type) return;
  reference.type = type;
  for (const DerivedTypeRecord** slot : reference.waiting) *slot = type;
  reference.waiting.clear();
}

}  // namespace

bool load_routine_symbols(TargetMemory& memory, MapEntry& routine) {
  if (routine.symbols_loaded) return true;
  if (!routine.debug_block) return false;
  return SymbolStreamReader(memory, routine).read();
}

}  // namespace vantor
