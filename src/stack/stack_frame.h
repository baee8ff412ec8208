// One active routine of the stopped thread. The call-stack walk makes one per frame; the
// user interface and the evaluator then ask it for the routine's name, source position
// and variables. Three kinds: frames of our compiler's Fortran routines (F95StackFrame),
// their common base (QuorvelStackFrame), and frames unwound by the system's debug-help
// library (MicrosoftStackFrame), which know only a symbol name.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "debuginfo/map_entry.h"
#include "values/element.h"

namespace vantor {

class DebuggedProcess;
class Module;
struct element;

// Where a variable, or a variable bound of an array, lives in the debugged process.
struct VariableAddress {
  Address address = 0;
  Address base = 0;        // what the variable's bounds and components are relative to
  std::int32_t error = 0;  // 0, or the element error code: 34 no address in this frame,
                           // 38 a virtual COMMON block the program has not touched yet
};

class StackFrame {
 public:
  StackFrame(DebuggedProcess* process, Address pc, Address frame_base, Address return_slot, std::int32_t index,
             Module* module)
      : pc(pc), frame_base(frame_base), return_slot(return_slot), index(index), process(process), module(module) {}
  virtual ~StackFrame() = default;
  StackFrame(const StackFrame&) = delete;
  StackFrame& operator=(const StackFrame&) = delete;

  // Makes the routine's symbols ready: reads its symbol stream the first time any frame of
  // the routine needs it. Frames without symbols do nothing.
  virtual void load_symbols() {}
  // Number of the routine's own variables; 0 for frames without symbols.
  virtual int variable_count() { return 0; }
  // The typed value of the routine's variable with that index (stream order, from 0);
  // null without symbols or when the index is out of range.
  virtual std::unique_ptr<element> variable_element(int index);
  // The debug record of the routine's variable with that index; null without symbols.
  virtual const VariableRecord* variable_record(int /*index*/) { return nullptr; }
  // How component names are joined in this frame's language: '%' Fortran, '.' C.
  virtual char member_separator() const { return '.'; }
  // The language code of values made in this frame (4 Fortran, 5 otherwise).
  virtual int language_code() const { return 5; }
  // True when the routine has a line table with at least one record.
  virtual bool has_lines() const { return false; }
  // The source file named by the routine's line table, as recorded; empty without one.
  virtual std::string source_file_name() const { return {}; }
  // The name the stack window shows for the frame.
  virtual std::string routine_name() const = 0;
  virtual MapEntry* map_entry() const { return nullptr; }
  // The typed value of the routine's variable of that name (case ignored, first match);
  // null if absent.
  virtual std::unique_ptr<element> find_variable(std::string_view name);
  // Resolves `argument` inside a structure value (type code 22) through the component
  // table attached to it; null for any other value and for frames without symbols.
  virtual std::unique_ptr<element> find_in_scope(std::string_view argument, const element& value);
  // Where the routine begins; the program counter when the frame cannot tell.
  virtual Address routine_start() const { return pc; }
  // The address of a variable by the address type and value of its record (or of one of
  // its variable array bounds, with the base its own address gave). Frames without debug
  // information have no variables: error 34.
  virtual VariableAddress variable_address(std::uint32_t address_type, std::uint64_t value,
                                           const VariableRecord* variable, Address base);

  Address pc;
  // For our compiler's frames the stack pointer the walk recorded at pc; for frames the
  // system unwound, the walker's frame address.
  Address frame_base;
  // For our compiler's frames the address of the slot holding the return address; for
  // frames the system unwound, the return address itself.
  Address return_slot;
  // Position in the call stack: counted from 1 for our compiler's frames, from 0 for
  // frames the system unwound (the walk numbers them so; callers compare within a kind).
  std::int32_t index;
  DebuggedProcess* process;
  Module* module;
  // Set by the call stack once the walk is complete.
  std::int32_t total_frames = 0;
};

}  // namespace vantor
