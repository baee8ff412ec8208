// Test support: a scripted process for breakpoints and stepping. Its "modules" are a list
// of line-start addresses in fake memory whose traps it switches the way a module does
// (no-operation off, trap byte on, nothing when the state does not change); its call stack
// is a depth and a list of return slots set by the test.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "process/breakpoint_host.h"
#include "support/fake_target.h"

namespace vantor::testing {

class FakeBreakpointHost : public BreakpointHost {
 public:
  explicit FakeBreakpointHost(FakeTarget& target) : target_(target) {}

  // A line start of the fake image: a no-operation byte at `address`, found by
  // address_of_line(file, line).
  void add_line(const std::string& file, std::int32_t line, Address address) {
    lines_[{file, line}] = address;
    line_starts.push_back(address);
    target_.system.poke_value<std::uint8_t>(address, 0x90);
  }

  TargetMemory& memory() override { return target_.memory; }
  Address address_of_line(const std::string& file, std::int32_t line) override {
    auto it = lines_.find({file, line});
    return it == lines_.end() ? 0 : it->second;
  }
  void set_module_line_traps(bool on) override {
    if (on == traps_on) return;
    std::uint8_t byte = on ? 0xCC : 0x90;
    for (Address address : line_starts) target_.memory.write(address, &byte, 1);
    traps_on = on;
  }
  os::ThreadContext& context() override { return context_; }
  bool store_context() override {
    ++stores;
    return target_.system.set_context(os::InMemorySystem::kThreadHandle, context_);
  }
  void refresh_call_stack() override { ++refreshes; }
  bool has_call_stack() override { return depth > 0; }
  std::int32_t stack_depth() override { return depth; }
  Address return_slot(std::int32_t index) override {
    return index >= 0 && index < static_cast<std::int32_t>(return_slots.size())
               ? return_slots[static_cast<std::size_t>(index)]
               : 0;
  }
  void restore_previous_stack() override { ++stack_restores; }
  std::optional<bool> evaluate_condition(const std::string& condition) override {
    conditions_evaluated.push_back(condition);
    auto it = condition_values.find(condition);
    return it == condition_values.end() ? std::nullopt : it->second;
  }

  // The thread as the debugger last stored it.
  const os::ThreadContext& stored_context() { return target_.system.context(os::InMemorySystem::kThreadHandle); }

  std::vector<Address> line_starts;
  bool traps_on = false;
  std::int32_t depth = 0;
  std::vector<Address> return_slots;  // by frame index, innermost first
  int stores = 0;
  int stack_restores = 0;
  int refreshes = 0;
  std::map<std::string, std::optional<bool>> condition_values;
  std::vector<std::string> conditions_evaluated;

 private:
  FakeTarget& target_;
  os::ThreadContext context_;
  std::map<std::pair<std::string, std::int32_t>, Address> lines_;
};

}  // namespace vantor::testing
