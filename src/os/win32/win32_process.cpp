// Processes, threads, debug events, contexts and target memory.
#include <windows.h>

#include <cstring>
#include <vector>

#include "os/win32/win32_context.h"
#include "os/win32/win32_system.h"

namespace vantor::os {

namespace {

HANDLE native_handle(Handle handle) { return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(handle)); }
Handle opaque_handle(HANDLE handle) { return static_cast<Handle>(reinterpret_cast<std::uintptr_t>(handle)); }

void event_from_native(const DEBUG_EVENT& native, DebugEvent& event) {
  event = DebugEvent{};
  event.kind = native.dwDebugEventCode;
  event.process_id = native.dwProcessId;
  event.thread_id = native.dwThreadId;
  switch (native.dwDebugEventCode) {
    case EXCEPTION_DEBUG_EVENT: {
      const EXCEPTION_RECORD& record = native.u.Exception.ExceptionRecord;
      event.exception_code = record.ExceptionCode;
      event.exception_address = reinterpret_cast<std::uintptr_t>(record.ExceptionAddress);
      event.first_chance = native.u.Exception.dwFirstChance != 0;
      event.parameter_count = record.NumberParameters < event.parameters.size()
                                  ? record.NumberParameters
                                  : static_cast<std::uint32_t>(event.parameters.size());
      for (std::uint32_t i = 0; i < event.parameter_count; ++i) event.parameters[i] = record.ExceptionInformation[i];
      break;
    }
    case CREATE_PROCESS_DEBUG_EVENT:
      event.file = opaque_handle(native.u.CreateProcessInfo.hFile);
      event.image_base = reinterpret_cast<std::uintptr_t>(native.u.CreateProcessInfo.lpBaseOfImage);
      event.process = opaque_handle(native.u.CreateProcessInfo.hProcess);
      event.thread = opaque_handle(native.u.CreateProcessInfo.hThread);
      break;
    case CREATE_THREAD_DEBUG_EVENT:
      event.thread = opaque_handle(native.u.CreateThread.hThread);
      break;
    case EXIT_PROCESS_DEBUG_EVENT:
      event.exit_code = native.u.ExitProcess.dwExitCode;
      break;
    case EXIT_THREAD_DEBUG_EVENT:
      event.exit_code = native.u.ExitThread.dwExitCode;
      break;
    case LOAD_DLL_DEBUG_EVENT:
      event.file = opaque_handle(native.u.LoadDll.hFile);
      event.image_base = reinterpret_cast<std::uintptr_t>(native.u.LoadDll.lpBaseOfDll);
      break;
    case UNLOAD_DLL_DEBUG_EVENT:
      event.image_base = reinterpret_cast<std::uintptr_t>(native.u.UnloadDll.lpBaseOfDll);
      break;
    default:
      break;
  }
}

}  // namespace

bool Win32System::create_process(const std::wstring& command_line, LaunchedProcess& out, std::uint32_t& error) {
  STARTUPINFOW startup;
  std::memset(&startup, 0, sizeof startup);
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info;
  std::memset(&info, 0, sizeof info);
  // CreateProcessW may write into the command line, so it gets a private copy.
  std::vector<wchar_t> writable(command_line.begin(), command_line.end());
  writable.push_back(L'\0');
  if (!CreateProcessW(nullptr, writable.data(), nullptr, nullptr, TRUE,
                      DEBUG_ONLY_THIS_PROCESS | CREATE_SUSPENDED | NORMAL_PRIORITY_CLASS, nullptr, nullptr, &startup,
                      &info)) {
    error = GetLastError();
    return false;
  }
  out.process = opaque_handle(info.hProcess);
  out.thread = opaque_handle(info.hThread);
  out.process_id = info.dwProcessId;
  out.thread_id = info.dwThreadId;
  return true;
}

bool Win32System::wait_for_event(DebugEvent& event, std::uint32_t timeout_ms) {
  DEBUG_EVENT native;
  if (!WaitForDebugEvent(&native, timeout_ms)) return false;
  event_from_native(native, event);
  return true;
}

bool Win32System::continue_event(std::uint32_t process_id, std::uint32_t thread_id, std::uint32_t status) {
  return ContinueDebugEvent(process_id, thread_id, status) != 0;
}

int Win32System::suspend_thread(Handle thread) {
  DWORD previous = SuspendThread(native_handle(thread));
  return previous == static_cast<DWORD>(-1) ? -1 : static_cast<int>(previous);
}

int Win32System::resume_thread(Handle thread) {
  DWORD previous = ResumeThread(native_handle(thread));
  return previous == static_cast<DWORD>(-1) ? -1 : static_cast<int>(previous);
}

bool Win32System::get_context(Handle thread, ThreadContext& context) {
  alignas(16) CONTEXT native;
  std::memset(&native, 0, sizeof native);
  native.ContextFlags = CONTEXT_ALL;
  if (!GetThreadContext(native_handle(thread), &native)) return false;
  context_from_native(native, context);
  return true;
}

bool Win32System::set_context(Handle thread, const ThreadContext& context) {
  alignas(16) CONTEXT native;
  std::memset(&native, 0, sizeof native);
  if (!context.has_native) {
    // Without a saved record the fields the debugger does not name come from the thread.
    native.ContextFlags = CONTEXT_ALL;
    if (!GetThreadContext(native_handle(thread), &native)) return false;
    ThreadContext merged = context;
    std::memcpy(merged.native.data(), &native, sizeof native);
    merged.has_native = true;
    native_from_context(merged, native);
  } else {
    native_from_context(context, native);
  }
  return SetThreadContext(native_handle(thread), &native) != 0;
}

bool Win32System::is_32bit_process(Handle process) {
  BOOL wow64 = FALSE;
  return IsWow64Process(native_handle(process), &wow64) && wow64;
}

std::optional<std::uint32_t> Win32System::exit_code(Handle process) {
  DWORD code = 0;
  if (!GetExitCodeProcess(native_handle(process), &code)) return std::nullopt;
  return code;
}

bool Win32System::terminate_process(Handle process, std::uint32_t code) {
  return TerminateProcess(native_handle(process), code) != 0;
}

bool Win32System::stop_debugging(std::uint32_t process_id) { return DebugActiveProcessStop(process_id) != 0; }

void Win32System::close_handle(Handle handle) {
  if (handle != 0) CloseHandle(native_handle(handle));
}

std::size_t Win32System::read_memory(Handle process, Address address, void* buffer, std::size_t size) {
  SIZE_T done = 0;
  if (!ReadProcessMemory(native_handle(process), reinterpret_cast<LPCVOID>(static_cast<std::uintptr_t>(address)),
                         buffer, size, &done))
    return done < size ? done : 0;
  return done;
}

std::size_t Win32System::write_memory(Handle process, Address address, const void* buffer, std::size_t size) {
  SIZE_T done = 0;
  if (!WriteProcessMemory(native_handle(process), reinterpret_cast<LPVOID>(static_cast<std::uintptr_t>(address)),
                          buffer, size, &done))
    return done < size ? done : 0;
  // Code bytes change under the debugger (traps); the processor must not run stale ones.
  FlushInstructionCache(native_handle(process), reinterpret_cast<LPCVOID>(static_cast<std::uintptr_t>(address)), done);
  return done;
}

}  // namespace vantor::os
