// A frame of code without our debug tables (system libraries, other compilers' code),
// unwound by the system's debug-help library. It knows only the symbol that holds its
// program counter, and how far into that symbol the program counter lies.
#pragma once

#include "stack/stack_frame.h"

namespace vantor {

class MicrosoftStackFrame : public StackFrame {
 public:
  // `frame_address` and `return_address` are the walker's; `index` counts from 0.
  MicrosoftStackFrame(DebuggedProcess* process, Address pc, Address frame_address, Address return_address,
                      Module* module, std::string symbol_name, std::uint64_t displacement, std::int32_t index)
      : StackFrame(process, pc, frame_address, return_address, index, module),
        symbol_name_(std::move(symbol_name)),
        displacement_(displacement) {}

  std::string routine_name() const override { return symbol_name_; }
  Address routine_start() const override { return pc - displacement_; }
  std::uint64_t displacement() const { return displacement_; }

 private:
  std::string symbol_name_;
  std::uint64_t displacement_;
};

}  // namespace vantor
