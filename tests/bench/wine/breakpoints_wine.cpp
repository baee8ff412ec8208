// What a breakpoint hit that does not stop and a step over a call cost under Wine, in time
// and in cross-process calls, against the raw debug-event round trip of the same program
// measured in the same run.
//   breakpoints_wine.exe PROGRAM.exe SOURCE COUNTED_LINE CALL_LINE [HITS] [STEPS]
// The program loops over COUNTED_LINE and CALL_LINE (a call of a routine with debug
// information) more times than HITS + HITS + STEPS.
#include <windows.h>

#include <cstdlib>

#include "bench_session.h"

namespace {

using namespace vantor;
using namespace vantor::testing;

void report(const char* what, int count, double ms, const CountingSystem::Counts& c) {
  auto per = [count](std::size_t n) { return static_cast<double>(n) / count; };
  std::printf("%-30s %6d %9.3f %7.1f   %5.1f %5.1f %5.1f %5.1f %5.1f %5.1f %5.1f\n", what, count, ms / count,
              per(c.total()), per(c.reads), per(c.writes), per(c.get_contexts), per(c.set_contexts), per(c.waits),
              per(c.continues), per(c.walks));
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 5) {
    std::printf("usage: breakpoints_wine PROGRAM.exe SOURCE COUNTED_LINE CALL_LINE [HITS] [STEPS]\n");
    return 2;
  }
  const std::string source = ascii(argv[2]);
  const int counted_line = _wtoi(argv[3]), call_line = _wtoi(argv[4]);
  const int hits = argc > 5 ? std::max(1, _wtoi(argv[5])) : 500;
  const int steps = argc > 6 ? std::max(1, _wtoi(argv[6])) : 200;

  BenchSession session;
  CountingSystem& system = session.system;
  DebuggedProcess& process = session.process;
  if (!session.start(argv[1])) return 1;
  std::printf("%-30s %6s %9s %7s   %5s %5s %5s %5s %5s %5s %5s\n", "per operation", "count", "ms", "calls", "read",
              "write", "getcx", "setcx", "wait", "cont", "walk");

  // ---- the raw round trip: a trap byte over the counted line, and nothing but continue
  // and wait between two of its hits, as the smallest debugger loop has it.
  Address counted = 0;
  {
    std::int64_t id = process.breakpoints().set_breakpoint(source, counted_line, 1, 1, "");
    if (id < 1) {
      std::printf("no code at %s:%d\n", source.c_str(), counted_line);
      return 1;
    }
    counted = process.breakpoints().find(static_cast<std::uint32_t>(id))->address;
    process.breakpoints().remove_breakpoint(static_cast<std::uint32_t>(id));
  }
  // The machine may be busy with other work: the raw loop and the breakpoint hits take
  // turns, in rounds, so that both see the same load.
  const int rounds = 5, per_round = std::max(1, hits / rounds);
  const std::uint8_t trap = 0xCC, no_operation = 0x90;
  const std::uint32_t pid = process.debug_event().process_id, tid = process.debug_event().thread_id;
  CountingSystem::Counts raw_counts{}, hit_counts{};
  double raw_total = 0, hit_total = 0;
  for (int round = 0; round < rounds; ++round) {
    process.disarm_line_traps();
    process.write(counted, &trap, 1);
    auto before = system.counts;
    auto start = Clock::now();
    for (int hit = 0; hit < per_round;) {
      system.continue_event(pid, tid, os::kContinue);
      os::DebugEvent event;
      if (!system.wait_for_event(event, 30000) || event.kind == os::kExitProcessEvent) {
        std::printf("the program ended before the measurements\n");
        return 1;
      }
      if (event.kind == os::kExceptionEvent && event.exception_address == counted) ++hit;
    }
    raw_total += milliseconds_since(start);
    raw_counts += system.counts - before;
    // The last trap stays pending: the process continues it on its next run.
    process.write(counted, &no_operation, 1);

    // A counted breakpoint: every hit but the last runs on.
    std::int64_t id = process.breakpoints().set_breakpoint(source, counted_line, per_round, 1, "");
    before = system.counts;
    start = Clock::now();
    if (run_command(process, kModeGo) != psStopped) {
      std::printf("the breakpoint did not stop: %s\n", process.status_text().c_str());
      return 1;
    }
    hit_total += milliseconds_since(start);
    hit_counts += system.counts - before;
    process.breakpoints().remove_breakpoint(static_cast<std::uint32_t>(id));
  }
  const int measured = rounds * per_round;
  report("raw debug-event round trip", measured, raw_total, raw_counts);
  report("breakpoint hit, no stop", measured, hit_total, hit_counts);
  const double raw_ms = raw_total / measured;

  // ---- step over the call line, from a stop there
  process.breakpoints().set_breakpoint(source, call_line, 1, 1, "");
  CountingSystem::Counts stepping{};
  double step_total = 0;
  for (int step = 0; step < steps; ++step) {
    if (run_command(process, kModeGo) != psStopped) {
      std::printf("the program ended after %d steps\n", step);
      return 1;
    }
    auto before = system.counts;
    auto start = Clock::now();
    if (run_command(process, kModeStepOver) != psStopped) {
      std::printf("a step over did not stop: %s\n", process.status_text().c_str());
      return 1;
    }
    step_total += milliseconds_since(start);
    stepping += system.counts - before;
  }
  report("step over a call", steps, step_total, stepping);

  std::printf("\nbreakpoint hit / raw round trip: %.1f\nstep over / raw round trip:      %.1f\n",
              hit_total / measured / raw_ms, step_total / steps / raw_ms);
  process.end();
  return 0;
}
