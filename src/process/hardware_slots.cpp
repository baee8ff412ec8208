#include "process/hardware_slots.h"

namespace vantor {

namespace {

// Keeps the global-enable bits and bits 8-15; clears the local enables and every
// condition/length field.
constexpr std::uint64_t kDr7KeptBits = 0xFFFFFFFF0000FFAAull;

// The bytes that a watch of `size` covers as the LEN bits encode it.
Address length_in_register(std::uint32_t size) { return size == 1 || size == 2 || size == 8 ? size : 4; }

// R/W bits: 00 execute, 01 write, 11 read or write. LEN bits: 00 one byte, 01 two,
// 11 four, 10 eight.
std::uint64_t length_bits(std::uint32_t size) {
  switch (size) {
    case 1: return 0b00;
    case 2: return 0b01;
    case 8: return 0b10;
    default: return 0b11;
  }
}

std::uint64_t field_for(const hardware_slot& slot) {
  switch (slot.kind) {
    case kSlotReturnWatch: return 0b1011;  // read or write, eight bytes
    case kSlotDataBreakpoint: return (length_bits(slot.size) << 2) | (slot.access == kAccessUse ? 0b11 : 0b01);
    default: return 0;  // execution: one byte, R/W 00
  }
}

bool is_armed_kind(std::uint32_t kind) {
  return kind == kSlotExecution || kind == kSlotReturnWatch || kind == kSlotDataBreakpoint;
}

// The address a watch puts in its debug register. The processor compares only the bits
// above the watch's length, so an object that does not start on such a boundary is watched
// from the boundary below it either way; clearing the low bits ourselves changes nothing on
// the processor, but the kernel under Wine refuses an unaligned watch and, with it, the
// whole DR7 write: every other watch would be lost too.
Address register_address(const hardware_slot& slot) {
  if (slot.kind != kSlotDataBreakpoint && slot.kind != kSlotReturnWatch) return slot.address;
  const Address length = slot.kind == kSlotReturnWatch ? 8 : length_in_register(slot.size);
  return slot.address & ~(length - 1);
}

std::uint64_t& debug_address_register(os::ThreadContext& context, int slot) {
  switch (slot) {
    case 0: return context.dr0;
    case 1: return context.dr1;
    case 2: return context.dr2;
    default: return context.dr3;
  }
}

}  // namespace

int HardwareSlots::free_hardware_slots() const {
  int count = 0;
  for (const auto& slot : slots_) count += slot.kind == kSlotFree;
  return count;
}

int HardwareSlots::take(std::uint32_t access, std::uint32_t kind, Address address, std::uint32_t size) {
  for (int i = 0; i < kCount; ++i) {
    auto& slot = slots_[static_cast<std::size_t>(i)];
    if (slot.kind != kSlotFree) continue;
    slot = {address, size, access, kind};
    return i;
  }
  return -1;
}

void HardwareSlots::free(int slot) {
  if (slot >= 0 && slot < kCount) slots_[static_cast<std::size_t>(slot)] = {};
}

void HardwareSlots::free_one_shot_slots() {
  for (auto& slot : slots_)
    if (slot.kind == kSlotExecution || slot.kind == kSlotReturnWatch || slot.kind == kSlotUnarmedReturnWatch)
      slot = {};
}

void HardwareSlots::free_data_breakpoint_slots() {
  for (auto& slot : slots_)
    if (slot.kind == kSlotDataBreakpoint) slot = {};
}

std::uint64_t HardwareSlots::dr7_from(std::uint64_t dr7) const {
  dr7 &= kDr7KeptBits;
  for (int i = 0; i < kCount; ++i) {
    const auto& slot = slots_[static_cast<std::size_t>(i)];
    if (!is_armed_kind(slot.kind)) continue;
    dr7 |= std::uint64_t{1} << (2 * i);
    dr7 |= field_for(slot) << (16 + 4 * i);
  }
  return dr7;
}

bool HardwareSlots::encode(os::ThreadContext& context) {
  const os::ThreadContext before = context;
  context.dr7 = dr7_from(context.dr7);
  for (int i = 0; i < kCount; ++i) {
    const auto& slot = slots_[static_cast<std::size_t>(i)];
    if (is_armed_kind(slot.kind)) {
      debug_address_register(context, i) = register_address(slot);
      enabled_mask_ |= 1u << i;
    } else {
      debug_address_register(context, i) = 0;
    }
  }
  context.dr6 &= ~std::uint64_t{0xF};
  return before.dr0 != context.dr0 || before.dr1 != context.dr1 || before.dr2 != context.dr2 ||
         before.dr3 != context.dr3 || before.dr6 != context.dr6 || before.dr7 != context.dr7;
}

int HardwareSlots::slot_hit(std::uint64_t dr6) const {
  std::uint32_t hits = static_cast<std::uint32_t>(dr6 & 0xF) & enabled_mask_;
  for (int i = 0; i < kCount; ++i)
    if (hits & (1u << i)) return i;
  return -1;
}

}  // namespace vantor
