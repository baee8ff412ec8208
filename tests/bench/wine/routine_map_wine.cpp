// Reading a program's routine map and line tables from a live process under Wine, and
// switching its line traps, timed and counted in cross-process calls.
//   routine_map_wine.exe PROGRAM.exe [REPEATS]
#include <windows.h>

#include <cstdlib>

#include "bench_session.h"
#include "debuginfo/module.h"

using namespace vantor;
using namespace vantor::testing;

int wmain(int argc, wchar_t** argv) {
  if (argc < 2) {
    std::printf("usage: routine_map_wine PROGRAM.exe [REPEATS]\n");
    return 2;
  }
  int repeats = argc > 2 ? std::max(1, _wtoi(argv[2])) : 3;
  BenchSession session;
  CountingSystem& system = session.system;
  DebuggedProcess& process = session.process;
  // Measured at the program's create-process event, where the debugger reads the tables.
  std::wstring command = L"\"" + std::wstring(argv[1]) + L"\"";
  if (!process.launch(command)) {
    std::printf("could not start the program: %s\n", process.status_text().c_str());
    return 1;
  }
  system.resume_thread(process.thread_handle());
  os::DebugEvent event;
  if (!system.wait_for_event(event, 30000) || event.kind != os::kCreateProcessEvent) {
    std::printf("no create-process event\n");
    return 1;
  }
  std::wstring path = system.final_path(event.file);
  system.close_handle(event.file);
  if (!path.empty() && path.rfind(L"\\\\?\\", 0) == 0) path = path.substr(4);

  std::printf("%-28s %10s %10s %10s %10s\n", "operation", "routines", "ms", "reads", "writes");
  for (int i = 0; i < repeats; ++i) {
    std::size_t reads = system.counts.reads, writes = system.counts.writes;
    auto start = Clock::now();
    Module module(process, 0, path, event.image_base, true);
    double map_ms = milliseconds_since(start);
    std::size_t lines = 0;
    for (const auto& routine : module.routines()) lines += routine->has_lines() ? routine->lines->records.size() : 0;
    std::printf("%-28s %10zu %10.1f %10zu %10zu   (%zu line records)\n", "routine map and line tables",
                module.routines().size(), map_ms, system.counts.reads - reads, system.counts.writes - writes, lines);

    for (bool on : {true, false}) {
      reads = system.counts.reads;
      writes = system.counts.writes;
      start = Clock::now();
      module.set_line_traps(on);
      std::printf("%-28s %10zu %10.1f %10zu %10zu\n", on ? "line traps on" : "line traps off",
                  module.routines().size(), milliseconds_since(start), system.counts.reads - reads, system.counts.writes - writes);
    }
  }
  system.terminate_process(process.process_handle(), 0);
  for (int i = 0; i < 1000; ++i) {
    system.continue_event(event.process_id, event.thread_id, os::kContinue);
    if (event.kind == os::kExitProcessEvent || !system.wait_for_event(event, 10000)) break;
    if (event.file) system.close_handle(event.file);
  }
  return 0;
}
