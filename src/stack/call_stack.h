// The active routines of the stopped thread, innermost first, each with its frame object.
// Routines of images our compiler built are unwound here from their prologues; every other
// routine by the system's debug-help walker; the walk hands over between the two as it
// crosses from one kind of image into the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "os/os.h"
#include "stack/stack_frame.h"

namespace vantor {

struct call_stack_item {
  // For the innermost frame the thread's instruction pointer, for the others the return
  // address into the routine.
  Address pc = 0;
  Address sp = 0;
  Address return_slot = 0;  // 0 when unknown
  std::unique_ptr<StackFrame> frame;
  MapEntry* map_entry = nullptr;  // null for frames unwound by the system
  Module* module = nullptr;
};

// What the user interface and the evaluator learn about one frame.
struct frame_information {
  Address pc = 0;
  std::uint64_t offset = 0;  // of pc from the routine's start
  std::string routine_name;
  Address return_slot = 0;
  bool has_source = false;   // the routine has a line table
  std::string source_file_name;
  std::int32_t line = 0;
  StackFrame* frame = nullptr;
};

class CallStack {
 public:
  static constexpr std::int32_t kMaxFrames = 40;

  // An empty stack.
  CallStack() = default;
  // Walks the stack of the stopped thread whose registers are `context`.
  CallStack(DebuggedProcess& process, const os::ThreadContext& context);
  CallStack(const CallStack&) = delete;
  CallStack& operator=(const CallStack&) = delete;

  std::int32_t depth() const { return static_cast<std::int32_t>(items_.size()); }
  const std::vector<call_stack_item>& items() const { return items_; }
  // Null outside the list.
  StackFrame* frame(std::int32_t index) const {
    return index >= 0 && index < depth() ? items_[static_cast<std::size_t>(index)].frame.get() : nullptr;
  }

  // The frame with that index (0 innermost), with its symbols made ready. Asking beyond
  // the list is a broken invariant: it is reported and an empty record returned.
  frame_information information(std::int32_t index);
  // The index of that very frame object; -1 when it is not in this stack.
  std::int32_t index_of(const StackFrame* frame) const;
  // The index of the frame of the same routine at the same frame base as `frame` (which may
  // come from another stack); -1 when there is none.
  std::int32_t index_of_matching(const StackFrame& frame) const;

  // Cross-process reads the walk made (the debug-help walker's included).
  std::size_t walk_reads() const { return walk_reads_; }

 private:
  friend class StackWalker;
  std::vector<call_stack_item> items_;
  std::size_t walk_reads_ = 0;
};

}  // namespace vantor
