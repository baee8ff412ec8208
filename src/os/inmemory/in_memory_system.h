// An in-memory operating-system layer for native tests: one scripted debuggee with a sparse
// byte-addressed memory (4 KiB pages, each readable or not), a register context per thread,
// a queue of debug events, a file system of byte strings, ini files, and recorded message
// boxes. It counts every cross-process call so that tests can pin the cost of an operation.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <set>

#include "os/os.h"

namespace vantor::os {

class InMemorySystem : public System {
 public:
  static constexpr Address kPageSize = 4096;
  static constexpr Handle kProcessHandle = 0x100;
  static constexpr Handle kThreadHandle = 0x104;
  static constexpr std::uint32_t kProcessId = 0x20;
  static constexpr std::uint32_t kThreadId = 0x24;

  // ---- setting up the fake target ----
  // Maps [address, address + size) as readable and writable zero bytes.
  void map(Address address, std::size_t size);
  void unmap(Address address, std::size_t size);
  // Maps (if needed) and fills memory without counting a call.
  void poke(Address address, const void* bytes, std::size_t size);
  void poke(Address address, const std::vector<std::uint8_t>& bytes) { poke(address, bytes.data(), bytes.size()); }
  template <typename T>
  void poke_value(Address address, T value) { poke(address, &value, sizeof value); }
  std::vector<std::uint8_t> peek(Address address, std::size_t size) const;  // unreadable bytes read 0
  bool is_mapped(Address address) const;
  bool all_mapped(Address address, std::size_t size) const;

  void queue_event(const DebugEvent& event) { events_.push_back(event); }
  std::size_t queued_events() const { return events_.size(); }
  ThreadContext& context(Handle thread = kThreadHandle) { return contexts_[thread]; }
  void add_file(const std::wstring& path, std::vector<std::uint8_t> bytes) { files_[path] = std::move(bytes); }
  void add_text_file(const std::wstring& path, const std::string& text) {
    files_[path] = std::vector<std::uint8_t>(text.begin(), text.end());
  }
  const std::vector<std::uint8_t>* file(const std::wstring& path) const;
  void set_environment(const std::wstring& name, const std::wstring& value) { environment_[name] = value; }
  void set_message_box_answer(int answer) { message_box_answer_ = answer; }
  void set_32bit(bool value) { is_32bit_ = value; }
  void set_create_process_error(std::uint32_t error) { create_error_ = error; }
  // Symbols served by the fake debug-help library: address -> (name, size).
  void add_symbol(Address address, std::uint64_t size, const std::string& name) { symbols_[address] = {name, size}; }
  // Called on each wait_for_event, before events are taken: lets a test react to a resume.
  std::function<void(InMemorySystem&)> on_wait;
  std::function<void(int status)> on_end_debugger;

  // ---- what the debugger did ----
  struct Counters {
    std::size_t reads = 0, writes = 0, get_contexts = 0, set_contexts = 0, waits = 0, continues = 0;
    std::size_t calls() const { return reads + writes + get_contexts + set_contexts + waits + continues; }
  };
  Counters counters;
  struct MessageBoxCall {
    std::wstring text, title;
    std::uint32_t flags;
  };
  std::vector<MessageBoxCall> message_boxes;
  std::vector<std::wstring> shell_commands;
  std::vector<std::wstring> created_command_lines;
  std::vector<std::uint32_t> continue_statuses;
  // Modules told to the debug-help library after it started: base -> path.
  std::map<Address, std::wstring> symbol_modules;
  int suspend_count = 0;
  bool terminated = false;
  std::optional<std::uint32_t> process_exit_code;  // nullopt: still running
  std::map<std::string, std::map<std::string, std::string>> profile;  // "file|section" -> key -> value
  std::uint64_t clock_ms = 0;
  std::vector<Handle> events_made;
  struct InputWait {
    Handle event;
    std::uint32_t timeout_ms;
  };
  std::vector<InputWait> input_waits;

  // ---- System ----
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
  bool symbols_initialize(Handle process) override;
  bool symbols_load_module(Handle process, const std::wstring& path, Address base, std::uint64_t size) override;
  void symbols_unload_module(Handle process, Address base) override;
  bool stack_walk(Handle process, Handle thread, WalkFrame& frame, ThreadContext& context, WalkMemoryReader reader,
                  void* cookie) override;
  bool symbol_from_address(Handle process, Address address, std::string& name, std::uint64_t& displacement) override;
  bool symbol_address(Handle process, const std::string& name, Address& address) override;
  std::uint32_t profile_int(const std::string& section, const std::string& key, std::uint32_t fallback,
                            const std::string& file) override;
  std::string profile_string(const std::string& section, const std::string& key, const std::string& fallback,
                             std::size_t capacity, const std::string& file) override;
  bool write_profile_string(const std::string& section, const std::string& key, const std::string& value,
                            const std::string& file) override;
  int message_box(const std::wstring& text, const std::wstring& title, std::uint32_t flags) override;
  int run_shell_command(const std::wstring& command) override;
  std::optional<std::wstring> environment(const std::wstring& name) override;
  std::uint64_t milliseconds() override { return clock_ms; }
  Handle create_event() override { return events_made.emplace_back(next_handle_++); }
  // No input ever comes: each wait lasts its whole time-out.
  void wait_for_input(Handle event, std::uint32_t timeout_ms) override {
    input_waits.push_back({event, timeout_ms});
    clock_ms += timeout_ms;
  }
  std::wstring current_directory() override { return L"C:\\work"; }
  // Calls on_end_debugger first: a handler that throws turns the end into an outcome the
  // test sees; otherwise the test process ends with the status, as the debugger would.
  [[noreturn]] void end_debugger(int status) override;
  std::wstring wide_from_oem(const std::string& text) override;
  std::string oem_from_wide(const std::wstring& text) override;

 private:
  struct Page {
    std::array<std::uint8_t, kPageSize> bytes{};
  };
  std::map<Address, Page> pages_;  // by page number
  std::deque<DebugEvent> events_;
  std::map<Handle, ThreadContext> contexts_;
  std::map<std::wstring, std::vector<std::uint8_t>> files_;
  std::map<Handle, std::wstring> open_files_;
  std::map<Handle, std::wstring> mappings_;
  Handle next_handle_ = 0x1000;
  std::map<std::wstring, std::wstring> environment_;
  std::map<Address, std::pair<std::string, std::uint64_t>> symbols_;
  int message_box_answer_ = kIdOk;
  bool is_32bit_ = false;
  std::uint32_t create_error_ = 0;
};

}  // namespace vantor::os
