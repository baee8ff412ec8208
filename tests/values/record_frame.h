// Shared by the values tests: debug records made by hand, and a Fortran frame whose locals
// (address type 1) live at frame base + value and whose pointer slots (11) are read there;
// callers' variables (3) are out of scope and COMMON (8) was never touched. Its symbols
// are a table, when it is given one.
#pragma once

#include <memory>
#include <string>

#include "debuginfo/symbol_table.h"
#include "process/debugged_process.h"
#include "stack/stack_frame.h"
#include "values/variable_element.h"

namespace vantor::testing {

inline std::unique_ptr<VariableRecord> record(const std::string& name, std::uint32_t debug_type,
                                              std::uint32_t address_type, std::uint64_t value, std::uint32_t size,
                                              std::uint32_t attributes = 0) {
  auto r = std::make_unique<VariableRecord>();
  r->name = name;
  r->descriptor = address_type | (debug_type << 4) | attributes;
  r->address_value = value;
  r->size = size;
  return r;
}

inline ArrayBound constant(std::int64_t v) { return {kBoundConstant, v}; }

inline void add_dimension(VariableRecord& r, ArrayBound start, ArrayBound extent, ArrayBound stride = {}) {
  if (!r.array) r.array = std::make_unique<ArrayDescriptorRecord>();
  r.descriptor |= 1u << 9;
  r.array->dimensions[static_cast<std::size_t>(r.array->rank)].bounds = {start, extent, stride};
  ++r.array->rank;
}

class RecordFrame : public StackFrame {
 public:
  static constexpr Address kFrameBase = 0x70000;
  explicit RecordFrame(DebuggedProcess* process, F95SymbolTable* table = nullptr)
      : StackFrame(process, 0x401000, kFrameBase, 0, 0, nullptr), table_(table) {}
  std::string routine_name() const override { return "WORK"; }
  int language_code() const override { return 4; }
  int variable_count() override { return table_ ? table_->variable_count() : 0; }
  const VariableRecord* variable_record(int index) override { return table_ ? table_->variable(index) : nullptr; }
  std::unique_ptr<element> variable_element(int index) override {
    const VariableRecord* r = variable_record(index);
    return r ? make_variable_element(*this, *r) : nullptr;
  }
  std::unique_ptr<element> find_variable(std::string_view name) override {
    const VariableRecord* r = table_ ? table_->variable_by_name(name) : nullptr;
    return r ? make_variable_element(*this, *r) : nullptr;
  }
  VariableAddress variable_address(std::uint32_t address_type, std::uint64_t value, const VariableRecord*,
                                   Address base) override {
    VariableAddress where;
    switch (address_type) {
      case 0: where.address = where.base = base + value; break;
      case 1: where.address = where.base = frame_base + value; break;
      case 11: {
        std::uint64_t data = 0;
        process->read(frame_base + value, &data, 8);
        where.address = data;
        where.base = frame_base + value;
        break;
      }
      case 8: where.error = 38; break;
      default: where.error = 34; break;
    }
    return where;
  }

 private:
  F95SymbolTable* table_;
};

}  // namespace vantor::testing
