// One full walk of 40 frames of our compiler's code under Wine, in time and in
// cross-process calls: the walk alone (what every stop pays), and the walk followed by
// every frame's information (what the call-stack window adds, symbols loaded once).
//   stack_walk_wine.exe PROGRAM.exe SOURCE DEEPEST_LINE [WALKS]
// The program recurses more than 40 deep and passes DEEPEST_LINE at the bottom.
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "bench_session.h"
#include "stack/call_stack.h"

namespace {

using namespace vantor;
using namespace vantor::testing;

void report(const char* what, int count, const std::vector<double>& ms, const CountingSystem::Counts& counts) {
  std::vector<double> sorted = ms;
  std::sort(sorted.begin(), sorted.end());
  double total = 0;
  for (double t : ms) total += t;
  std::printf("%-34s %5d %8.3f %8.3f %8.3f   %6.1f %6.1f %6.1f\n", what, count, total / count,
              sorted[sorted.size() / 2], sorted.front(), static_cast<double>(counts.reads) / count,
              static_cast<double>(counts.get_contexts) / count, static_cast<double>(counts.walks) / count);
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 4) {
    std::printf("usage: stack_walk_wine PROGRAM.exe SOURCE DEEPEST_LINE [WALKS]\n");
    return 2;
  }
  const std::string source = ascii(argv[2]);
  const int deepest_line = _wtoi(argv[3]);
  const int walks = argc > 4 ? std::max(1, _wtoi(argv[4])) : 200;

  BenchSession session;
  CountingSystem& system = session.system;
  DebuggedProcess& process = session.process;
  if (!session.start(argv[1])) return 1;
  if (process.breakpoints().set_breakpoint(source, deepest_line, 1, 1, "") < 1) {
    std::printf("no code at %s:%d\n", source.c_str(), deepest_line);
    return 1;
  }
  if (run_command(process, kModeGo) != psStopped || process.current_stack()->depth() != CallStack::kMaxFrames) {
    std::printf("did not stop %d frames deep: %s\n", CallStack::kMaxFrames, process.status_text().c_str());
    return 1;
  }
  const os::ThreadContext context = process.context();

  std::printf("%-34s %5s %8s %8s %8s   %6s %6s %6s\n", "per walk of 40 frames", "count", "mean ms", "median",
              "min", "reads", "getcx", "walks");
  // The two measurements take turns, in rounds, so that both see the same load on a
  // machine that may be busy with other work.
  const int rounds = 5, per_round = std::max(1, walks / rounds);
  std::vector<double> walk_ms, shown_ms;
  CountingSystem::Counts walk_counts{}, shown_counts{};
  for (int round = 0; round < rounds; ++round) {
    for (int i = 0; i < per_round; ++i) {
      auto before = system.counts;
      auto start = Clock::now();
      CallStack stack(process, context);
      walk_ms.push_back(milliseconds_since(start));
      walk_counts += system.counts - before;
      if (stack.depth() != CallStack::kMaxFrames) {
        std::printf("a walk found %d frames\n", stack.depth());
        return 1;
      }
    }
    for (int i = 0; i < per_round; ++i) {
      auto before = system.counts;
      auto start = Clock::now();
      CallStack stack(process, context);
      for (std::int32_t frame = 0; frame < stack.depth(); ++frame) stack.information(frame);
      shown_ms.push_back(milliseconds_since(start));
      shown_counts += system.counts - before;
    }
  }
  const int measured = rounds * per_round;
  report("walk", measured, walk_ms, walk_counts);
  report("walk + every frame's information", measured, shown_ms, shown_counts);

  process.end();
  return 0;
}
