#include "debuginfo/symbol_table.h"

#include <cctype>

namespace vantor {

bool equal_ignoring_case(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) return false;
  return true;
}

const VariableRecord* F95SymbolTable::variable(int index) const {
  if (index < 0 || index >= variable_count()) return nullptr;
  return variables_[static_cast<std::size_t>(index)].get();
}

const VariableRecord* F95SymbolTable::variable_by_name(std::string_view name) const {
  for (const auto& variable : variables_)
    if (equal_ignoring_case(variable->name, name)) return variable.get();
  return nullptr;
}

VariableRecord* F95SymbolTable::add_variable(std::unique_ptr<VariableRecord> variable) {
  variables_.push_back(std::move(variable));
  return variables_.back().get();
}

DerivedTypeRecord* F95SymbolTable::add_derived_type(std::unique_ptr<DerivedTypeRecord> type) {
  types_.push_back(std::move(type));
  return types_.back().get();
}

CommonBlockRecord* F95SymbolTable::add_common_block(std::unique_ptr<CommonBlockRecord> block) {
  commons_.push_back(std::move(block));
  return commons_.back().get();
}

}  // namespace vantor
