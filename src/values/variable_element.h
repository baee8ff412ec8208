// Elements of named variables and of structure components, made from their debug records
// as docs/debug-format.md lays them out:
// - the debug type code becomes the element type through element_type_from_debug_type;
// - `size` is the size of one value (the declared length for CHARACTER, one element of an
//   array), except for a constant, whose size counts all its bytes;
// - an array descriptor gives, per dimension, the lower bound, the extent and the distance
//   in bytes between neighbours (0: the dense column-major distance is used); the upper
//   bound is lower + extent - 1, so an extent of 0 is an empty dimension. A variable bound
//   is an 8-byte integer at the address its kind gives, relative to the variable's base;
// - a POINTER or ALLOCATABLE variable's address is the slot holding its data's address,
//   except for address types 11 and 12, which the frame has already read through; a data
//   address of 0 (or the never-assigned fill 0x80) means not associated / not allocated;
// - address type 4 is a constant: its bytes come with the record;
// - a component's address value is its offset in the structure (address type 0).
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "stack/stack_frame.h"
#include "values/element.h"

namespace vantor {

// Where variables of one scope live.
class VariableLocator {
 public:
  virtual ~VariableLocator() = default;
  virtual VariableAddress locate(std::uint32_t address_type, std::uint64_t value, const VariableRecord* variable,
                                 Address base) = 0;
};

// The element of a routine's variable in a frame. Always an element: failures (out of
// scope, unassigned POINTER, unallocated array, untouched COMMON) are its error code.
std::unique_ptr<element> make_variable_element(StackFrame& frame, const VariableRecord& record);
std::unique_ptr<element> make_variable_element(VariableLocator& locator, TargetMemory& memory,
                                               std::int32_t lang_code, const VariableRecord& record);

// ---- structure components ----
struct structure_component {
  std::string name;  // as stored
  std::unique_ptr<element> value;
};
// The components of a structure value, in declaration order; functions, constants and
// typedefs are left out unless the structure asks for all of them.
std::vector<structure_component> component_elements(const element& structure, TargetMemory& memory);
// The component of that name (case ignored in Fortran); null when there is none.
std::unique_ptr<element> find_component(const element& structure, std::string_view name, TargetMemory& memory);

}  // namespace vantor
