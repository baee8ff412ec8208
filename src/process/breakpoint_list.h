// The breakpoint list of the debugged process, its deferred requests, the planting of
// code breakpoints and the line traps. Only this class and the modules' line-trap switch
// ever write code bytes: which addresses hold traps is decided from the records, the
// planted flag and the armed flag, and patched here.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "process/breakpoint_host.h"
#include "process/breakpoint_info.h"
#include "process/hardware_slots.h"

namespace vantor {

enum BreakpointCheck : int {
  kNoBreakpoint = 0,
  kBreakpointRunOn = 1,
  kBreakpointStop = 2,
};

class BreakpointList {
 public:
  static constexpr std::uint8_t kTrapByte = 0xCC;
  static constexpr std::uint8_t kNoOperationByte = 0x90;

  BreakpointList(BreakpointHost& host, HardwareSlots& slots) : host_(host), slots_(slots) {}
  BreakpointList(const BreakpointList&) = delete;
  BreakpointList& operator=(const BreakpointList&) = delete;

  // A code breakpoint at `address`, appended at the tail; returns its id. When breakpoints
  // are planted (the program is running or paused) the new one is planted at once.
  std::uint32_t add_breakpoint(Address address, std::int32_t after, std::int32_t every, const std::string& condition,
                               const std::string& file, std::int32_t line, bool temporary = false);
  // Resolves (file, line) through the modules; -1 when no loaded module has that line.
  std::int64_t set_breakpoint(const std::string& file, std::int32_t line, std::int32_t after, std::int32_t every,
                              const std::string& condition);
  // A breakpoint carried over from an earlier run of the same program (a restart): its
  // place, counts, condition and saved byte as they were (the image is the same), a new id,
  // and no hits yet. A data breakpoint takes a hardware slot again, with `access`; 0 when
  // no slot is free.
  std::uint32_t add_carried_breakpoint(const breakpoint_info& earlier, std::uint32_t access);
  // Fills the lowest free hardware slot; a data breakpoint (kind 5) also gets its record at
  // the head of the list. -1 when no slot is free.
  int set_hardware_slot(std::uint32_t access, std::uint32_t kind, Address address, std::uint32_t size);
  void remove_breakpoint(std::uint32_t id);
  void clear_breakpoints();

  void plant_breakpoints();
  void lift_breakpoints();
  bool planted() const { return planted_; }

  // Kept until a module that holds the file loads; see retry_deferred_breakpoints().
  void add_deferred_breakpoint(const std::string& file, std::int32_t line, std::int32_t after, std::int32_t every,
                               const std::string& condition);
  void retry_deferred_breakpoints();
  const std::vector<deferred_breakpoint>& deferred() const { return deferred_; }

  // The hit rule: counts the hit of the breakpoint at `address` and says whether to stop.
  BreakpointCheck check_breakpoint(Address address);

  void arm_line_traps();
  void disarm_line_traps();
  bool line_traps_armed() const { return line_traps_armed_; }

  int count() const { return static_cast<int>(records_.size()); }
  const breakpoint_info* breakpoint(int index) const;
  const breakpoint_info* find(std::uint32_t id) const;
  // The id the next breakpoint will get. Starts at 1: callers treat an id below 1 as failure.
  std::uint32_t next_id() const { return counter_; }
  HardwareSlots& slots() { return slots_; }

 private:
  std::uint8_t original_byte_at(Address address, std::uint8_t read);
  void restore_byte_if_unused(const breakpoint_info& gone);

  BreakpointHost& host_;
  HardwareSlots& slots_;
  std::vector<std::unique_ptr<breakpoint_info>> records_;
  std::vector<deferred_breakpoint> deferred_;
  std::uint32_t counter_ = 1;
  bool planted_ = false;
  bool line_traps_armed_ = false;
};

}  // namespace vantor
