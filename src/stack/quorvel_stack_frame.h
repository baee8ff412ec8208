// The common base of frames of routines our compiler built: they know their routine
// through its routine-map entry (name, code range, line table, symbols once loaded).
#pragma once

#include "stack/stack_frame.h"

namespace vantor {

class QuorvelStackFrame : public StackFrame {
 public:
  QuorvelStackFrame(DebuggedProcess* process, Address pc, Address frame_base, Address return_slot, std::int32_t index,
                    Module* module, MapEntry* entry)
      : StackFrame(process, pc, frame_base, return_slot, index, module), entry_(entry) {}

  // Counts the variables of symbols already loaded; 0 before load_symbols().
  int variable_count() override;
  bool has_lines() const override;
  std::string source_file_name() const override;
  // The routine's name; empty without a routine-map entry.
  std::string routine_name() const override;
  MapEntry* map_entry() const override { return entry_; }
  Address routine_start() const override;

 protected:
  MapEntry* entry_;
};

}  // namespace vantor
