// The operating-system layer of the product: every service of os::System done with the
// Win32 API. This directory is the only code that includes <windows.h>. Handles cross the
// interface as opaque 64-bit numbers.
#pragma once

#include <map>

#include "os/os.h"

namespace vantor::os {

class Win32System : public System {
 public:
  Win32System() = default;
  Win32System(const Win32System&) = delete;
  Win32System& operator=(const Win32System&) = delete;

  // processes and debug events (win32_process.cpp)
  bool create_process(const std::wstring& command_line, LaunchedProcess& out, std::uint32_t& error) override;
  bool wait_for_event(DebugEvent& event, std::uint32_t timeout_ms) override;
  bool continue_event(std::uint32_t process_id, std::uint32_t thread_id, std::uint32_t status) override;
  int suspend_thread(Handle thread) override;
  int resume_thread(Handle thread) override;
  bool get_context(Handle thread, ThreadContext& context) override;
  bool set_context(Handle thread, const ThreadContext& context) override;
  bool is_32bit_process(Handle process) override;
  std::optional<std::uint32_t> exit_code(Handle process) override;
  bool terminate_process(Handle process, std::uint32_t exit_code) override;
  bool stop_debugging(std::uint32_t process_id) override;
  void close_handle(Handle handle) override;
  std::size_t read_memory(Handle process, Address address, void* buffer, std::size_t size) override;
  std::size_t write_memory(Handle process, Address address, const void* buffer, std::size_t size) override;

  // image files and plain files (win32_files.cpp)
  Handle open_file_for_reading(const std::wstring& path, std::uint32_t& error) override;
  std::wstring final_path(Handle file) override;
  Handle create_file_mapping(Handle file, std::uint32_t& error) override;
  MappedView map_view(Handle mapping, std::uint32_t& error) override;
  void unmap_view(const MappedView& view) override;
  bool file_exists(const std::wstring& path) override;
  std::optional<std::vector<std::uint8_t>> read_file(const std::wstring& path, std::size_t max_bytes) override;
  bool append_file(const std::wstring& path, const std::string& text) override;
  bool write_file(const std::wstring& path, const std::string& text) override;
  bool delete_file(const std::wstring& path) override;

  // the debug-help library (win32_symbols.cpp)
  bool symbols_initialize(Handle process) override;
  bool symbols_load_module(Handle process, const std::wstring& path, Address base, std::uint64_t size) override;
  void symbols_unload_module(Handle process, Address base) override;
  bool stack_walk(Handle process, Handle thread, WalkFrame& frame, ThreadContext& context, WalkMemoryReader reader,
                  void* cookie) override;
  bool symbol_from_address(Handle process, Address address, std::string& name, std::uint64_t& displacement) override;
  bool symbol_address(Handle process, const std::string& name, Address& address) override;

  // ini files, user interaction, environment, code pages (win32_environment.cpp)
  std::uint32_t profile_int(const std::string& section, const std::string& key, std::uint32_t fallback,
                            const std::string& file) override;
  std::string profile_string(const std::string& section, const std::string& key, const std::string& fallback,
                             std::size_t capacity, const std::string& file) override;
  bool write_profile_string(const std::string& section, const std::string& key, const std::string& value,
                            const std::string& file) override;
  int message_box(const std::wstring& text, const std::wstring& title, std::uint32_t flags) override;
  int run_shell_command(const std::wstring& command) override;
  std::optional<std::wstring> environment(const std::wstring& name) override;
  std::uint64_t milliseconds() override;
  Handle create_event() override;
  void wait_for_input(Handle event, std::uint32_t timeout_ms) override;
  std::wstring current_directory() override;
  [[noreturn]] void end_debugger(int status) override;
  std::wstring wide_from_oem(const std::string& text) override;
  std::string oem_from_wide(const std::wstring& text) override;

 private:
  // A view's size is the file's, which MapViewOfFile does not report: kept per mapping.
  std::map<Handle, std::uint64_t> mapping_sizes_;
};

}  // namespace vantor::os
