#include "process/data_breakpoints.h"

#include <cstring>

#include "common/messages.h"
#include "values/element.h"

namespace vantor {

std::function<void()> BreakpointsChanged;

namespace {

constexpr std::int64_t kMaxWatches = 4;

std::uint32_t rest_length(std::int64_t rest) { return rest == 1 || rest == 2 ? static_cast<std::uint32_t>(rest) : 4; }

void data_breakpoint_set() {
  if (BreakpointsChanged) BreakpointsChanged();
  ShowInformationMessage("Data breakpoint set");
}

}  // namespace

std::vector<watch_piece> watch_pieces(Address address, std::int64_t size) {
  std::vector<watch_piece> pieces;
  std::int64_t covered = 0;
  for (; size - covered >= 8; covered += 8) pieces.push_back({address + static_cast<Address>(covered), 8});
  if (size > covered) pieces.push_back({address + static_cast<Address>(covered), rest_length(size - covered)});
  return pieces;
}

bool set_data_breakpoint_on_value(BreakpointList& breakpoints, const element& value, std::uint32_t access) {
  // A constant has no home in the program, except an INTEGER*8 that holds an address
  // (what loc() gives): then the address it holds is watched.
  Address address = value.address;
  if (value.is_constant()) {
    if (value.type != kTypeInteger8) {
      ShowInformationMessage("This value cannot be breakpointed");
      return false;
    }
    std::memcpy(&address, constant_bytes(value), sizeof address);
  }
  const std::int64_t size = value.size;
  if (size <= 0) {
    ShowInformationMessage("This value cannot be breakpointed");
    return false;
  }
  // Whole eights only: objects of 33 to 39 bytes pass, and lose their last bytes below.
  const std::int64_t eights = size / 8;
  if (eights > kMaxWatches) {
    ShowInformationMessage("The maximum size of object that can be covered by a hardware breakpoint is 32-bytes");
    return false;
  }
  if (breakpoints.slots().free_hardware_slots() < eights) {
    ShowInformationMessage("There are not enough hardware registers available to satisfy this request");
    return false;
  }
  // A piece for which no slot is left is not set: the test above counted whole eights.
  for (const watch_piece& piece : watch_pieces(address, size))
    breakpoints.set_hardware_slot(access, kSlotDataBreakpoint, piece.address, piece.size);
  data_breakpoint_set();
  return true;
}

bool set_data_breakpoint_on_address(BreakpointList& breakpoints, Address address, std::int64_t size,
                                    std::uint32_t access) {
  if (size <= 0) {
    ShowInformationMessage("This value cannot be breakpointed");
    return false;
  }
  if (breakpoints.slots().free_hardware_slots() < 1) {
    ShowInformationMessage("There are no hardware registers available to satisfy this request");
    return false;
  }
  breakpoints.set_hardware_slot(access, kSlotDataBreakpoint, address, size >= 8 ? 8 : rest_length(size));
  data_breakpoint_set();
  return true;
}

bool set_run_to_instruction(BreakpointList& breakpoints, Address address) {
  if (breakpoints.set_hardware_slot(kAccessWrite, kSlotExecution, address, 1) < 0) {
    ShowInformationMessage("All hardware registers are being used");
    return false;
  }
  return true;
}

}  // namespace vantor
