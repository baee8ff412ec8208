// A routine's symbols: its own variables, the derived types they use and the COMMON
// blocks they name, each in stream order.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "debuginfo/variable_record.h"

namespace vantor {

class SymbolTable {
 public:
  virtual ~SymbolTable() = default;
  virtual int variable_count() const = 0;
};

class F95SymbolTable : public SymbolTable {
 public:
  int variable_count() const override { return static_cast<int>(variables_.size()); }

  // Null when the index is out of range.
  const VariableRecord* variable(int index) const;
  // First variable whose name equals `name` ignoring case; null if none.
  const VariableRecord* variable_by_name(std::string_view name) const;

  VariableRecord* add_variable(std::unique_ptr<VariableRecord> variable);
  DerivedTypeRecord* add_derived_type(std::unique_ptr<DerivedTypeRecord> type);
  CommonBlockRecord* add_common_block(std::unique_ptr<CommonBlockRecord> block);

  const std::vector<std::unique_ptr<VariableRecord>>& variables() const { return variables_; }
  const std::vector<std::unique_ptr<DerivedTypeRecord>>& derived_types() const { return types_; }
  const std::vector<std::unique_ptr<CommonBlockRecord>>& common_blocks() const { return commons_; }

 private:
  std::vector<std::unique_ptr<VariableRecord>> variables_;
  std::vector<std::unique_ptr<DerivedTypeRecord>> types_;
  std::vector<std::unique_ptr<CommonBlockRecord>> commons_;
};

bool equal_ignoring_case(std::string_view a, std::string_view b);

}  // namespace vantor
