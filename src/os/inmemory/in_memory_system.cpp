#include "os/inmemory/in_memory_system.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace vantor::os {

namespace {
std::string profile_file_key(const std::string& file, const std::string& section) { return file + "|" + section; }

// Calls piece(page number, offset in the page, offset in the transfer, length) for each
// page a transfer touches, a page at a time: fuzz targets and benchmarks move whole images.
template <typename Piece>
void for_each_page_piece(Address address, std::size_t size, Piece piece) {
  for (std::size_t done = 0; done < size;) {
    const Address at = address + done;
    const std::size_t in_page = static_cast<std::size_t>(at % InMemorySystem::kPageSize);
    const std::size_t length = std::min<std::size_t>(size - done, InMemorySystem::kPageSize - in_page);
    piece(at / InMemorySystem::kPageSize, in_page, done, length);
    done += length;
  }
}
}  // namespace

void InMemorySystem::map(Address address, std::size_t size) {
  if (size == 0) return;
  for (Address page = address / kPageSize; page <= (address + size - 1) / kPageSize; ++page) pages_[page];
}

void InMemorySystem::unmap(Address address, std::size_t size) {
  if (size == 0) return;
  for (Address page = address / kPageSize; page <= (address + size - 1) / kPageSize; ++page) pages_.erase(page);
}

void InMemorySystem::poke(Address address, const void* bytes, std::size_t size) {
  auto* source = static_cast<const std::uint8_t*>(bytes);
  for_each_page_piece(address, size, [&](Address page, std::size_t in_page, std::size_t done, std::size_t length) {
    std::memcpy(pages_[page].bytes.data() + in_page, source + done, length);
  });
}

std::vector<std::uint8_t> InMemorySystem::peek(Address address, std::size_t size) const {
  std::vector<std::uint8_t> out(size, 0);
  for_each_page_piece(address, size, [&](Address page, std::size_t in_page, std::size_t done, std::size_t length) {
    auto it = pages_.find(page);
    if (it != pages_.end()) std::memcpy(out.data() + done, it->second.bytes.data() + in_page, length);
  });
  return out;
}

bool InMemorySystem::is_mapped(Address address) const { return pages_.count(address / kPageSize) != 0; }

bool InMemorySystem::all_mapped(Address address, std::size_t size) const {
  bool mapped = true;
  for_each_page_piece(address, size, [&](Address page, std::size_t, std::size_t, std::size_t) {
    mapped = mapped && pages_.count(page) != 0;
  });
  return mapped;
}

const std::vector<std::uint8_t>* InMemorySystem::file(const std::wstring& path) const {
  auto it = files_.find(path);
  return it == files_.end() ? nullptr : &it->second;
}

bool InMemorySystem::create_process(const std::wstring& command_line, LaunchedProcess& out, std::uint32_t& error) {
  created_command_lines.push_back(command_line);
  if (create_error_ != 0) {
    error = create_error_;
    return false;
  }
  out = {kProcessHandle, kThreadHandle, kProcessId, kThreadId};
  suspend_count = 1;
  return true;
}

bool InMemorySystem::wait_for_event(DebugEvent& event, std::uint32_t timeout_ms) {
  ++counters.waits;
  if (on_wait) on_wait(*this);
  if (events_.empty()) {
    clock_ms += timeout_ms;
    return false;
  }
  event = events_.front();
  events_.pop_front();
  if (event.kind == kExitProcessEvent) process_exit_code = event.exit_code;
  return true;
}

bool InMemorySystem::continue_event(std::uint32_t, std::uint32_t, std::uint32_t status) {
  ++counters.continues;
  continue_statuses.push_back(status);
  return true;
}

int InMemorySystem::suspend_thread(Handle) { return suspend_count++; }

int InMemorySystem::resume_thread(Handle) {
  if (suspend_count == 0) return 0;
  return suspend_count--;
}

bool InMemorySystem::get_context(Handle thread, ThreadContext& context) {
  ++counters.get_contexts;
  context = contexts_[thread];
  return true;
}

bool InMemorySystem::set_context(Handle thread, const ThreadContext& context) {
  ++counters.set_contexts;
  contexts_[thread] = context;
  return true;
}

bool InMemorySystem::is_32bit_process(Handle) { return is_32bit_; }

std::optional<std::uint32_t> InMemorySystem::exit_code(Handle) {
  return process_exit_code ? *process_exit_code : kStillActive;
}

bool InMemorySystem::terminate_process(Handle, std::uint32_t code) {
  terminated = true;
  process_exit_code = code;
  return true;
}

bool InMemorySystem::stop_debugging(std::uint32_t) { return true; }

void InMemorySystem::close_handle(Handle handle) {
  open_files_.erase(handle);
  mappings_.erase(handle);
}

std::size_t InMemorySystem::read_memory(Handle, Address address, void* buffer, std::size_t size) {
  ++counters.reads;
  // Like the platform call: all or nothing.
  if (!all_mapped(address, size)) return 0;
  auto* out = static_cast<std::uint8_t*>(buffer);
  for_each_page_piece(address, size, [&](Address page, std::size_t in_page, std::size_t done, std::size_t length) {
    std::memcpy(out + done, pages_.at(page).bytes.data() + in_page, length);
  });
  return size;
}

std::size_t InMemorySystem::write_memory(Handle, Address address, const void* buffer, std::size_t size) {
  ++counters.writes;
  if (!all_mapped(address, size)) return 0;
  auto* in = static_cast<const std::uint8_t*>(buffer);
  for_each_page_piece(address, size, [&](Address page, std::size_t in_page, std::size_t done, std::size_t length) {
    std::memcpy(pages_.at(page).bytes.data() + in_page, in + done, length);
  });
  return size;
}

Handle InMemorySystem::open_file_for_reading(const std::wstring& path, std::uint32_t& error) {
  if (!files_.count(path)) {
    error = 2;
    return 0;
  }
  Handle handle = next_handle_++;
  open_files_[handle] = path;
  return handle;
}

std::wstring InMemorySystem::final_path(Handle file) {
  auto it = open_files_.find(file);
  return it == open_files_.end() ? std::wstring() : L"\\\\?\\" + it->second;
}

Handle InMemorySystem::create_file_mapping(Handle file, std::uint32_t& error) {
  auto it = open_files_.find(file);
  if (it == open_files_.end() || files_[it->second].empty()) {
    error = 6;
    return 0;
  }
  Handle handle = next_handle_++;
  mappings_[handle] = it->second;
  return handle;
}

MappedView InMemorySystem::map_view(Handle mapping, std::uint32_t& error) {
  auto it = mappings_.find(mapping);
  if (it == mappings_.end()) {
    error = 6;
    return {};
  }
  const auto& bytes = files_[it->second];
  return {bytes.data(), bytes.size()};
}

void InMemorySystem::unmap_view(const MappedView&) {}

bool InMemorySystem::file_exists(const std::wstring& path) { return files_.count(path) != 0; }

std::optional<std::vector<std::uint8_t>> InMemorySystem::read_file(const std::wstring& path, std::size_t max_bytes) {
  auto it = files_.find(path);
  if (it == files_.end()) return std::nullopt;
  auto bytes = it->second;
  if (bytes.size() > max_bytes) bytes.resize(max_bytes);
  return bytes;
}

bool InMemorySystem::append_file(const std::wstring& path, const std::string& text) {
  auto& bytes = files_[path];
  bytes.insert(bytes.end(), text.begin(), text.end());
  return true;
}

bool InMemorySystem::write_file(const std::wstring& path, const std::string& text) {
  files_[path] = std::vector<std::uint8_t>(text.begin(), text.end());
  return true;
}

bool InMemorySystem::delete_file(const std::wstring& path) { return files_.erase(path) != 0; }

bool InMemorySystem::symbols_initialize(Handle) { return true; }

bool InMemorySystem::symbols_load_module(Handle, const std::wstring& path, Address base, std::uint64_t) {
  symbol_modules[base] = path;
  return true;
}

void InMemorySystem::symbols_unload_module(Handle, Address base) { symbol_modules.erase(base); }

// The fake walker unwinds frameless code: each frame's return address is the 8 bytes at
// its stack pointer, and the caller's stack pointer lies just above that slot.
bool InMemorySystem::stack_walk(Handle, Handle, WalkFrame& frame, ThreadContext& context, WalkMemoryReader reader,
                                void* cookie) {
  if (frame.has_native) {
    frame.pc = frame.return_address;
    frame.stack += 8;
    frame.frame = frame.stack;
  }
  if (frame.pc == 0) return false;
  std::uint64_t ret = 0;
  if (reader(cookie, frame.stack, &ret, 8) != 8) return false;
  frame.return_address = ret;
  frame.has_native = true;
  context.rip = frame.pc;
  context.rsp = frame.stack;
  return true;
}

bool InMemorySystem::symbol_from_address(Handle, Address address, std::string& name, std::uint64_t& displacement) {
  auto it = symbols_.upper_bound(address);
  if (it == symbols_.begin()) return false;
  --it;
  if (address >= it->first + it->second.second) return false;
  name = it->second.first;
  displacement = address - it->first;
  return true;
}

bool InMemorySystem::symbol_address(Handle, const std::string& name, Address& address) {
  for (const auto& [start, symbol] : symbols_)
    if (symbol.first == name) {
      address = start;
      return true;
    }
  return false;
}

std::uint32_t InMemorySystem::profile_int(const std::string& section, const std::string& key, std::uint32_t fallback,
                                          const std::string& file) {
  auto text = profile_string(section, key, "", 64, file);
  if (text.empty()) return fallback;
  // Like the platform reader: leading digits, a minus sign allowed.
  bool negative = text[0] == '-';
  std::uint32_t value = 0;
  for (std::size_t i = negative ? 1 : 0; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
    value = value * 10 + static_cast<std::uint32_t>(text[i] - '0');
  return negative ? 0u - value : value;
}

std::string InMemorySystem::profile_string(const std::string& section, const std::string& key,
                                           const std::string& fallback, std::size_t capacity,
                                           const std::string& file) {
  std::string value = fallback;
  auto sit = profile.find(profile_file_key(file, section));
  if (sit != profile.end()) {
    auto kit = sit->second.find(key);
    if (kit != sit->second.end()) value = kit->second;
  }
  if (capacity > 0 && value.size() > capacity - 1) value.resize(capacity - 1);
  return value;
}

bool InMemorySystem::write_profile_string(const std::string& section, const std::string& key, const std::string& value,
                                          const std::string& file) {
  profile[profile_file_key(file, section)][key] = value;
  return true;
}

int InMemorySystem::message_box(const std::wstring& text, const std::wstring& title, std::uint32_t flags) {
  message_boxes.push_back({text, title, flags});
  return message_box_answer_;
}

int InMemorySystem::run_shell_command(const std::wstring& command) {
  shell_commands.push_back(command);
  return 0;
}

std::optional<std::wstring> InMemorySystem::environment(const std::wstring& name) {
  auto it = environment_.find(name);
  if (it == environment_.end()) return std::nullopt;
  return it->second;
}

// The fake code page is Latin-1: every byte has a wide form, and wide characters above
// 255 have no narrow one.
std::wstring InMemorySystem::wide_from_oem(const std::string& text) {
  std::wstring out;
  for (unsigned char c : text) out.push_back(static_cast<wchar_t>(c));
  return out;
}

std::string InMemorySystem::oem_from_wide(const std::wstring& text) {
  std::string out;
  for (wchar_t c : text) out.push_back(static_cast<std::uint32_t>(c) < 256 ? static_cast<char>(c) : '?');
  return out;
}

void InMemorySystem::end_debugger(int status) {
  if (on_end_debugger) on_end_debugger(status);
  std::exit(status);
}

}  // namespace vantor::os
