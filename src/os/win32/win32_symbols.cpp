// Frames of code without our debug tables are unwound by the system's debug-help library.
#include <windows.h>
// dbghelp.h needs the definitions of windows.h first.
#include <dbghelp.h>

#include <cstring>

#include "os/win32/win32_context.h"
#include "os/win32/win32_system.h"

namespace vantor::os {

namespace {

HANDLE native_handle(Handle handle) { return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(handle)); }

static_assert(sizeof(STACKFRAME64) <= sizeof(WalkFrame::native), "WalkFrame::native must hold a STACKFRAME64");

// StackWalk64's memory callback carries no user argument: the reader of the walk in
// progress is parked here for its duration (the debugger has one thread).
WalkMemoryReader current_reader = nullptr;
void* current_cookie = nullptr;

BOOL CALLBACK read_for_walker(HANDLE, DWORD64 address, PVOID buffer, DWORD size, LPDWORD bytes_read) {
  std::size_t done = current_reader(current_cookie, address, buffer, size);
  if (bytes_read != nullptr) *bytes_read = static_cast<DWORD>(done);
  return done > 0;
}

}  // namespace

bool Win32System::symbols_initialize(Handle process) {
  return SymInitialize(native_handle(process), nullptr, TRUE) != 0;
}

bool Win32System::symbols_load_module(Handle process, const std::wstring& path, Address base, std::uint64_t size) {
  if (SymLoadModuleExW(native_handle(process), nullptr, path.empty() ? nullptr : path.c_str(), nullptr, base,
                       static_cast<DWORD>(size), nullptr, 0) != 0)
    return true;
  return GetLastError() == ERROR_SUCCESS;  // it knew the module already
}

void Win32System::symbols_unload_module(Handle process, Address base) {
  SymUnloadModule64(native_handle(process), base);
}

bool Win32System::stack_walk(Handle process, Handle thread, WalkFrame& frame, ThreadContext& context,
                             WalkMemoryReader reader, void* cookie) {
  alignas(8) STACKFRAME64 native_frame;
  if (frame.has_native) {
    std::memcpy(&native_frame, frame.native.data(), sizeof native_frame);
  } else {
    std::memset(&native_frame, 0, sizeof native_frame);
    native_frame.AddrPC.Offset = frame.pc;
    native_frame.AddrPC.Mode = AddrModeFlat;
    native_frame.AddrFrame.Offset = frame.frame;
    native_frame.AddrFrame.Mode = AddrModeFlat;
    native_frame.AddrStack.Offset = frame.stack;
    native_frame.AddrStack.Mode = AddrModeFlat;
  }
  alignas(16) CONTEXT native_context;
  std::memset(&native_context, 0, sizeof native_context);
  native_from_context(context, native_context);

  current_reader = reader;
  current_cookie = cookie;
  BOOL ok = StackWalk64(IMAGE_FILE_MACHINE_AMD64, native_handle(process), native_handle(thread), &native_frame,
                        &native_context, read_for_walker, SymFunctionTableAccess64, SymGetModuleBase64, nullptr);
  current_reader = nullptr;
  current_cookie = nullptr;
  if (!ok) return false;

  context_from_native(native_context, context);
  frame.pc = native_frame.AddrPC.Offset;
  frame.frame = native_frame.AddrFrame.Offset;
  frame.stack = native_frame.AddrStack.Offset;
  frame.return_address = native_frame.AddrReturn.Offset;
  std::memcpy(frame.native.data(), &native_frame, sizeof native_frame);
  frame.has_native = true;
  return true;
}

bool Win32System::symbol_from_address(Handle process, Address address, std::string& name,
                                      std::uint64_t& displacement) {
  constexpr DWORD kMaxName = 512;
  alignas(8) unsigned char storage[sizeof(IMAGEHLP_SYMBOL64) + kMaxName];
  std::memset(storage, 0, sizeof storage);
  auto* symbol = reinterpret_cast<IMAGEHLP_SYMBOL64*>(storage);
  symbol->SizeOfStruct = sizeof(IMAGEHLP_SYMBOL64);
  symbol->MaxNameLength = kMaxName;
  DWORD64 offset = 0;
  if (!SymGetSymFromAddr64(native_handle(process), address, &offset, symbol)) return false;
  name = symbol->Name;
  displacement = offset;
  return true;
}

bool Win32System::symbol_address(Handle process, const std::string& name, Address& address) {
  constexpr DWORD kMaxName = 512;
  alignas(8) unsigned char storage[sizeof(SYMBOL_INFO) + kMaxName];
  std::memset(storage, 0, sizeof storage);
  auto* symbol = reinterpret_cast<SYMBOL_INFO*>(storage);
  symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
  symbol->MaxNameLen = kMaxName;
  if (!SymFromName(native_handle(process), name.c_str(), symbol)) return false;
  address = symbol->Address;
  return true;
}

}  // namespace vantor::os
