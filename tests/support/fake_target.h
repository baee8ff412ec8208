// Test support: the in-memory OS layer installed for the duration of a test, and a
// TargetMemory over it, so that code above the OS layer runs natively against fake memory.
#pragma once

#include "os/inmemory/in_memory_system.h"
#include "process/target_memory.h"

namespace vantor::testing {

class FakeMemory : public TargetMemory {
 public:
  explicit FakeMemory(os::InMemorySystem& system) : system_(system) {}
  std::size_t read(Address address, void* buffer, std::size_t size) override {
    return system_.read_memory(os::InMemorySystem::kProcessHandle, address, buffer, size);
  }
  std::size_t write(Address address, const void* buffer, std::size_t size) override {
    return system_.write_memory(os::InMemorySystem::kProcessHandle, address, buffer, size);
  }

 private:
  os::InMemorySystem& system_;
};

// Installs a fresh InMemorySystem as the session's OS layer; restores the previous one.
class FakeTarget {
 public:
  FakeTarget() : previous_(current()) { os::set_system(&system); }
  ~FakeTarget() { os::set_system(previous_); }
  FakeTarget(const FakeTarget&) = delete;
  FakeTarget& operator=(const FakeTarget&) = delete;

  os::InMemorySystem system;
  FakeMemory memory{system};

 private:
  static os::System* current();
  os::System* previous_;
};

}  // namespace vantor::testing
