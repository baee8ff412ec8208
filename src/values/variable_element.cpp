#include "values/variable_element.h"

#include <cstring>

#include "debuginfo/debug_type_codes.h"
#include "debuginfo/symbol_table.h"
#include "process/debugged_process.h"
#include "values/error_codes.h"

namespace vantor {

namespace {

constexpr std::uint32_t kAddressTypeRelative = 0;
constexpr std::uint32_t kAddressTypeConstant = 4;
// Frame slots of POINTER and ALLOCATABLE variables: their address is already the data's,
// read from the slot by the frame.
constexpr std::uint32_t kAddressTypeFramePointer = 11;
constexpr std::uint32_t kAddressTypeHostPointer = 12;
constexpr std::uint64_t kNeverAssignedSlot = 0x8080808080808080ull;

class FrameLocator : public VariableLocator {
 public:
  explicit FrameLocator(StackFrame& frame) : frame_(frame) {}
  VariableAddress locate(std::uint32_t address_type, std::uint64_t value, const VariableRecord* variable,
                         Address base) override {
    return frame_.variable_address(address_type, value, variable, base);
  }

 private:
  StackFrame& frame_;
};

// Components live at offsets from their structure; nothing else can be located there.
class ComponentLocator : public VariableLocator {
 public:
  VariableAddress locate(std::uint32_t address_type, std::uint64_t value, const VariableRecord*,
                         Address base) override {
    VariableAddress where;
    if (address_type != kAddressTypeRelative) {
      where.error = kErrorOutOfScope;
      return where;
    }
    where.address = base + value;
    where.base = base;
    return where;
  }
};

// The element of one value of the record's type (the element type, for an array).
std::unique_ptr<element> value_element(const VariableRecord& record, std::int32_t type, std::int32_t lang_code) {
  auto e = make_element(type, lang_code);
  switch (type) {
    case kTypeStructure:
      e->structure = std::make_unique<structure_info>();
      e->structure->type = record.structure;
      e->size = record.size;
      break;
    case kTypeCharacter: e->size = record.size; break;
    default:
      e->size = scalar_size(type);
      if (e->size == 0) e->size = record.size;
      break;
  }
  return e;
}

struct BoundReader {
  VariableLocator& locator;
  TargetMemory& memory;
  const VariableRecord& record;
  Address base;
  bool held;  // a constant: only constant bounds mean anything

  // False when a variable bound cannot be read.
  bool read(const ArrayBound& bound, std::int64_t& value) {
    if (bound.kind == kBoundConstant) {
      value = bound.value;
      return true;
    }
    if (held) return false;
    std::uint32_t address_type =
        bound.kind == kBoundVariableStatic ? kAddressTypeRelative : static_cast<std::uint32_t>(bound.kind);
    VariableAddress where = locator.locate(address_type, static_cast<std::uint64_t>(bound.value), &record, base);
    if (where.error) return false;
    return memory.read(where.address, &value, 8) == 8;
  }
};

// Fills the descriptor and counts the elements (-1 when some extent is unknown).
bool fill_bounds(array_info& info, const ArrayDescriptorRecord& descriptor, std::int64_t element_size,
                 BoundReader& reader, std::int64_t& count) {
  int rank = descriptor.rank;
  if (rank < 0) rank = 0;
  if (rank > kMaxRank) rank = kMaxRank;
  info.num_dims = static_cast<std::int8_t>(rank);
  std::int64_t dense = element_size;
  count = 1;
  for (int d = 0; d < rank; ++d) {
    const ArrayDimension& dim = descriptor.dimensions[static_cast<std::size_t>(d)];
    std::int64_t lower = 0, extent = 0, stride = 0;
    if (!reader.read(dim.start(), lower) || !reader.read(dim.size(), extent) || !reader.read(dim.stride(), stride))
      return false;
    info.first_element[d] = lower;
    info.last_element[d] = static_cast<std::int64_t>(static_cast<std::uint64_t>(lower) + static_cast<std::uint64_t>(extent) - 1);
    info.distance[d] = stride != 0 ? stride : dense;
    bool known = extent >= 0 && extent < 0x80000000ll;
    if (known && count >= 0 && extent <= (INT64_MAX / 2) / std::max<std::int64_t>(count, 1)) {
      count *= extent;
      dense = static_cast<std::int64_t>(static_cast<std::uint64_t>(dense) * static_cast<std::uint64_t>(extent));
    } else {
      count = -1;
    }
  }
  return true;
}

std::unique_ptr<element> element_from_record(const VariableRecord& record, VariableLocator& locator,
                                             TargetMemory& memory, std::int32_t lang_code, Address base,
                                             const std::uint8_t* held_bytes, std::int64_t held_size) {
  std::int32_t type = element_type_from_debug_type(record.type_code());
  if (type < 0) return make_error_element(kErrorInternal, lang_code);

  std::unique_ptr<element> e = value_element(record, type, lang_code);
  bool is_array = record.has_array_descriptor() && record.array;
  if (is_array) {
    auto array = make_element(kTypeArray, lang_code);
    array->size = e->size;
    array->next = std::move(e);
    array->array = std::make_unique<array_info>();
    e = std::move(array);
  }

  bool held = held_bytes != nullptr || record.address_type() == kAddressTypeConstant;
  if (record.address_type() == kAddressTypeConstant) {
    held_bytes = record.constant_value.data();
    held_size = static_cast<std::int64_t>(record.constant_value.size());
  }

  VariableAddress where;
  if (!held) {
    where = locator.locate(record.address_type(), record.address_value, &record, base);
    if (where.error) return make_error_element(where.error, lang_code);
    e->address = where.address;
    std::uint32_t attributes = record.attributes();
    if (attributes & (kAttributePointer | kAttributeAllocatable)) {
      std::uint64_t data = where.address;
      bool slot_read = record.address_type() == kAddressTypeFramePointer ||
                       record.address_type() == kAddressTypeHostPointer;
      if (!slot_read && memory.read(where.address, &data, 8) != 8)
        return make_error_element(kErrorIllegalPointer, lang_code);
      if (data == 0 || data == kNeverAssignedSlot)
        return make_error_element((attributes & kAttributePointer) ? kErrorPointerNotAssigned : kErrorNotAllocated,
                                  lang_code);
      e->address = data;
    }
  }

  if (is_array) {
    BoundReader reader{locator, memory, record, where.base, held};
    std::int64_t count = 0;
    // A constant array's size counts all its bytes; one element is its first stride.
    if (held && record.array->rank > 0) {
      const ArrayBound& stride = record.array->dimensions[0].stride();
      if (stride.kind == kBoundConstant && stride.value > 0) e->next->size = stride.value;
    }
    if (!fill_bounds(*e->array, *record.array, e->next->size, reader, count))
      return make_error_element(kErrorIllegalPointer, lang_code);
    if (count >= 0) e->size = e->next->size * count;
  }

  if (held) {
    // The constant's bytes, zero-padded when the record carries fewer than its size.
    std::int64_t size = e->size > 0 ? e->size : 0;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size), 0);
    std::int64_t have = std::min(size, std::max<std::int64_t>(held_size, 0));
    if (have > 0) std::memcpy(bytes.data(), held_bytes, static_cast<std::size_t>(have));
    std::int32_t kept_type = e->type;
    set_constant(*e, bytes.data(), size, kept_type);
  }
  return e;
}

}  // namespace

std::unique_ptr<element> make_variable_element(VariableLocator& locator, TargetMemory& memory, std::int32_t lang_code,
                                               const VariableRecord& record) {
  return element_from_record(record, locator, memory, lang_code, 0, nullptr, 0);
}

std::unique_ptr<element> make_variable_element(StackFrame& frame, const VariableRecord& record) {
  if (frame.process == nullptr) return make_error_element(kErrorInternal, frame.language_code());
  FrameLocator locator(frame);
  return make_variable_element(locator, *frame.process, frame.language_code(), record);
}

namespace {

std::unique_ptr<element> component_element(const element& structure, const VariableRecord& component,
                                           TargetMemory& memory) {
  ComponentLocator locator;
  if (structure.is_constant()) {
    const std::uint8_t* bytes = constant_bytes(structure);
    std::int64_t offset = static_cast<std::int64_t>(component.address_value);
    if (component.address_type() == kAddressTypeConstant || offset < 0 || offset > structure.size)
      return element_from_record(component, locator, memory, structure.lang_code, 0, nullptr, 0);
    return element_from_record(component, locator, memory, structure.lang_code, 0, bytes + offset,
                               structure.size - offset);
  }
  return element_from_record(component, locator, memory, structure.lang_code, structure.address, nullptr, 0);
}

// Judged by the record: a component of a constant structure is held, yet still shown.
bool component_is_shown(const VariableRecord& record, const element& component) {
  return component.type != kTypeFunction && record.address_type() != kAddressTypeConstant && !component.is_typedef();
}

}  // namespace

std::vector<structure_component> component_elements(const element& structure, TargetMemory& memory) {
  std::vector<structure_component> components;
  if (structure.type != kTypeStructure || !structure.structure || !structure.structure->type) return components;
  bool all = structure.structure->give_all_components;
  for (const auto& record : structure.structure->type->components) {
    auto component = component_element(structure, *record, memory);
    if (all || component_is_shown(*record, *component)) components.push_back({record->name, std::move(component)});
  }
  return components;
}

std::unique_ptr<element> find_component(const element& structure, std::string_view name, TargetMemory& memory) {
  if (structure.type != kTypeStructure || !structure.structure || !structure.structure->type) return nullptr;
  bool fortran = is_fortran_language(structure.lang_code);
  for (const auto& record : structure.structure->type->components) {
    bool match = fortran ? equal_ignoring_case(record->name, name) : record->name == name;
    if (match) return component_element(structure, *record, memory);
  }
  return nullptr;
}

}  // namespace vantor
