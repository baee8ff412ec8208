// The Win32 layer, counting every call that crosses into the debugged process or waits on
// it: the Wine-side tests and benchmarks count calls, not bytes. The system walker's reads
// come through read_memory too.
#pragma once

#include <cstddef>

#include "os/win32/win32_system.h"

namespace vantor::testing {

class CountingSystem : public os::Win32System {
 public:
  struct Counts {
    std::size_t reads = 0, writes = 0, get_contexts = 0, set_contexts = 0, waits = 0, continues = 0, walks = 0;
    std::size_t total() const { return reads + writes + get_contexts + set_contexts + waits + continues + walks; }
    Counts operator-(const Counts& e) const {
      return {reads - e.reads, writes - e.writes, get_contexts - e.get_contexts, set_contexts - e.set_contexts,
              waits - e.waits, continues - e.continues, walks - e.walks};
    }
    Counts& operator+=(const Counts& o) {
      return *this = {reads + o.reads, writes + o.writes, get_contexts + o.get_contexts, set_contexts + o.set_contexts,
                      waits + o.waits, continues + o.continues, walks + o.walks};
    }
  };

  std::size_t read_memory(os::Handle process, os::Address address, void* buffer, std::size_t size) override {
    ++counts.reads;
    return Win32System::read_memory(process, address, buffer, size);
  }
  std::size_t write_memory(os::Handle process, os::Address address, const void* buffer, std::size_t size) override {
    ++counts.writes;
    return Win32System::write_memory(process, address, buffer, size);
  }
  bool get_context(os::Handle thread, os::ThreadContext& context) override {
    ++counts.get_contexts;
    return Win32System::get_context(thread, context);
  }
  bool set_context(os::Handle thread, const os::ThreadContext& context) override {
    ++counts.set_contexts;
    return Win32System::set_context(thread, context);
  }
  bool wait_for_event(os::DebugEvent& event, std::uint32_t timeout_ms) override {
    ++counts.waits;
    return Win32System::wait_for_event(event, timeout_ms);
  }
  bool continue_event(std::uint32_t process_id, std::uint32_t thread_id, std::uint32_t status) override {
    ++counts.continues;
    return Win32System::continue_event(process_id, thread_id, status);
  }
  bool stack_walk(os::Handle process, os::Handle thread, os::WalkFrame& frame, os::ThreadContext& context,
                  os::WalkMemoryReader reader, void* cookie) override {
    ++counts.walks;
    return Win32System::stack_walk(process, thread, frame, context, reader, cookie);
  }

  Counts counts;
};

}  // namespace vantor::testing
