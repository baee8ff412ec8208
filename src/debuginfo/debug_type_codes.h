// The 5-bit type codes of the debug tables (bits 4-8 of a variable record's descriptor
// word) and the element type each becomes. The debug codes are the compiler's own; only
// 14 (derived type) is fixed by the table format. The test compiler writes these codes
// and the debugger reads them through element_type_from_debug_type: one table for both.
#pragma once

#include <cstdint>

namespace vantor {

enum DebugTypeCode : std::uint32_t {
  kDebugLogical1 = 0,
  kDebugLogical2 = 1,
  kDebugLogical4 = 2,
  kDebugLogical8 = 3,
  kDebugInteger1 = 4,
  kDebugInteger2 = 5,
  kDebugInteger4 = 6,
  kDebugInteger8 = 7,
  kDebugReal4 = 8,
  kDebugReal8 = 9,
  kDebugReal10 = 10,
  kDebugComplex8 = 11,   // two REAL*4 parts
  kDebugComplex16 = 12,  // two REAL*8 parts
  kDebugComplex20 = 13,  // two REAL*10 parts
  kDebugDerivedType = 14,
  kDebugCharacter = 15,  // size is the declared length
  kDebugProcedure = 16,  // a dummy procedure argument: the address of a routine
  kDebugTypeCount = 17,
};

// Attribute flags (bits 10-13 of the descriptor word).
constexpr std::uint32_t kAttributePointer = 1u << 10;      // POINTER: the slot holds the target's address
constexpr std::uint32_t kAttributeAllocatable = 1u << 11;  // ALLOCATABLE: the slot holds the data's address
constexpr std::uint32_t kAttributeTarget = 1u << 12;       // TARGET
constexpr std::uint32_t kAttributeDummy = 1u << 13;        // a dummy argument

// The element type code of a debug type code, or -1 for a code the tables never use.
constexpr std::int32_t element_type_from_debug_type(std::uint32_t debug_code) {
  constexpr std::int32_t table[kDebugTypeCount] = {
      0,   // LOGICAL*1
      1,   // LOGICAL*2
      2,   // LOGICAL*4
      3,   // LOGICAL*8
      4,   // INTEGER*1
      5,   // INTEGER*2
      6,   // INTEGER*4
      7,   // INTEGER*8
      13,  // REAL*4
      14,  // REAL*8
      15,  // REAL*10
      16,  // COMPLEX*8
      17,  // COMPLEX*16
      18,  // COMPLEX*20
      22,  // TYPE(name)
      24,  // CHARACTER*n
      25,  // FUNCTION
  };
  return debug_code < kDebugTypeCount ? table[debug_code] : -1;
}

}  // namespace vantor
