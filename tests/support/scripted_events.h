// Test support: debug events as the system reports them for the in-memory target's one
// process and thread, for tests that script a program's run event by event.
#pragma once

#include <string>

#include "os/inmemory/in_memory_system.h"
#include "support/debug_image_builder.h"

namespace vantor::testing {

inline os::DebugEvent debug_event(std::uint32_t kind, std::uint32_t thread_id = os::InMemorySystem::kThreadId) {
  os::DebugEvent e;
  e.kind = kind;
  e.process_id = os::InMemorySystem::kProcessId;
  e.thread_id = thread_id;
  return e;
}

// A first-chance exception; an access violation's parameters are the access and the address.
inline os::DebugEvent exception_event(std::uint32_t code, Address address, std::uint64_t access = 0,
                                      std::uint64_t accessed = 0) {
  os::DebugEvent e = debug_event(os::kExceptionEvent);
  e.exception_code = code;
  e.exception_address = address;
  e.first_chance = true;
  e.parameter_count = 2;
  e.parameters[0] = access;
  e.parameters[1] = accessed;
  return e;
}

inline os::DebugEvent exit_process_event(std::uint32_t exit_code = 0) {
  os::DebugEvent e = debug_event(os::kExitProcessEvent);
  e.exit_code = exit_code;
  return e;
}

// The creation (kCreateProcessEvent) or load (kLoadDllEvent) of `image`, installed in
// `system` as `path`; the event carries the image's file.
inline os::DebugEvent image_event(std::uint32_t kind, os::InMemorySystem& system, DebugImageBuilder& image,
                                  const std::wstring& path) {
  image.install(system, path);
  os::DebugEvent e = debug_event(kind);
  e.image_base = image.base();
  std::uint32_t error = 0;
  e.file = system.open_file_for_reading(path, error);
  if (kind == os::kCreateProcessEvent) {
    e.process = os::InMemorySystem::kProcessHandle;
    e.thread = os::InMemorySystem::kThreadHandle;
  }
  return e;
}

// The start every program makes: its creation, then the system loader's breakpoint.
inline void queue_program_start(os::InMemorySystem& system, DebugImageBuilder& image, const std::wstring& path) {
  system.queue_event(image_event(os::kCreateProcessEvent, system, image, path));
  system.queue_event(exception_event(0x80000003, 0x7FF000001000));
}

}  // namespace vantor::testing
