// The user's requests for hardware watches: a data breakpoint on a value (from the data
// views and the command language), on a raw address and size (from the memory dump), and
// running to one instruction (from the assembler view). Each refusal is an information box
// and leaves the slots as they were.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "process/breakpoint_list.h"

namespace vantor {

struct element;

// One hardware watch of a covered object: its first byte and length.
struct watch_piece {
  Address address = 0;
  std::uint32_t size = 0;
};

// How an object of `size` bytes at `address` is covered: 8-byte watches from its first
// byte while 8 bytes remain, then one watch for the rest, where 3 becomes 4 and 5 to 7
// become 4 (so the last one to three bytes of such a rest go unwatched).
std::vector<watch_piece> watch_pieces(Address address, std::int64_t size);

// Called after the breakpoint list changed through a request here, so that open
// breakpoints windows refresh. Set by the user interface; empty when none is open.
extern std::function<void()> BreakpointsChanged;

// `access` is kAccessUse for a use breakpoint; anything else watches writes only.
// Each returns true when the breakpoint was set.
bool set_data_breakpoint_on_value(BreakpointList& breakpoints, const element& value, std::uint32_t access);
// One watch; a length that is not 1, 2, 4 or 8 is taken as the cover above would take it.
bool set_data_breakpoint_on_address(BreakpointList& breakpoints, Address address, std::int64_t size,
                                    std::uint32_t access);
// Fills an execution slot on `address`; the caller then posts the instruction-level go.
bool set_run_to_instruction(BreakpointList& breakpoints, Address address);

}  // namespace vantor
