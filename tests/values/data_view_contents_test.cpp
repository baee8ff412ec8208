#include "values/data_view_contents.h"

#include <gtest/gtest.h>

#include <cstring>

#include "debuginfo/debug_type_codes.h"
#include "debuginfo/symbol_table.h"
#include "process/debugged_process.h"
#include "support/fake_target.h"
#include "values/record_frame.h"

namespace vantor {
namespace {

using testing::add_dimension;
using testing::constant;
using testing::record;

class DataViewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    constexpr Address b = testing::RecordFrame::kFrameBase;
    target.system.poke_value<std::int32_t>(b, 12);
    for (int i = 0; i < 6; ++i) target.system.poke_value<std::int16_t>(b + 0x10 + 2 * i, static_cast<std::int16_t>(i + 1));
    target.system.poke_value<double>(b + 0x40, 0.25);
    target.system.poke_value<std::int32_t>(b + 0x48, 8);

    table.add_variable(record("N", kDebugInteger4, 1, 0, 4));
    auto grid = record("GRID", kDebugInteger2, 1, 0x10, 2);
    add_dimension(*grid, constant(1), constant(2), constant(2));
    add_dimension(*grid, constant(0), constant(3), constant(4));
    table.add_variable(std::move(grid));
    auto limit = record("LIMIT", kDebugInteger4, 4, 0, 4);
    limit->constant_value = {100, 0, 0, 0};
    table.add_variable(std::move(limit));
    type.name = "CELL";
    type.components.push_back(record("W", kDebugReal8, 0, 0, 8));
    type.components.push_back(record("K", kDebugInteger4, 0, 8, 4));
    auto cell = record("CELL1", kDebugDerivedType, 1, 0x40, 12);
    cell->structure = &type;
    table.add_variable(std::move(cell));
    source.memory = &target.memory;
    source.frame = [this](int index) -> StackFrame* { return index == 0 ? &frame : nullptr; };
    source.registers = &registers;
  }

  testing::FakeTarget target;
  DebuggedProcess process;
  F95SymbolTable table;
  DerivedTypeRecord type;
  testing::RecordFrame frame{&process, &table};
  os::ThreadContext registers;
  DataViewSource source;
};

// Variables, array elements and members as a session shows them are compared whole in
// tests/e2e/cases/script_session.case; these are the parts it does not see.
TEST_F(DataViewTest, VariablesOfAFrame) {
  std::string routine;
  std::vector<ui::variable_row> rows;
  ASSERT_TRUE(variables_of_frame(source, 0, routine, rows));
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[1].value, "INTEGER*2 (2,0:2)");
  EXPECT_EQ(rows[2].value, "100");
  EXPECT_TRUE(rows[2].is_parameter);
  EXPECT_FALSE(rows[0].is_parameter);
  EXPECT_FALSE(variables_of_frame(source, 1, routine, rows));
}

TEST_F(DataViewTest, ArrayElementsFirstSubscriptFastestFromOneRead) {
  ui::array_contents contents;
  std::size_t reads = target.system.counters.reads;
  array_contents_of(source, 0, "grid", contents);
  EXPECT_EQ(target.system.counters.reads - reads, 1u);
  EXPECT_TRUE(contents.fortran);
  ASSERT_EQ(contents.elements.size(), 6u);
  EXPECT_EQ(contents.elements[2].subscripts, (std::vector<long long>{1, 1}));
  EXPECT_EQ(contents.elements[5].value, "6");

  ui::array_contents section;
  array_contents_of(source, 0, "grid(2, 1:2)", section);
  ASSERT_EQ(section.elements.size(), 2u);
  EXPECT_EQ(section.elements[0].subscripts, (std::vector<long long>{1}));
  EXPECT_EQ(section.elements[0].value, "4");

  ui::array_contents wrong;
  array_contents_of(source, 0, "n", wrong);
  EXPECT_EQ(wrong.error, "Expected an array");
  array_contents_of(source, 0, "grid(", wrong);
  EXPECT_EQ(wrong.error, "Too many opening brackets");
}

TEST_F(DataViewTest, StructureMembersInspectorWatchesAndRegisters) {
  ui::structure_contents members;
  structure_contents_of(source, 0, "cell1", members);
  ASSERT_EQ(members.members.size(), 2u);
  EXPECT_EQ(members.members[1].value, "8");
  ui::structure_contents not_one;
  structure_contents_of(source, 0, "n", not_one);
  EXPECT_EQ(not_one.error, "Structure expected");

  ui::window_rows rows;
  expression_rows_of(source, 0, "cell1%k * n", 10, rows);
  ASSERT_EQ(rows.text.size(), 1u);
  EXPECT_EQ(rows.text[0], "cell1%k * n = 96");

  EXPECT_EQ(watch_value_of(source, "n + 1").text, "13");
  EXPECT_EQ(watch_value_of(source, "nothing").state, ui::watch_value::kOutOfScope);
  EXPECT_EQ(watch_value_of(source, "n +").state, ui::watch_value::kError);

  ui::window_rows registers_rows;
  std::string status = "x";
  registers.rax = 3;
  register_rows_of(source, registers_rows, status);
  EXPECT_EQ(status, "");
  ASSERT_EQ(registers_rows.text.size(), 34u);
  EXPECT_EQ(registers_rows.text[3], "RAX = 0000000000000003 (3)");
}

}  // namespace
}  // namespace vantor
