#include "process/debugged_process.h"

#include "debuginfo/module.h"
#include "debuginfo/source_file.h"
#include "debuginfo/source_files.h"
#include "process/process_breakpoint_host.h"
#include "stack/call_stack.h"

namespace vantor {

DebuggedProcess* CurrentProcess = nullptr;

DebuggedProcess::DebuggedProcess()
    : breakpoint_host_(std::make_unique<ProcessBreakpointHost>(*this)),
      breakpoints_(std::make_unique<BreakpointList>(*breakpoint_host_, hardware_slots_)),
      stepping_(std::make_unique<Stepping>(*breakpoint_host_, *breakpoints_, hardware_slots_)) {}
DebuggedProcess::~DebuggedProcess() = default;

std::size_t DebuggedProcess::read(Address address, void* buffer, std::size_t size) {
  return os::system().read_memory(process_info_.process, address, buffer, size);
}

std::size_t DebuggedProcess::write(Address address, const void* buffer, std::size_t size) {
  return os::system().write_memory(process_info_.process, address, buffer, size);
}

Module* DebuggedProcess::module_containing(Address address) const {
  for (const auto& module : modules_)
    if (address >= module->load_base() && address < module->end_address()) return module.get();
  return nullptr;
}

Module* DebuggedProcess::add_module(std::unique_ptr<Module> module) {
  modules_.insert(modules_.begin(), std::move(module));
  Module* added = modules_.front().get();
  if (symbol_handler_initialised_) {
    const Address base = added->load_base(), end = added->end_address();
    os::system().symbols_load_module(process_handle(), added->path(), base, end > base ? end - base : 0);
  }
  return added;
}

void DebuggedProcess::remove_module_at(Address base) {
  for (auto it = modules_.begin(); it != modules_.end(); ++it)
    if ((*it)->load_base() == base) {
      forget_module_sources(source_files_, **it);
      if (symbol_handler_initialised_) os::system().symbols_unload_module(process_handle(), base);
      modules_.erase(it);
      return;
    }
}

}  // namespace vantor
