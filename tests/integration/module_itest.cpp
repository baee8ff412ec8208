// The debug tables of programs built by the test compiler, read from a live process under
// Wine: routine ranges, lines to addresses and back, line-trap bytes, and a DLL relocated
// away from its preferred base.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <vector>

#include "common/messages.h"
#include "debuggee.h"
#include "debuginfo/module.h"
#include "debuginfo/source_files.h"
#include "os/win32/win32_system.h"
#include "process/debugged_process.h"
#include "process/user_space_buffer.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

using testing::ends_with;
using testing::program_path;

// Routine addresses by export name, as the system's own loader computes them from the file:
// an oracle for the map's relative addresses that owes nothing to the debug tables.
std::uint32_t export_rva(const std::wstring& dll, const std::string& name) {
  HMODULE image = LoadLibraryExW(dll.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
  if (!image) return 0;
  FARPROC address = GetProcAddress(image, name.c_str());
  std::uint32_t rva = address ? static_cast<std::uint32_t>(reinterpret_cast<ULONG_PTR>(address) -
                                                           reinterpret_cast<ULONG_PTR>(image))
                              : 0;
  FreeLibrary(image);
  return rva;
}

// The tables are read where the debugger reads them: at the create-process and load-DLL
// events, with the program stopped there. The events are taken here one by one, so the
// checks do not depend on how the debugger later runs and steps the program.
class ModuleUnderWineTest : public ::testing::Test {
 protected:
  void SetUp() override {
    os::set_system(&system);
    winlib::set_window_library(&windows);
    ConsoleMode = true;
    ASSERT_TRUE(process.launch(L"\"" + program_path(L"lines.exe") + L"\"")) << process.status_text();
    system.resume_thread(process.thread_handle());
  }
  void TearDown() override {
    system.terminate_process(process.process_handle(), 0);
    for (int i = 0; i < 1000 && !exited; ++i) next_event();
    system.close_handle(process.thread_handle());
    system.close_handle(process.process_handle());
    winlib::set_window_library(nullptr);
  }

  Module* module_named(const std::wstring& name) {
    for (const auto& module : process.modules())
      if (ends_with(module->path(), L"\\" + name)) return module.get();
    return nullptr;
  }

  // Continues the event taken last, takes the next one and makes the Module of an image
  // it loads; false once the program has gone.
  bool next_event() {
    if (pending) system.continue_event(event.process_id, event.thread_id, continue_status);
    pending = false;
    if (exited || !system.wait_for_event(event, 10000)) return false;
    pending = true;
    continue_status = os::kContinue;
    switch (event.kind) {
      case os::kCreateProcessEvent:
        process.add_module(std::make_unique<Module>(process, event.file, L"", event.image_base, true));
        break;
      case os::kLoadDllEvent:
        process.add_module(std::make_unique<Module>(process, event.file, L"", event.image_base, false));
        break;
      case os::kUnloadDllEvent:
        process.remove_module_at(event.image_base);
        break;
      case os::kExceptionEvent:
        // The loader's breakpoint is ours; anything else belongs to the program.
        if (event.exception_code != 0x80000003) continue_status = os::kExceptionNotHandled;
        break;
      case os::kExitProcessEvent:
        exited = true;
        break;
    }
    return true;
  }

  // Takes events until the image is loaded, and stays stopped at its event.
  Module* run_until_loaded(const std::wstring& name) {
    for (int i = 0; i < 500 && !module_named(name); ++i)
      if (!next_event()) break;
    return module_named(name);
  }

  // Every routine of the map is found over its whole range, begins at a line-start byte
  // and ends with its return.
  void expect_routine_ranges(Module& module) {
    ASSERT_TRUE(module.has_routine_map());
    std::set<std::string> names;
    for (const auto& routine : module.routines()) {
      SCOPED_TRACE(routine->name);
      names.insert(routine->name);
      EXPECT_GE(routine->start, module.load_base());
      EXPECT_LT(routine->end, module.end_address());
      EXPECT_LT(routine->start, routine->end);
      EXPECT_EQ(module.routine_at(routine->start), routine.get());
      EXPECT_EQ(module.routine_at(routine->end), routine.get());
      EXPECT_NE(module.routine_at(routine->end + 1), routine.get());
      if (!routine->has_lines()) continue;
      EXPECT_EQ(process.read_u8(routine->end), 0xC3u);
      EXPECT_EQ(routine->lines->records.front().offset, 0);
      EXPECT_GE(routine->debug_block, module.load_base());
      EXPECT_LT(routine->debug_block, module.end_address());
    }
    EXPECT_EQ(names.size(), module.routines().size());
    // The compiler lays routines out one after another: no range reaches into the next.
    std::vector<const MapEntry*> by_start;
    for (const auto& routine : module.routines()) by_start.push_back(routine.get());
    std::sort(by_start.begin(), by_start.end(), [](const MapEntry* a, const MapEntry* b) { return a->start < b->start; });
    for (std::size_t i = 1; i < by_start.size(); ++i)
      EXPECT_LT(by_start[i - 1]->end, by_start[i]->start) << by_start[i - 1]->name << " runs into " << by_start[i]->name;
  }

  // Every line of every routine maps to its address and back.
  void expect_lines_round_trip(Module& module) {
    int lines = 0;
    for (const auto& routine : module.routines()) {
      if (!routine->has_lines()) continue;
      const std::string& file = routine->lines->file_name;
      for (const LineRecord& record : routine->lines->records) {
        SCOPED_TRACE(routine->name + " line " + std::to_string(record.line));
        Address address = routine->start + static_cast<Address>(record.offset);
        EXPECT_EQ(address_of_line(process, file, record.line), address);
        EXPECT_EQ(address_of_line(process, bare_file_name(file), record.line, false), address);
        EXPECT_EQ(module.routine_at(address), routine.get());
        EXPECT_EQ(line_of_address(*routine, address + 1), record.line);  // stopped by its trap
        ++lines;
      }
    }
    EXPECT_GT(lines, 3);
  }

  // The bytes at every line start follow the traps, and are no-operations again after.
  void expect_trap_bytes(Module& module) {
    for (bool on : {false, true, false}) {
      module.set_line_traps(on);
      for (const auto& routine : module.routines()) {
        if (!routine->has_lines()) continue;
        for (const LineRecord& record : routine->lines->records)
          ASSERT_EQ(process.read_u8(routine->start + static_cast<Address>(record.offset)), on ? 0xCCu : 0x90u)
              << routine->name << " line " << record.line;
      }
    }
  }

  os::Win32System system;
  winlib::HeadlessLibrary windows;
  DebuggedProcess process;
  os::DebugEvent event;
  std::uint32_t continue_status = os::kContinue;
  bool pending = false;
  bool exited = false;
};

// The program, the library it links and the one it loads into a taken place, in the order
// they load: each one's map over every routine, lines and traps; the libraries' routines
// where the system's loader finds their exports.
TEST_F(ModuleUnderWineTest, EveryImagesTablesAreReadWhole) {
  const struct {
    const wchar_t* file;
    std::vector<const char*> routines;
  } images[] = {
      {L"lines.exe", {"LINES", "ACCUMULATE", "TRIPLE", "exit", "__get_common_info"}},
      {L"lines_lib.dll", {"LIB_ADD", "LIB_REPORT"}},
      {L"lines_moved.dll", {"MOVED_WORK", "MOVED_HELPER"}},
  };
  for (const auto& image : images) {
    SCOPED_TRACE(narrow_from_wide(image.file));
    Module* module = run_until_loaded(image.file);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->main_image(), image.file == images[0].file);
    expect_routine_ranges(*module);
    for (const char* name : image.routines) {
      EXPECT_NE(module->routine_start(name), 0u) << name;
      if (module->main_image()) continue;
      std::uint32_t rva = export_rva(program_path(image.file), name);
      ASSERT_NE(rva, 0u) << name;
      EXPECT_EQ(module->routine_start(name), module->load_base() + rva) << name;
    }
    expect_lines_round_trip(*module);
    expect_trap_bytes(*module);
  }
  Module& program = *module_named(L"lines.exe");
  const MapEntry* accumulate = program.routine_at(program.routine_start("ACCUMULATE"));
  ASSERT_TRUE(accumulate && accumulate->has_lines());
  EXPECT_TRUE(ends_with(wide_from_narrow(accumulate->lines->file_name), L"\\lines.f95"));
  Module& moved = *module_named(L"lines_moved.dll");
  std::uint64_t preferred;
  std::memcpy(&preferred, moved.optional_header() + 24, 8);
  EXPECT_NE(moved.load_base(), preferred) << "the DLL was not moved";
}

}  // namespace
}  // namespace vantor
