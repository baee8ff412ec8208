// One breakpoint of the debugged process: a code breakpoint (a line start whose
// no-operation byte is replaced by a trap) or a data breakpoint (one hardware slot).
#pragma once

#include <cstdint>
#include <string>

namespace vantor {

using Address = std::uint64_t;

enum BreakpointKind : std::int32_t {
  kCodeBreakpoint = 0,
  kDataBreakpoint = 1,
};

struct breakpoint_info {
  std::uint32_t id = 0;  // from the process's counter, shared by both kinds
  std::int32_t kind = kCodeBreakpoint;
  std::string file;       // as given by the caller; empty for data breakpoints
  std::string condition;  // trimmed; empty when there is none
  std::int32_t line = 0;  // data breakpoints: the hardware slot number
  Address address = 0;    // the line's first byte, or the watched address
  std::int32_t after = 0;  // the hit on which the first stop happens
  std::int32_t reserved = 0;
  std::int32_t every = 0;  // after the first stop, stop on every n-th further hit
  std::uint32_t every_counter = 0;
  std::uint32_t hits = 0;
  std::uint32_t length = 0;  // data breakpoints: bytes watched
  bool temporary = false;    // made by the debugger for itself; not kept over a restart
  std::uint8_t saved_byte = 0;

  bool is_data() const { return kind == kDataBreakpoint; }
};

// A breakpoint asked for before any loaded module holds its file; retried after every load.
struct deferred_breakpoint {
  std::string file;
  std::string condition;
  std::int32_t line = 0;
  std::int32_t after = 0;
  std::int32_t every = 0;
};

}  // namespace vantor
