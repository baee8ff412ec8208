// Byte-exact records of the debug tables for a handful of declarations.
#include <gtest/gtest.h>

#include "debuginfo/debug_type_codes.h"
#include "f95mini/debug_tables.h"

namespace f95mini {
namespace {

using Bytes = std::vector<std::uint8_t>;

void put32(Bytes& b, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}
void put64(Bytes& b, std::uint64_t v) {
  for (int i = 0; i < 8; ++i) b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}
// The 36-byte header of a variable record, then its upper-case name.
Bytes header(std::uint32_t word, std::uint64_t value, std::uint32_t size, const char* name, std::uint32_t type_key = 0,
             std::uint32_t common_key = 0) {
  Bytes b;
  put32(b, 0);
  put32(b, word);
  put64(b, value);
  for (std::uint32_t v : {size, type_key, common_key, 0u, 0u}) put32(b, v);
  for (; *name; ++name) b.push_back(static_cast<std::uint8_t>(*name));
  b.push_back(0);
  return b;
}
void append(Bytes& to, const Bytes& more) { to.insert(to.end(), more.begin(), more.end()); }

VariableRecord variable(const char* name, std::uint32_t address_type, std::uint32_t type_code, std::int64_t value,
                        std::uint32_t size) {
  VariableRecord v;
  v.name = name;
  v.address_type = address_type;
  v.type_code = type_code;
  v.value = value;
  v.size = size;
  return v;
}

TEST(VariableRecord, ScalarAndConstant) {
  // integer :: count   (a local at frame value 8)
  VariableRecord count = variable("count", kAddrFrame, vantor::kDebugInteger4, 8, 4);
  EXPECT_EQ(variable_record_bytes(count, 0, 0, false), header(1 | 6 << 4, 8, 4, "COUNT"));
  // integer(2), parameter :: n = 258   (the value's bytes follow the name)
  VariableRecord n = variable("n", kAddrConstant, vantor::kDebugInteger2, 0, 2);
  n.constant = {2, 1};
  Bytes want = header(4 | 5 << 4, 0, 2, "N");
  append(want, {2, 1});
  EXPECT_EQ(variable_record_bytes(n, 0, 0, false), want);
}

TEST(VariableRecord, StaticArrayDescriptorWithNegativeBound) {
  // real(8) :: a(-2:3, 4)   (a local at frame value 16)
  VariableRecord v = variable("a", kAddrFrame, vantor::kDebugReal8, 16, 8);
  ArrayRecord a;
  ArrayRecord::Dim d1, d2;
  d1.start.value = -2;
  d1.size.value = 6;
  d1.stride.value = 8;
  d2.start.value = 1;
  d2.size.value = 4;
  d2.stride.value = 48;
  a.dims = {d1, d2};
  v.array = a;
  Bytes want = header(1 | 9 << 4 | 1 << 9, 16, 8, "A");
  put32(want, 2);
  put32(want, 0);
  for (std::int64_t x : {-2, 6, 8, 0, 1, 4, 48, 0}) put64(want, static_cast<std::uint64_t>(x));
  EXPECT_EQ(variable_record_bytes(v, 0, 0, false), want);
}

TEST(VariableRecord, DynamicDescriptorHasAnAddressTypeSlotPerVariableBound) {
  // real, allocatable :: w(:)   (slot at frame value 24, bounds after it), old format
  VariableRecord v = variable("w", kAddrFramePointer, vantor::kDebugReal4, 24, 4);
  v.attributes = vantor::kAttributeAllocatable;
  ArrayRecord a;
  a.dynamic = true;
  ArrayRecord::Dim d;
  BoundRecord* bounds[3] = {&d.start, &d.size, &d.stride};
  for (int k = 0; k < 3; ++k) *bounds[k] = BoundRecord{true, kAddrFrame, 32 + 8 * k};
  a.dims = {d};
  v.array = a;
  Bytes want = header(11 | 8 << 4 | 1 << 9 | 1 << 11, 24, 4, "W");
  want[32] = 1;  // format marker
  put32(want, 0x80000001u);
  put32(want, 7);
  for (int k = 0; k < 3; ++k) {
    put64(want, 1);
    put64(want, static_cast<std::uint64_t>(32 + 8 * k));
  }
  put64(want, 0);
  EXPECT_EQ(variable_record_bytes(v, 0, 0, true), want);
}

TEST(SymbolStream, CommonFirstVariablesThenTypesWithKeysFromTheirPositions) {
  // common /blk/ x ; type(point) :: p ; type point: real :: px
  DebugBlock b;
  b.commons = {"BLK"};
  VariableRecord x = variable("x", kAddrCommon, vantor::kDebugReal4, 0, 4);
  x.common_index = 0;
  VariableRecord p = variable("p", kAddrFrame, vantor::kDebugDerivedType, 0, 4);
  p.type_index = 0;
  b.variables = {x, p};
  b.types = {TypeRecord{"point", {variable("px", kAddrRelative, vantor::kDebugReal4, 0, 4)}}};
  Bytes s = symbol_stream(b);

  // The tag-3 record is the first byte of the stream, at block offset 16: key 16 + 1 - 4.
  const std::uint32_t common_key = 13;
  Bytes want{3};
  put32(want, common_key);
  append(want, {'B', 'L', 'K', 0, 0});
  append(want, header(8 | 8 << 4, 0, 4, "X", 0, common_key));
  std::size_t p_at = want.size() + 1;
  want.push_back(0);
  append(want, header(1 | 14 << 4, 0, 4, "P"));
  std::uint32_t type_key = static_cast<std::uint32_t>(16 + want.size() + 1 - 4);
  want.push_back(1);
  put32(want, type_key);
  append(want, {'P', 'O', 'I', 'N', 'T', 0});
  put32(want, 1);
  append(want, header(0 | 8 << 4, 0, 4, "PX"));
  append(want, {2, 'B', 'A', 'R', 'B'});
  // The variable refers forward to the type's key.
  for (int i = 0; i < 4; ++i) want[p_at + 20 + i] = static_cast<std::uint8_t>(type_key >> (8 * i));
  EXPECT_EQ(s, want);
}

TEST(SymbolStream, BrokenOutputForNegativeTests) {
  DebugBlock b;
  b.broken.bad_tag = true;
  EXPECT_EQ(symbol_stream(b), (Bytes{9, 2, 'B', 'A', 'R', 'B'}));
  std::string text;
  b.broken.bad_tag = false;
  b.broken.bad_magic = true;
  b.start_label = "S";
  b.lines = {{7, "L0"}, {8, "L1"}};
  b.file_name = "Z:\\w\\p.f95";
  write_debug_block(b, "B", text);
  EXPECT_NE(text.find(".ascii \"HUBR\""), std::string::npos);
  EXPECT_NE(text.find(".long 17\n"), std::string::npos);  // distance: 12 + the 5-byte stream
  EXPECT_NE(text.find(".long 8, L1-S"), std::string::npos);
  EXPECT_NE(text.find(".asciz \"Z:\\\\w\\\\p.f95\""), std::string::npos);
}

}  // namespace
}  // namespace f95mini
