// The debugged process's view of names: its call stacks, routines by name, and the COMMON
// blocks that its run-time library lists.
#include "debuginfo/module.h"
#include "process/debugged_process.h"
#include "stack/call_stack.h"

namespace vantor {

void DebuggedProcess::refresh_call_stack() {
  os::system().get_context(thread_handle(), context_);
  previous_stack_ = std::move(current_stack_);
  current_stack_ = std::make_unique<CallStack>(*this, context_);
}

void DebuggedProcess::restore_previous_call_stack() {
  if (previous_stack_) current_stack_ = std::move(previous_stack_);
}

bool DebuggedProcess::ensure_symbol_handler() {
  if (!symbol_handler_initialised_) symbol_handler_initialised_ = os::system().symbols_initialize(process_handle());
  return symbol_handler_initialised_;
}

Address DebuggedProcess::routine_address(std::string_view name) const {
  for (const auto& module : modules_)
    if (Address start = module->routine_start(std::string(name))) return start;
  return 0;
}

Address DebuggedProcess::address_of_name(std::string_view name) { return routine_address(name); }

Address DebuggedProcess::common_list_head() const {
  return common_info_address_ == ~Address{0} ? 0 : common_info_address_;
}

Address DebuggedProcess::common_block_address(std::string_view name) {
  if (const CommonBlock* block = common_cache_.find(name)) return block->address;
  return common_cache_.address_by_name(*this, common_list_head(), name);
}

const std::vector<CommonBlock>& DebuggedProcess::common_blocks() {
  common_cache_.refresh(*this, common_list_head());
  return common_cache_.blocks();
}

}  // namespace vantor
