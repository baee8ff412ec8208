#include "debuginfo/list_rows.h"

#include <cstdint>

#include "debuginfo/module.h"
#include "process/debugged_process.h"
#include "process/user_space_buffer.h"
#include "values/crt_format.h"

namespace vantor {

namespace {
void* pointer(Address address) { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(address)); }
}  // namespace

std::string common_block_row(const CommonBlock& block) {
  return crt_format("%s = z'%p' - z'%p' (size z'%llx')", block.name.c_str(), pointer(block.address),
                    pointer(block.address + block.size), static_cast<unsigned long long>(block.size));
}

std::string module_row(const Module& module) {
  return crt_format("%s = z'%p' - z'%p'", narrow_from_wide(module.display_name()).c_str(),
                    pointer(module.load_base()), pointer(module.end_address()));
}

void fill_common_window(DebuggedProcess& process, ui::window_rows& rows, std::string& status) {
  status.clear();
  for (const CommonBlock& block : process.common_blocks()) rows.add(common_block_row(block));
}

void fill_modules_window(DebuggedProcess& process, ui::window_rows& rows, std::string& status) {
  status.clear();
  for (const auto& module : process.modules()) rows.add(module_row(*module));
}

}  // namespace vantor
