// The operating-system layer: every service the debugger needs from Windows, named after
// what the debugger does with it. Two implementations exist: os/win32 (the product, built
// only by mingw-w64) and os/inmemory (a scripted target for native tests). Nothing above
// this layer includes <windows.h>.
//
// Failures are reported in results (false, 0, an empty optional), never thrown; where the
// debugger shows the system's error number, the call hands it back through `error`.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantor::os {

using Address = std::uint64_t;
using Handle = std::uint64_t;  // opaque; 0 means none

// ---- thread context -------------------------------------------------------------------

// The registers the debugger reads and writes. `native` carries the platform's whole
// context record so that a round trip through the debugger loses nothing (segment
// registers, the rest of the floating-point state); implementations fill both views on
// read and write the named fields over `native` on store.
struct ThreadContext {
  std::uint64_t rax = 0, rbx = 0, rcx = 0, rdx = 0, rsi = 0, rdi = 0, rsp = 0, rbp = 0;
  std::uint64_t r8 = 0, r9 = 0, r10 = 0, r11 = 0, r12 = 0, r13 = 0, r14 = 0, r15 = 0;
  std::uint64_t rip = 0;
  std::uint32_t eflags = 0;
  std::uint16_t seg_cs = 0, seg_ss = 0;
  std::uint64_t dr0 = 0, dr1 = 0, dr2 = 0, dr3 = 0, dr6 = 0, dr7 = 0;
  std::uint16_t fp_control_word = 0, fp_status_word = 0;
  std::uint32_t mxcsr = 0;
  std::array<std::array<std::uint8_t, 16>, 16> xmm{};
  std::array<std::array<std::uint8_t, 16>, 8> x87{};  // FXSAVE layout, 10 bytes used each

  alignas(16) std::array<std::uint8_t, 1232> native{};
  bool has_native = false;
};

constexpr std::uint32_t kTrapFlag = 0x100;

// ---- debug events ----------------------------------------------------------------------

// Event kinds carry the platform's numbers so that "Event %d" prints what Windows sent.
enum EventKind : std::uint32_t {
  kExceptionEvent = 1,
  kCreateThreadEvent = 2,
  kCreateProcessEvent = 3,
  kExitThreadEvent = 4,
  kExitProcessEvent = 5,
  kLoadDllEvent = 6,
  kUnloadDllEvent = 7,
  kOutputDebugStringEvent = 8,
  kRipEvent = 9,
};

constexpr std::uint32_t kContinue = 0x00010002;             // DBG_CONTINUE
constexpr std::uint32_t kExceptionNotHandled = 0x80010001;  // DBG_EXCEPTION_NOT_HANDLED
constexpr std::uint32_t kStillActive = 259;

struct DebugEvent {
  std::uint32_t kind = 0;
  std::uint32_t process_id = 0;
  std::uint32_t thread_id = 0;

  // kExceptionEvent
  std::uint32_t exception_code = 0;
  Address exception_address = 0;
  bool first_chance = false;
  std::uint32_t parameter_count = 0;
  std::array<std::uint64_t, 15> parameters{};

  // kCreateProcessEvent and kLoadDllEvent: the image file (owned by the receiver, which
  // closes it) and where it was loaded; kUnloadDllEvent: image_base only.
  Handle file = 0;
  Address image_base = 0;

  // kCreateProcessEvent
  Handle process = 0;
  Handle thread = 0;

  // kExitProcessEvent
  std::uint32_t exit_code = 0;
};

struct LaunchedProcess {
  Handle process = 0;
  Handle thread = 0;
  std::uint32_t process_id = 0;
  std::uint32_t thread_id = 0;
};

// ---- image files -------------------------------------------------------------------------

// A read-only view of a whole file. Valid until unmap_view.
struct MappedView {
  const std::uint8_t* data = nullptr;
  std::size_t size = 0;
};

// ---- stack walking through the system's debug-help library --------------------------------

// One step of the system walker. The addresses are the walker's AddrPC, AddrFrame, AddrStack
// and AddrReturn; `native` keeps the walker's own frame record between calls.
struct WalkFrame {
  Address pc = 0, frame = 0, stack = 0, return_address = 0;
  alignas(8) std::array<std::uint8_t, 512> native{};
  bool has_native = false;
};

// Reads the debugged process's memory for the system walker; returns bytes read.
using WalkMemoryReader = std::size_t (*)(void* cookie, Address address, void* buffer, std::size_t size);

// ---- the layer -----------------------------------------------------------------------------

class System {
 public:
  virtual ~System() = default;

  // -- processes and debug events --
  virtual bool create_process(const std::wstring& command_line, LaunchedProcess& out, std::uint32_t& error) = 0;
  // Waits up to timeout_ms; false on time-out.
  virtual bool wait_for_event(DebugEvent& event, std::uint32_t timeout_ms) = 0;
  virtual bool continue_event(std::uint32_t process_id, std::uint32_t thread_id, std::uint32_t status) = 0;
  // Previous suspend count, or -1 on failure.
  virtual int suspend_thread(Handle thread) = 0;
  virtual int resume_thread(Handle thread) = 0;
  virtual bool get_context(Handle thread, ThreadContext& context) = 0;
  virtual bool set_context(Handle thread, const ThreadContext& context) = 0;
  virtual bool is_32bit_process(Handle process) = 0;
  // kStillActive while the process runs; nullopt when the query fails.
  virtual std::optional<std::uint32_t> exit_code(Handle process) = 0;
  virtual bool terminate_process(Handle process, std::uint32_t exit_code) = 0;
  virtual bool stop_debugging(std::uint32_t process_id) = 0;
  virtual void close_handle(Handle handle) = 0;

  // -- target memory: one call each, whatever the size; returns bytes transferred --
  virtual std::size_t read_memory(Handle process, Address address, void* buffer, std::size_t size) = 0;
  virtual std::size_t write_memory(Handle process, Address address, const void* buffer, std::size_t size) = 0;

  // -- image files --
  virtual Handle open_file_for_reading(const std::wstring& path, std::uint32_t& error) = 0;
  virtual std::wstring final_path(Handle file) = 0;  // empty on failure
  virtual Handle create_file_mapping(Handle file, std::uint32_t& error) = 0;
  virtual MappedView map_view(Handle mapping, std::uint32_t& error) = 0;
  virtual void unmap_view(const MappedView& view) = 0;

  // -- plain files (source text, scripts, logs, the 32-bit check) --
  virtual bool file_exists(const std::wstring& path) = 0;
  virtual std::optional<std::vector<std::uint8_t>> read_file(const std::wstring& path, std::size_t max_bytes = SIZE_MAX) = 0;
  virtual bool append_file(const std::wstring& path, const std::string& text) = 0;
  virtual bool write_file(const std::wstring& path, const std::string& text) = 0;
  virtual bool delete_file(const std::wstring& path) = 0;

  // -- the system's debug-help library (frames of code without our debug tables) --
  virtual bool symbols_initialize(Handle process) = 0;
  // The handler learns of the process's modules when it starts; a module loaded or unloaded
  // after that must be told to it, or the walker can neither unwind nor name its frames.
  virtual bool symbols_load_module(Handle process, const std::wstring& path, Address base, std::uint64_t size) = 0;
  virtual void symbols_unload_module(Handle process, Address base) = 0;
  virtual bool stack_walk(Handle process, Handle thread, WalkFrame& frame, ThreadContext& context,
                          WalkMemoryReader reader, void* cookie) = 0;
  virtual bool symbol_from_address(Handle process, Address address, std::string& name,
                                   std::uint64_t& displacement) = 0;
  // The address of a public symbol by its exact name (external variables of other
  // compilers' code); false when the symbol handler does not know it.
  virtual bool symbol_address(Handle process, const std::string& name, Address& address) = 0;

  // -- private-profile (ini) files --
  virtual std::uint32_t profile_int(const std::string& section, const std::string& key, std::uint32_t fallback,
                                    const std::string& file) = 0;
  virtual std::string profile_string(const std::string& section, const std::string& key, const std::string& fallback,
                                     std::size_t capacity, const std::string& file) = 0;
  virtual bool write_profile_string(const std::string& section, const std::string& key, const std::string& value,
                                    const std::string& file) = 0;

  // -- user interaction and environment --
  // Returns the button pressed (1 OK, 2 Cancel, ...). `flags` are the platform's MB_* bits.
  virtual int message_box(const std::wstring& text, const std::wstring& title, std::uint32_t flags) = 0;
  virtual int run_shell_command(const std::wstring& command) = 0;  // _wsystem
  virtual std::optional<std::wstring> environment(const std::wstring& name) = 0;
  virtual std::uint64_t milliseconds() = 0;  // monotonic
  // An auto-reset event, unsignalled; 0 when none can be made. Closed with close_handle.
  virtual Handle create_event() = 0;
  // Waits until the event is signalled, input arrives for the debugger's windows, or
  // timeout_ms pass, whichever comes first (with no event: input or the time-out).
  virtual void wait_for_input(Handle event, std::uint32_t timeout_ms) = 0;
  virtual std::wstring current_directory() = 0;
  // Ends the debugger with `status` (the C runtime's exit). It does not return.
  virtual void end_debugger(int status) = 0;

  // -- code pages: the OEM conversions of the target-memory module --
  virtual std::wstring wide_from_oem(const std::string& text) = 0;
  virtual std::string oem_from_wide(const std::wstring& text) = 0;  // '?' for what has no narrow form
};

// Message-box flag bits used by the debugger (the platform's values).
constexpr std::uint32_t kMbOk = 0x0;
constexpr std::uint32_t kMbOkCancel = 0x1;
constexpr std::uint32_t kMbIconError = 0x10;
constexpr std::uint32_t kMbIconInformation = 0x40;
constexpr std::uint32_t kMbTopmost = 0x40000;
constexpr int kIdOk = 1;
constexpr int kIdCancel = 2;

// The layer in use for the session (set once by the entry point or by a test fixture).
System& system();
void set_system(System* system);

}  // namespace vantor::os
