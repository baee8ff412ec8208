// The active routines of the stopped thread, innermost first, each with its frame object.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "stack/stack_frame.h"

namespace vantor {

struct call_stack_item {
  Address pc = 0;
  Address sp = 0;
  Address return_slot = 0;  // 0 when unknown
  std::unique_ptr<StackFrame> frame;
  MapEntry* map_entry = nullptr;  // null for frames unwound by the system
  Module* module = nullptr;
};

class CallStack {
 public:
  CallStack() = default;
  CallStack(const CallStack&) = delete;
  CallStack& operator=(const CallStack&) = delete;

  std::int32_t depth() const { return static_cast<std::int32_t>(items_.size()); }
  const std::vector<call_stack_item>& items() const { return items_; }
  StackFrame* frame(std::int32_t index) const {
    return index >= 0 && index < depth() ? items_[static_cast<std::size_t>(index)].frame.get() : nullptr;
  }

 protected:
  std::vector<call_stack_item> items_;
};

}  // namespace vantor
