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
void put_name(Bytes& b, const char* n) {
  for (; *n; ++n) b.push_back(static_cast<std::uint8_t>(*n));
  b.push_back(0);
}
// The 36-byte header of a variable record.
Bytes header(std::uint32_t word, std::uint64_t value, std::uint32_t size, std::uint32_t type_key = 0,
             std::uint32_t common_key = 0) {
  Bytes b;
  put32(b, 0);
  put32(b, word);
  put64(b, value);
  put32(b, size);
  put32(b, type_key);
  put32(b, common_key);
  put32(b, 0);
  put32(b, 0);
  return b;
}

TEST(VariableRecord, LocalIntegerScalar) {
  // integer :: count   (a local at frame value 8)
  VariableRecord v;
  v.name = "count";
  v.address_type = kAddrFrame;
  v.type_code = vantor::kDebugInteger4;
  v.value = 8;
  v.size = 4;
  Bytes want = header(1 | 6 << 4, 8, 4);
  put_name(want, "COUNT");
  EXPECT_EQ(variable_record_bytes(v, 0, 0, false), want);
}

TEST(VariableRecord, StaticArrayDescriptorWithNegativeBound) {
  // real(8) :: a(-2:3, 4)   (a local at frame value 16)
  VariableRecord v;
  v.name = "a";
  v.type_code = vantor::kDebugReal8;
  v.value = 16;
  v.size = 8;
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
  Bytes want = header(1 | 9 << 4 | 1 << 9, 16, 8);
  put_name(want, "A");
  put32(want, 2);
  put32(want, 0);
  for (std::int64_t x : {-2, 6, 8, 0, 1, 4, 48, 0}) put64(want, static_cast<std::uint64_t>(x));
  EXPECT_EQ(variable_record_bytes(v, 0, 0, false), want);
}

TEST(VariableRecord, DynamicDescriptorHasAnAddressTypeSlotPerVariableBound) {
  // real, allocatable :: w(:)   (slot at frame value 24, bounds after it), old format
  VariableRecord v;
  v.name = "w";
  v.address_type = kAddrFramePointer;
  v.type_code = vantor::kDebugReal4;
  v.attributes = vantor::kAttributeAllocatable;
  v.value = 24;
  v.size = 4;
  ArrayRecord a;
  a.dynamic = true;
  ArrayRecord::Dim d;
  BoundRecord* bounds[3] = {&d.start, &d.size, &d.stride};
  for (int k = 0; k < 3; ++k) *bounds[k] = BoundRecord{true, kAddrFrame, 32 + 8 * k};
  a.dims = {d};
  v.array = a;
  Bytes want = header(11 | 8 << 4 | 1 << 9 | 1 << 11, 24, 4);
  want[32] = 1;  // format marker
  put_name(want, "W");
  put32(want, 0x80000001u);
  put32(want, 7);
  for (int k = 0; k < 3; ++k) {
    put64(want, 1);
    put64(want, static_cast<std::uint64_t>(32 + 8 * k));
  }
  put64(want, 0);
  EXPECT_EQ(variable_record_bytes(v, 0, 0, true), want);
}

TEST(VariableRecord, ConstantBytesFollowTheName) {
  // integer, parameter :: n = 258
  VariableRecord v;
  v.name = "n";
  v.address_type = kAddrConstant;
  v.type_code = vantor::kDebugInteger2;
  v.size = 2;
  v.constant = {2, 1};
  Bytes want = header(4 | 5 << 4, 0, 2);
  put_name(want, "N");
  want.push_back(2);
  want.push_back(1);
  EXPECT_EQ(variable_record_bytes(v, 0, 0, false), want);
}

TEST(SymbolStream, CommonFirstVariablesThenTypesWithKeysFromTheirPositions) {
  // common /blk/ x ; type(point) :: p ; type point: real :: px
  DebugBlock b;
  b.commons = {"BLK"};
  VariableRecord x;
  x.name = "x";
  x.address_type = kAddrCommon;
  x.type_code = vantor::kDebugReal4;
  x.size = 4;
  x.common_index = 0;
  VariableRecord p;
  p.name = "p";
  p.type_code = vantor::kDebugDerivedType;
  p.size = 4;
  p.type_index = 0;
  VariableRecord px;
  px.name = "px";
  px.address_type = kAddrRelative;
  px.type_code = vantor::kDebugReal4;
  px.size = 4;
  b.variables = {x, p};
  b.types = {TypeRecord{"point", {px}}};
  Bytes s = symbol_stream(b);

  // The tag-3 record is the first byte of the stream, at block offset 16: key 16 + 1 - 4.
  const std::uint32_t common_key = 13;
  Bytes want{3};
  put32(want, common_key);
  put_name(want, "BLK");
  want.push_back(0);
  Bytes rx = header(8 | 8 << 4, 0, 4, 0, common_key);
  put_name(rx, "X");
  want.insert(want.end(), rx.begin(), rx.end());
  std::size_t p_at = want.size() + 1;
  want.push_back(0);
  Bytes rp = header(1 | 14 << 4, 0, 4);
  put_name(rp, "P");
  want.insert(want.end(), rp.begin(), rp.end());
  std::uint32_t type_key = static_cast<std::uint32_t>(16 + want.size() + 1 - 4);
  want.push_back(1);
  put32(want, type_key);
  put_name(want, "POINT");
  put32(want, 1);
  Bytes rpx = header(0 | 8 << 4, 0, 4);
  put_name(rpx, "PX");
  want.insert(want.end(), rpx.begin(), rpx.end());
  want.push_back(2);
  for (char c : std::string("BARB")) want.push_back(static_cast<std::uint8_t>(c));
  // The variable refers forward to the type's key.
  for (int i = 0; i < 4; ++i) want[p_at + 20 + i] = static_cast<std::uint8_t>(type_key >> (8 * i));
  EXPECT_EQ(s, want);
}

TEST(SymbolStream, BrokenOutputForNegativeTests) {
  DebugBlock b;
  b.broken.bad_tag = true;
  Bytes s = symbol_stream(b);
  EXPECT_EQ(s, (Bytes{9, 2, 'B', 'A', 'R', 'B'}));
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
