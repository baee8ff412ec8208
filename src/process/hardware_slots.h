// The processor's four debug address registers, seen as four slots. They serve three jobs:
// user data breakpoints, a one-shot execution breakpoint (run to an instruction), and a
// one-shot watch on the stack slot holding a routine's return address (step over and step
// out). Filling a slot changes nothing in the thread: encode() writes the registers into a
// context, which the owner then stores.
#pragma once

#include <array>
#include <cstdint>

#include "os/os.h"

namespace vantor {

using Address = std::uint64_t;

enum HardwareSlotKind : std::uint32_t {
  kSlotFree = 0,
  kSlotExecution = 1,
  kSlotReturnWatch = 2,
  // Recognised on a hit like kSlotReturnWatch, but never armed by encode().
  kSlotUnarmedReturnWatch = 3,
  kSlotDataBreakpoint = 5,
};

enum HardwareAccess : std::uint32_t {
  kAccessUse = 1,    // reads and writes
  kAccessWrite = 2,  // writes only (any value but kAccessUse means this)
};

struct hardware_slot {
  Address address = 0;
  std::uint32_t size = 0;  // 1, 2, 4 or 8
  std::uint32_t access = 0;
  std::uint32_t kind = kSlotFree;
};

class HardwareSlots {
 public:
  static constexpr int kCount = 4;

  const hardware_slot& operator[](int slot) const { return slots_[static_cast<std::size_t>(slot)]; }
  int free_hardware_slots() const;
  // Fills the lowest free slot; -1 (and no change) when all four are taken.
  int take(std::uint32_t access, std::uint32_t kind, Address address, std::uint32_t size);
  void free(int slot);
  // Frees the one-shot slots (execution and return watches) once a stop has been reached.
  void free_one_shot_slots();
  void free_data_breakpoint_slots();

  // Bit i is set once slot i has been armed; bits are never taken away, so a hit on a slot
  // that has since been freed is still recognised (and then found free).
  std::uint32_t enabled_mask() const { return enabled_mask_; }

  // Writes DR0-DR3 and DR7 of `context` from the slots and clears the hit bits of DR6 (the
  // processor never clears them itself, so a stale bit would later be taken for a new hit).
  // Returns true when any of those registers changed.
  bool encode(os::ThreadContext& context);
  // The slot whose hit the debug status register reports (the lowest one), or -1.
  int slot_hit(std::uint64_t dr6) const;

  // The DR7 that encode() would produce from `dr7` (exposed for its own tests).
  std::uint64_t dr7_from(std::uint64_t dr7) const;

 private:
  std::array<hardware_slot, kCount> slots_{};
  std::uint32_t enabled_mask_ = 0;
};

}  // namespace vantor
