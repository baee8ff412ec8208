#include "debuginfo/symbol_stream.h"

#include <gmock/gmock.h>

#include "debuginfo/module_test_support.h"

namespace vantor::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SymbolStreamTest : public ModuleTest {
 protected:
  RoutineBuilder& routine() { return image.routine("SUB", 0x1000, 0x40).line(1, 0); }
  MapEntry& load_routine() {
    Module& module = load();
    return *module.routines()[0];
  }
  F95SymbolTable& symbols_of(MapEntry& entry) {
    EXPECT_TRUE(load_routine_symbols(process, entry));
    return *entry.symbols;
  }
};

// Records as the test compiler writes them are read at real stops under Wine
// (tests/integration/stack_itest.cpp, values_session_itest.cpp); these are the shapes it
// does not write and the damage a reader must survive.
TEST_F(SymbolStreamTest, VariableRecordsKeepEveryField) {
  VariableSpec count = VariableSpec::at("COUNT", 1, kDebugInteger4, 0xFFFFFFF0, 4);
  count.first_word = 0x11;
  count.extra_word = 0x22;
  count.attributes = kAttributeTarget | kAttributeDummy;
  routine().variable(count).variable(VariableSpec::at("X", 9, kDebugReal8, 0x3000, 8));
  MapEntry& entry = load_routine();
  F95SymbolTable& symbols = symbols_of(entry);
  EXPECT_TRUE(entry.symbols_loaded);
  ASSERT_EQ(symbols.variable_count(), 2);
  const VariableRecord& v = *symbols.variable(0);
  EXPECT_EQ(v.first_word, 0x11u);
  EXPECT_EQ(v.attributes(), kAttributeTarget | kAttributeDummy);
  EXPECT_EQ(v.address_value, 0xFFFFFFF0u);
  EXPECT_EQ(v.extra_word, 0x22u);
  EXPECT_EQ(symbols.variable_by_name("x")->address_type(), 9u);
}

TEST_F(SymbolStreamTest, StaticArrayDescriptorKeepsKindsValuesAndFourthSlots) {
  ArraySpec spec;
  spec.dimensions.push_back({BoundSpec::constant(1), BoundSpec::constant(10), BoundSpec::constant(4), 40});
  spec.dimensions.push_back({BoundSpec::constant(0), BoundSpec::in_variable(-24), BoundSpec::constant(40), 7});
  routine()
      .variable(VariableSpec::at("A", 1, kDebugInteger4, 0x100, 4).with_array(spec))
      .variable(VariableSpec::at("NEXT", 1, kDebugInteger4, 8, 4));
  F95SymbolTable& symbols = symbols_of(load_routine());
  ASSERT_EQ(symbols.variable_count(), 2);
  const ArrayDescriptorRecord& array = *symbols.variable(0)->array;
  EXPECT_EQ(array.rank, 2);
  EXPECT_FALSE(array.dynamic);
  EXPECT_EQ(array.dimensions[0].stride().value, 4);
  EXPECT_EQ(array.dimensions[0].fourth, 40);
  EXPECT_EQ(array.dimensions[1].size().kind, kBoundVariableStatic);
  EXPECT_EQ(array.dimensions[1].size().value, -24);
  EXPECT_EQ(array.dimensions[1].stride().kind, kBoundConstant);
  EXPECT_EQ(array.dimensions[1].fourth, 7);
  EXPECT_EQ(symbols.variable(1)->name, "NEXT");  // exactly rank x 32 bytes were consumed
}

TEST_F(SymbolStreamTest, DynamicArrayDescriptorTakesAnExtraSlotPerVariableBound) {
  ArraySpec spec;
  spec.dynamic = true;
  spec.dimensions.push_back({BoundSpec::constant(1), BoundSpec::in_variable(-8, 1), BoundSpec::constant(8), 0});
  spec.dimensions.push_back(
      {BoundSpec::in_variable(0x40, 9), BoundSpec::in_variable(-16, 1), BoundSpec::in_variable(-32, 11), 3});
  routine()
      .variable(VariableSpec::at("D", 1, kDebugReal8, 0x100, 8).with_array(spec))
      .variable(VariableSpec::at("NEXT", 1, kDebugInteger4, 8, 4));
  F95SymbolTable& symbols = symbols_of(load_routine());
  ASSERT_EQ(symbols.variable_count(), 2);
  const ArrayDescriptorRecord& array = *symbols.variable(0)->array;
  EXPECT_EQ(array.rank, 2);
  EXPECT_TRUE(array.dynamic);
  EXPECT_EQ(array.dimensions[0].start().value, 1);
  EXPECT_EQ(array.dimensions[0].size().kind, 1);
  EXPECT_EQ(array.dimensions[0].size().value, -8);
  EXPECT_EQ(array.dimensions[1].start().kind, 9);
  EXPECT_EQ(array.dimensions[1].start().value, 0x40);
  EXPECT_EQ(array.dimensions[1].stride().kind, 11);
  EXPECT_EQ(array.dimensions[1].stride().value, -32);
  EXPECT_EQ(array.dimensions[1].fourth, 3);
  EXPECT_EQ(symbols.variable(1)->name, "NEXT");  // (4 set bits + 8) x 8 bytes consumed
}

TEST_F(SymbolStreamTest, ARankAboveTheLanguagesIsStoredWithoutOverrunning) {
  ArraySpec spec = ArraySpec::fixed(std::vector<std::pair<std::int64_t, std::int64_t>>(9, {1, 2}), 4);
  routine()
      .variable(VariableSpec::at("BIG", 1, kDebugInteger4, 0, 4).with_array(spec))
      .variable(VariableSpec::at("NEXT", 1, kDebugInteger4, 8, 4));
  F95SymbolTable& symbols = symbols_of(load_routine());
  ASSERT_EQ(symbols.variable_count(), 2);
  EXPECT_EQ(symbols.variable(0)->array->rank, 9);
  EXPECT_EQ(symbols.variable(0)->array->dimensions[8].stride().value, 4 * 256);
  EXPECT_EQ(symbols.variable(1)->name, "NEXT");
}

TEST_F(SymbolStreamTest, DerivedTypeUsedBeforeItsRecordIsFilledInWhenItArrives) {
  RoutineBuilder& sub = routine();
  int node = sub.declare_type("NODE");
  sub.variable(VariableSpec::at("HEAD", 1, kDebugDerivedType, 0x10, 16).with_type(node));
  sub.variable(VariableSpec::at("TAIL", 1, kDebugDerivedType, 0x20, 16).with_type(node));
  sub.define_type(node, {VariableSpec::at("VALUE", 0, kDebugInteger4, 0, 4),
                         VariableSpec::at("NEXT", 0, kDebugDerivedType, 8, 8).with_type(node)});
  sub.variable(VariableSpec::at("LATER", 1, kDebugDerivedType, 0x30, 16).with_type(node));
  int missing = sub.declare_type("MISSING");  // its record never comes
  sub.variable(VariableSpec::at("V", 1, kDebugDerivedType, 0x40, 16).with_type(missing));
  F95SymbolTable& symbols = symbols_of(load_routine());
  ASSERT_EQ(symbols.derived_types().size(), 1u);
  const DerivedTypeRecord* type = symbols.derived_types()[0].get();
  EXPECT_EQ(type->name, "NODE");
  EXPECT_EQ(type->key, image["SUB"].type_key(node));
  ASSERT_EQ(type->components.size(), 2u);
  EXPECT_EQ(type->components[1]->structure, type);  // a component of its own type
  EXPECT_EQ(symbols.variable_by_name("HEAD")->structure, type);
  EXPECT_EQ(symbols.variable_by_name("TAIL")->structure, type);
  EXPECT_EQ(symbols.variable_by_name("LATER")->structure, type);
  EXPECT_EQ(symbols.variable_by_name("V")->structure, nullptr);
}

TEST_F(SymbolStreamTest, CommonBlocksAreNamedWithSlashesAndFoundByKey) {
  RoutineBuilder& sub = routine();
  int first = sub.common_block("COORDS");
  int second = sub.common_block("PARAMS");
  sub.variable(VariableSpec::at("ALPHA", 8, kDebugReal8, 8, 8).in_common(second));
  sub.variable(VariableSpec::at("X", 8, kDebugReal8, 0, 8).in_common(first));
  VariableSpec stray = VariableSpec::at("STRAY", 8, kDebugReal8, 0, 8);
  stray.common_key = 12345;
  sub.variable(stray);
  F95SymbolTable& symbols = symbols_of(load_routine());
  ASSERT_EQ(symbols.common_blocks().size(), 2u);
  const CommonBlockRecord& params = *symbols.common_blocks()[1];
  EXPECT_EQ(params.name, "/PARAMS/");
  EXPECT_EQ(params.key, image["SUB"].common_key(second));
  EXPECT_EQ(params.address, 0u);
  EXPECT_EQ(symbols.variable_by_name("ALPHA")->common, &params);
  EXPECT_EQ(symbols.variable_by_name("X")->common, symbols.common_blocks()[0].get());
  EXPECT_EQ(symbols.variable_by_name("STRAY")->common, nullptr);
}

TEST_F(SymbolStreamTest, SymbolsAreReadOnceOnly) {
  routine().variable(VariableSpec::at("I", 1, kDebugInteger4, 8, 4));
  MapEntry& entry = load_routine();
  EXPECT_TRUE(load_routine_symbols(process, entry));
  const F95SymbolTable* table = entry.symbols.get();
  std::size_t reads = target.system.counters.reads;
  EXPECT_TRUE(load_routine_symbols(process, entry));
  EXPECT_EQ(target.system.counters.reads, reads);
  EXPECT_EQ(entry.symbols.get(), table);
}

TEST_F(SymbolStreamTest, AnOldFormatRecordStopsThisRoutineAndIsReportedEachTime) {
  VariableSpec old = VariableSpec::at("OLD", 1, kDebugInteger4, 8, 4);
  old.format_marker = 1;
  routine().variable(VariableSpec::at("FIRST", 1, kDebugInteger4, 4, 4)).variable(old);
  MapEntry& entry = load_routine();
  EXPECT_FALSE(load_routine_symbols(process, entry));
  EXPECT_FALSE(entry.symbols_loaded);
  EXPECT_FALSE(load_routine_symbols(process, entry));
  EXPECT_THAT(boxes(), ElementsAre(L"SUB compiled with old debug information, please recompile ",
                                   L"SUB compiled with old debug information, please recompile "));
  EXPECT_EQ(target.system.message_boxes[0].title, L"Information");

  // An old-format component stops its routine too.
  old = VariableSpec::at("C", 0, kDebugInteger4, 0, 4);
  old.format_marker = 7;
  DebugImageBuilder other(kBase + 0x100000);
  RoutineBuilder& typed = other.routine("TYPED", 0x1000, 0x10);
  typed.derived_type("T", {old});
  typed.variable(VariableSpec::at("AFTER", 1, kDebugInteger4, 4, 4));
  EXPECT_FALSE(load_routine_symbols(process, *load(other, L"C:\\other.exe").routines()[0]));
  EXPECT_EQ(boxes().size(), 3u);
}

TEST_F(SymbolStreamTest, AWrongEndMagicIsABrokenInvariant) {
  routine().variable(VariableSpec::at("I", 1, kDebugInteger4, 8, 4)).end_magic("BRAB");
  MapEntry& entry = load_routine();
  EXPECT_TRUE(load_routine_symbols(process, entry));  // Cancel carries on
  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_NE(boxes()[0].find(L"expr = barb == 'BRAB'\nfile = StackFrame"), std::wstring::npos);
}

TEST_F(SymbolStreamTest, AMagicGoneSinceTheMapWasReadIsABrokenInvariant) {
  routine();
  MapEntry& entry = load_routine();
  target.system.poke(entry.debug_block + 4, "RHUX", 4);
  EXPECT_FALSE(load_routine_symbols(process, entry));
  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_NE(boxes()[0].find(L"expr = rhub == 'BUHR'"), std::wstring::npos);
}

TEST_F(SymbolStreamTest, AStreamWithoutItsEndTagStopsAtTheLineTable) {
  // Variable records made of zero bytes fill the stream up to the line table.
  routine().raw_bytes(std::vector<std::uint8_t>(200, 0)).stream_size_word(12 + 150);
  MapEntry& entry = load_routine();
  EXPECT_FALSE(load_routine_symbols(process, entry));
  EXPECT_FALSE(entry.symbols_loaded);
}

TEST_F(SymbolStreamTest, ARoutineWithoutADebugBlockHasNoSymbols) {
  image.routine("STUB", 0x1000, 0x10).no_debug_block();
  MapEntry& entry = load_routine();
  EXPECT_FALSE(load_routine_symbols(process, entry));
  EXPECT_EQ(entry.symbols, nullptr);
}

TEST_F(SymbolStreamTest, CorruptCountsInsideTheStreamAreRefused) {
  RoutineBuilder& sub = routine();
  sub.raw_tag(1).raw_bytes({0, 0, 0, 0, 'T', 0, 0xFF, 0xFF, 0xFF, 0x7F});  // key, name, 2^31 - 1 components
  MapEntry& entry = load_routine();
  EXPECT_FALSE(load_routine_symbols(process, entry));
  VariableSpec huge = VariableSpec::at("HUGE", 4, kDebugCharacter, 0, 0x7FFFFFFF);
  DebugImageBuilder other(kBase + 0x100000);
  other.routine("SUB", 0x1000, 0x10).variable(huge);
  Module& module = load(other, L"C:\\other.exe");
  EXPECT_FALSE(load_routine_symbols(process, *module.routines()[0]));
}

using SymbolStreamDeathTest = SymbolStreamTest;

TEST_F(SymbolStreamDeathTest, AnUnknownTagEndsTheDebuggerWithStatus1) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  routine().variable(VariableSpec::at("I", 1, kDebugInteger4, 8, 4)).raw_tag(7);
  MapEntry& entry = load_routine();
  EXPECT_EXIT(load_routine_symbols(process, entry), ::testing::ExitedWithCode(1), "");
}

// The end goes through the OS layer, where a session under test can watch it happen.
TEST_F(SymbolStreamTest, AnUnknownTagIsReportedAndEndsThroughTheSystemLayer) {
  struct Ended {
    int status;
  };
  target.system.on_end_debugger = [](int status) { throw Ended{status}; };
  routine().variable(VariableSpec::at("I", 1, kDebugInteger4, 8, 4)).raw_tag(7);
  MapEntry& entry = load_routine();
  ::testing::internal::CaptureStdout();
  int status = -1;
  try {
    load_routine_symbols(process, entry);
  } catch (const Ended& ended) {
    status = ended.status;
  }
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "unexpected tag 7\n");
  EXPECT_EQ(status, 1);
  EXPECT_FALSE(entry.symbols_loaded);
}

}  // namespace
}  // namespace vantor::testing
