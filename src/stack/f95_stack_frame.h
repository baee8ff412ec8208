// A frame of a Fortran routine our compiler built. It reads the routine's symbol stream
// the first time it is asked about variables, and answers by name or index from it.
#pragma once

#include "stack/quorvel_stack_frame.h"

namespace vantor {

class F95StackFrame : public QuorvelStackFrame {
 public:
  // `position` counts from 1 (the innermost frame is 1).
  F95StackFrame(DebuggedProcess* process, Address pc, Address frame_base, Address return_slot, MapEntry* entry,
                Module* module, std::int32_t position)
      : QuorvelStackFrame(process, pc, frame_base, return_slot, position, module, entry) {}

  // Reads the symbol stream once per routine (the flag lives in the routine-map entry and
  // outlasts the frame); later frames of the routine only copy the lead word. A routine
  // without a debug block counts as loaded with no symbols.
  void load_symbols() override;
  // The accessors below load the symbols on their first use in this frame, so that a
  // routine whose symbols cannot be read is reported once per frame, not once per question.
  int variable_count() override;
  std::unique_ptr<element> variable_element(int index) override;
  const VariableRecord* variable_record(int index) override;
  char member_separator() const override { return '%'; }
  int language_code() const override { return 4; }
  std::unique_ptr<element> find_variable(std::string_view name) override;
  std::unique_ptr<element> find_in_scope(std::string_view argument, const element& value) override;
  // Resolves every address type of the debug records: frame-relative locals (1, and 11
  // through a pointer kept there), the host's variables seen from an internal procedure
  // through the caller's frame (3, 12 through a pointer for type-12 variables, and 7 for
  // its arguments), arguments by reference through the return slot (5), COMMON members
  // (8), static data after the image's load base and the lead word (9), names the process
  // resolves (10), and offsets from a given base (0). Error 34 when there is no address
  // (a constant, a missing caller, an unknown type), 38 for a COMMON block the program's
  // run-time list does not hold.
  VariableAddress variable_address(std::uint32_t address_type, std::uint64_t value, const VariableRecord* variable,
                                   Address base) override;

  // The first word of the routine's debug block: its static data's offset from the load
  // base. Known once the symbols are loaded.
  std::uint32_t lead_word() const { return lead_word_; }

 private:
  void ensure_symbols();
  StackFrame* caller();
  const F95SymbolTable* symbols() const { return entry_ ? entry_->symbols.get() : nullptr; }

  std::uint32_t lead_word_ = 0;
  bool symbols_requested_ = false;
};

}  // namespace vantor
