#include "stack/f95_stack_frame.h"

#include "common/console.h"
#include "common/messages.h"
#include "debuginfo/module.h"
#include "debuginfo/symbol_stream.h"
#include "process/debugged_process.h"
#include "stack/call_stack.h"
#include "values/error_codes.h"
#include "values/variable_element.h"

namespace vantor {

namespace {

// Address types of variable records (the low four bits of the descriptor word).
enum : std::uint32_t {
  kAddressRelative = 0,
  kAddressFrame = 1,
  kAddressCallerFrame = 3,
  kAddressConstant = 4,
  kAddressArgument = 5,
  kAddressCallerArgument = 7,
  kAddressCommon = 8,
  kAddressStatic = 9,
  kAddressExternal = 10,
  kAddressFramePointer = 11,
  kAddressCallerFramePointer = 12,
};

Address frame_offset_of(const StackFrame& frame) {
  const MapEntry* entry = frame.map_entry();
  return entry ? static_cast<Address>(static_cast<std::int64_t>(entry->frame_offset)) : 0;
}

VariableAddress at(Address address, Address base) {
  VariableAddress where;
  where.address = address;
  where.base = base;
  return where;
}

VariableAddress nowhere(std::int32_t error = kErrorOutOfScope) {
  VariableAddress where;
  where.error = error;
  return where;
}

}  // namespace

void F95StackFrame::load_symbols() {
  symbols_requested_ = true;
  if (!entry_) return;
  if (!entry_->symbols_loaded) {
    if (entry_->debug_block == 0)
      entry_->symbols_loaded = true;  // nothing to read: a routine without variables
    else if (process)
      load_routine_symbols(*process, *entry_);
  }
  lead_word_ = entry_->lead_word;
}

void F95StackFrame::ensure_symbols() {
  if (!symbols_requested_) load_symbols();
}

int F95StackFrame::variable_count() {
  ensure_symbols();
  return QuorvelStackFrame::variable_count();
}

const VariableRecord* F95StackFrame::variable_record(int index) {
  ensure_symbols();
  return symbols() ? symbols()->variable(index) : nullptr;
}

std::unique_ptr<element> F95StackFrame::variable_element(int index) {
  const VariableRecord* record = variable_record(index);
  return record ? make_variable_element(*this, *record) : nullptr;
}

std::unique_ptr<element> F95StackFrame::find_variable(std::string_view name) {
  ensure_symbols();
  const VariableRecord* record = symbols() ? symbols()->variable_by_name(name) : nullptr;
  return record ? make_variable_element(*this, *record) : nullptr;
}

std::unique_ptr<element> F95StackFrame::find_in_scope(std::string_view argument, const element& value) {
  if (value.type != kTypeStructure || !value.structure || !process) return nullptr;
  return find_component(value, argument, *process);
}

// The next outer frame of the current call stack, when it is one of our compiler's.
StackFrame* F95StackFrame::caller() {
  CallStack* stack = process ? process->current_stack() : nullptr;
  if (!stack) return nullptr;
  std::int32_t position = stack->index_of(this);
  if (position < 0) return nullptr;
  StackFrame* outer = stack->frame(position + 1);
  return outer && outer->map_entry() ? outer : nullptr;
}

VariableAddress F95StackFrame::variable_address(std::uint32_t address_type, std::uint64_t value,
                                                const VariableRecord* variable, Address base) {
  if (!process) return nowhere();
  switch (address_type) {
    case kAddressRelative:
      return at(base + value, base);

    case kAddressFrame:
    case kAddressFramePointer: {
      Address local = frame_base + frame_offset_of(*this) + value;
      return at(address_type == kAddressFramePointer ? process->read_u64(local) : local, local);
    }

    case kAddressCallerFrame:
    case kAddressCallerFramePointer: {
      StackFrame* host = caller();
      if (!host) return nowhere();
      Address local = host->frame_base + value + frame_offset_of(*host);
      bool through_pointer = address_type == kAddressCallerFramePointer && variable &&
                             variable->address_type() == kAddressCallerFramePointer;
      return at(through_pointer ? process->read_u64(local) : local, local);
    }

    case kAddressConstant:
      return nowhere();

    case kAddressArgument:
      return at(process->read_u64(return_slot + value), frame_base + frame_offset_of(*this));

    case kAddressCallerArgument: {
      StackFrame* host = caller();
      if (!host) return nowhere();
      return at(process->read_u64(host->return_slot + value), host->frame_base + frame_offset_of(*host));
    }

    case kAddressCommon: {
      // Resolved once per block record: every later member of the block is found without
      // asking the process again.
      CommonBlockRecord* ciu = variable ? variable->common : nullptr;
      if (ciu && ciu->address == 0) ciu->address = process->common_block_address(ciu->name);
      VANTOR_ASSERT(ciu && ciu->address, "ciu->address", "StackFrame");
      if (!ciu || !ciu->address) return nowhere(kErrorUntouchedCommon);
      return at(ciu->address + value, ciu->address);
    }

    case kAddressStatic: {
      if (!module) return nowhere();
      ensure_symbols();
      Address statics = module->load_base() + lead_word_;
      return at(statics + value, statics);
    }

    case kAddressExternal: {
      Address found = variable ? process->address_of_name(variable->name) : 0;
      if (found == 0) return nowhere();
      return at(found, found);
    }

    default:
      console_print("unknown address type %d\n", static_cast<int>(address_type));
      return nowhere();
  }
}

}  // namespace vantor
