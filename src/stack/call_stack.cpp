#include "stack/call_stack.h"

#include <cstdint>

#include "common/messages.h"
#include "debuginfo/source_files.h"
#include "debuginfo/module.h"
#include "process/cached_target_memory.h"
#include "process/debugged_process.h"
#include "process/user_space_buffer.h"
#include "stack/f95_stack_frame.h"
#include "stack/microsoft_stack_frame.h"
#include "stack/prologue_scan.h"
#include "values/crt_format.h"

namespace vantor {

namespace {

std::size_t read_for_system_walker(void* cookie, Address address, void* buffer, std::size_t size) {
  return static_cast<TargetMemory*>(cookie)->read(address, buffer, size);
}

}  // namespace

// One walk: the stack pointer, program counter and frame pointer move outward frame by
// frame, each frame handled by the step of its image's kind. A step that cannot go on ends
// the walk; the frames found so far stand.
class StackWalker {
 public:
  StackWalker(DebuggedProcess& process, CallStack& stack, const os::ThreadContext& context)
      : process_(process),
        stack_(stack),
        memory_(process),
        code_(memory_),
        context_(context),
        pc_(context.rip),
        sp_(context.rsp),
        fp_(context.rbp) {}

  void run() {
    while (stack_.depth() < CallStack::kMaxFrames) {
      Module* module = process_.module_containing(pc_);
      if (!module) break;
      bool go_on = module->has_routine_map() ? step_quorvel_frame(*module) : step_system_frames(*module);
      if (!go_on) break;
    }
    for (auto& item : stack_.items_) item.frame->total_frames = stack_.depth();
    stack_.walk_reads_ = memory_.fetches();
  }

 private:
  // A routine of our compiler: its prologue says where its return address lies.
  bool step_quorvel_frame(Module& module) {
    MapEntry* entry = module.routine_at(pc_);
    if (!entry) return false;
    call_stack_item item;
    item.pc = pc_;
    item.sp = sp_;
    item.map_entry = entry;
    item.module = &module;

    PrologueScan scan = scan_prologue(code_, entry->start, pc_, entry->lead_word);
    Address caller_pc = 0;
    if (scan.ended) {
      item.return_slot = sp_ + scan.allocation;
      caller_pc = memory_.read_u64(item.return_slot);
      sp_ = item.return_slot + 8;
    }
    std::int32_t position = stack_.depth() + 1;
    item.frame = std::make_unique<F95StackFrame>(&process_, item.pc, item.sp, item.return_slot, entry, &module,
                                                 position);
    stack_.items_.push_back(std::move(item));
    pc_ = caller_pc;
    return scan.ended && !scan.reached_limit;
  }

  // Code without our tables: the system's walker unwinds it, frame by frame, until a return
  // address leads back into one of our compiler's images.
  bool step_system_frames(Module& first_module) {
    if (!process_.ensure_symbol_handler()) return false;
    os::System& system = os::system();
    os::WalkFrame frame;
    frame.pc = pc_;
    frame.frame = fp_;
    frame.stack = sp_;
    context_.rip = pc_;
    context_.rsp = sp_;
    context_.rbp = fp_;
    Module* module = &first_module;
    for (;;) {
      if (!walk_once(frame)) return false;
      std::string name;
      std::uint64_t displacement = 0;
      if (!system.symbol_from_address(process_.process_handle(), frame.pc, name, displacement)) {
        name = module_and_address(*module, frame.pc);
        displacement = 0;
      }
      call_stack_item item;
      item.pc = frame.pc;
      item.sp = frame.stack;
      item.module = module;
      item.frame = std::make_unique<MicrosoftStackFrame>(&process_, frame.pc, frame.frame, frame.return_address,
                                                         module, name, displacement, stack_.depth());
      stack_.items_.push_back(std::move(item));
      if (stack_.depth() >= CallStack::kMaxFrames) return false;

      module = process_.module_containing(frame.return_address);
      if (!module) return false;
      if (module->has_routine_map()) break;
    }
    // The return address lies in our compiler's code: one more step of the system walker
    // moves its context out of the last system frame, to where that code resumes.
    os::WalkFrame last = frame;
    if (!walk_once(frame)) return false;
    pc_ = last.return_address;
    fp_ = frame.frame;
    sp_ = frame.stack;
    return true;
  }

  // The walker is given the stopped thread, which need not be the program's first.
  bool walk_once(os::WalkFrame& frame) {
    return os::system().stack_walk(process_.process_handle(), process_.event_thread_handle(), frame, context_,
                                   read_for_system_walker, &memory_);
  }

  static std::string module_and_address(const Module& module, Address pc) {
    return crt_format("%s!%p", narrow_from_wide(module.display_name()).c_str(),
                      reinterpret_cast<void*>(static_cast<std::uintptr_t>(pc)));
  }

  DebuggedProcess& process_;
  CallStack& stack_;
  CachedTargetMemory memory_;
  ProgramCode code_;
  os::ThreadContext context_;
  Address pc_, sp_, fp_;
};

CallStack::CallStack(DebuggedProcess& process, const os::ThreadContext& context) {
  StackWalker(process, *this, context).run();
}

frame_information CallStack::information(std::int32_t index) {
  frame_information info;
  StackFrame* frame = this->frame(index);
  VANTOR_ASSERT(frame, "item", "CallStack");
  if (!frame) return info;
  const call_stack_item& item = items_[static_cast<std::size_t>(index)];
  info.pc = item.pc;
  info.frame = frame;
  info.routine_name = frame->routine_name();
  info.offset = item.pc - frame->routine_start();
  if (const MapEntry* entry = item.map_entry) {
    info.return_slot = item.return_slot;
    if (entry->has_lines()) {
      info.has_source = true;
      info.source_file_name = entry->lines->file_name;
      info.line = line_of_offset(entry->lines.get(), info.offset);
    }
    frame->load_symbols();
  }
  return info;
}

std::int32_t CallStack::index_of(const StackFrame* frame) const {
  for (std::size_t i = 0; i < items_.size(); ++i)
    if (items_[i].frame.get() == frame) return static_cast<std::int32_t>(i);
  return -1;
}

std::int32_t CallStack::index_of_matching(const StackFrame& frame) const {
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const StackFrame& candidate = *items_[i].frame;
    if (candidate.routine_start() == frame.routine_start() && candidate.frame_base == frame.frame_base)
      return static_cast<std::int32_t>(i);
  }
  return -1;
}

}  // namespace vantor
