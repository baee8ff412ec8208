#include "values/eval_subscripts.h"

#include <cstring>

#include "values/error_codes.h"
#include "values/eval_operations.h"
#include "values/variable_element.h"

namespace vantor {

namespace {

bool known_extent(const array_info& a, int d) { return a.last_element[d] >= a.first_element[d] - 1; }

std::uint64_t offset_of(std::int64_t index, std::int64_t first, std::int64_t distance) {
  return (static_cast<std::uint64_t>(index) - static_cast<std::uint64_t>(first)) * static_cast<std::uint64_t>(distance);
}

// The array a pointer points at: one dimension of unknown extent from 0, as in C.
std::unique_ptr<element> array_from_pointer(const element& pointer, TargetMemory& memory) {
  if (!pointer.next || pointer.next->type == kTypeVoid) return nullptr;
  auto array = make_element(kTypeArray, pointer.lang_code);
  array->address = static_cast<Address>(value_int64(pointer, memory));
  array->next = object_at(*pointer.next, 0);
  array->size = pointer.next->size;
  array->array = std::make_unique<array_info>();
  array->array->num_dims = 1;
  array->array->first_element[0] = 0;
  array->array->last_element[0] = -1;
  array->array->distance[0] = pointer.next->size > 0 ? pointer.next->size : 1;
  return array;
}

}  // namespace

std::int32_t apply_subscripts(std::unique_ptr<element>& base, std::vector<Subscript>& subscripts,
                              TargetMemory& memory) {
  if (base->type == kTypePointer8) {
    auto array = array_from_pointer(*base, memory);
    if (!array) return kErrorArrayExpected;
    base = std::move(array);
  }
  if (base->type != kTypeArray || !base->array || !base->next) return kErrorArrayExpected;
  array_info& a = *base->array;
  for (Subscript& s : subscripts) {
    int d = a.indexes_given;
    if (d >= a.num_dims || d >= kMaxRank) return kErrorTooManySubscripts;
    if (s.is_section) {
      // Sections of held constants would need their bytes regathered; they have no address.
      if (base->is_constant()) return kErrorNoAddress;
      std::int64_t lower = s.has_lower ? s.lower : a.first_element[d];
      std::int64_t upper = s.has_upper ? s.upper : a.last_element[d];
      if (lower < a.first_element[d]) lower = a.first_element[d];
      if (known_extent(a, d) && upper > a.last_element[d]) upper = a.last_element[d];
      base->address += offset_of(lower, a.first_element[d], a.distance[d]);
      a.first_element[d] = lower;
      a.last_element[d] = upper;
      a.indexes[d] = lower;
      a.section_dims = static_cast<std::uint8_t>(a.section_dims | (1u << d));
    } else {
      if (!is_integer_type(s.value->type)) return kErrorSubscriptNotInteger;
      a.indexes[d] = value_int64(*s.value, memory);
    }
    a.indexes_given = static_cast<std::int8_t>(d + 1);
  }
  return 0;
}

std::unique_ptr<element> form_subscripted(std::unique_ptr<element> array) {
  if (array->type != kTypeArray || !array->array || array->array->indexes_given == 0 || !array->next) return array;
  const array_info& a = *array->array;
  int given = std::min<int>(a.indexes_given, kMaxRank);
  bool checked = a.last_element[0] > a.first_element[0];
  std::uint64_t offset = 0;
  for (int d = 0; d < given; ++d) {
    if (a.section_dims & (1u << d)) continue;
    std::int64_t index = a.indexes[d];
    if (checked && known_extent(a, d) && (index < a.first_element[d] || index > a.last_element[d]))
      return make_error_element(kErrorSubscriptOutOfBounds, array->lang_code);
    offset += offset_of(index, a.first_element[d], a.distance[d]);
  }

  // The dimensions that remain: sections and those without a subscript.
  array_info remaining;
  std::int64_t count = 1;
  for (int d = 0; d < std::min<int>(a.num_dims, kMaxRank); ++d) {
    if (d < given && !(a.section_dims & (1u << d))) continue;
    int r = remaining.num_dims++;
    remaining.first_element[r] = a.first_element[d];
    remaining.last_element[r] = a.last_element[d];
    remaining.distance[r] = a.distance[d];
    std::int64_t extent = a.last_element[d] - a.first_element[d] + 1;
    count = (extent >= 0 && count >= 0 && extent < (1ll << 31)) ? count * extent : -1;
  }

  if (remaining.num_dims == 0) {
    if (array->is_constant()) {
      std::int64_t size = array->next->size;
      if (size < 0 || offset > static_cast<std::uint64_t>(array->size) ||
          static_cast<std::uint64_t>(size) > static_cast<std::uint64_t>(array->size) - offset)
        return make_error_element(kErrorSubscriptOutOfBounds, array->lang_code);
      auto held = clone_element(*array->next);
      set_constant(*held, constant_bytes(*array) + offset, size, held->type);
      return held;
    }
    return object_at(*array->next, array->address + offset);
  }
  auto section = object_at(*array, array->address + offset);
  *section->array = remaining;
  section->address_kind = kAddressSection;
  section->size = count >= 0 ? count * array->next->size : array->next->size;
  return section;
}

std::unique_ptr<element> select_component(const element& base, std::string_view name, bool through_pointer,
                                          TargetMemory& memory) {
  std::unique_ptr<element> pointee;
  const element* structure = &base;
  if (through_pointer) {
    if (base.type != kTypePointer8 || !base.next || base.next->type != kTypeStructure)
      return make_error_element(kErrorStructurePointerExpected, base.lang_code);
    pointee = dereference(base, memory);
    if (pointee->error_code) return pointee;
    structure = pointee.get();
  } else if (base.type != kTypeStructure) {
    return make_error_element(kErrorStructureExpected, base.lang_code);
  }
  auto component = find_component(*structure, name, memory);
  if (!component) return make_error_element(kErrorMemberNotFound, base.lang_code);
  return component;
}

}  // namespace vantor
