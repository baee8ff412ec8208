#include "stack/stack_frame.h"

namespace vantor {

std::unique_ptr<element> StackFrame::variable_element(int) { return nullptr; }
std::unique_ptr<element> StackFrame::find_variable(std::string_view) { return nullptr; }
VariableAddress StackFrame::variable_address(std::uint32_t, std::uint64_t, const VariableRecord*, Address) {
  VariableAddress none;
  none.error = 34;
  return none;
}
std::unique_ptr<element> StackFrame::find_in_scope(std::string_view, const element&) { return nullptr; }

}  // namespace vantor
