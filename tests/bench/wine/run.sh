#!/usr/bin/env bash
# Runs one benchmark under Wine against a program the test compiler builds for it. Needs
# `make build` (the compiler) and `make bench` (the benchmarks).
#   tests/bench/wine/run.sh breakpoints [HITS] [STEPS]     hits that do not stop, steps over a call
#   tests/bench/wine/run.sh stack_walk [WALKS]              one walk of 40 frames
#   tests/bench/wine/run.sh routine_map [ROUTINES] [REPEATS] reading a large program's tables
set -eu
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)
bench=$1
shift
work=$root/build/bench-win64/$bench
mkdir -p "$work"
windows=Z:${work//\//\\}
line() { grep -n "! $2" "$1" | cut -d: -f1; }
case $bench in
  breakpoints)
    src=$root/tests/bench/wine/breakpoint_loop.f95
    "$root/scripts/f95mini" "$src" -o "$work/breakpoint_loop.exe"
    args=("$windows\\breakpoint_loop.exe" breakpoint_loop.f95 "$(line "$src" 'counted line')" "$(line "$src" 'call line')"
          "${1:-500}" "${2:-200}") ;;
  stack_walk)
    src=$root/tests/integration/programs/stack_shapes.f95
    "$root/scripts/f95mini" "$src" -o "$work/stack_shapes.exe"
    args=("$windows\\stack_shapes.exe" stack_shapes.f95 "$(line "$src" 'stop: deepest')" "${1:-200}") ;;
  routine_map)
    n=${1:-20000}
    if [ ! -f "$work/many_$n.exe" ]; then
      python3 "$root/tests/f95mini/generate_many_routines.py" "$work/many_$n.f95" "$n"
      "$root/scripts/f95mini" "$work/many_$n.f95" -o "$work/many_$n.exe"
    fi
    args=("$windows\\many_$n.exe" "${2:-3}") ;;
  *) echo "usage: run.sh breakpoints|stack_walk|routine_map [ARGUMENTS]" >&2; exit 2 ;;
esac
DISPLAY=${DISPLAY:-:bench-none} "$root/scripts/wine-run" "$root/build/bench-win64/${bench}_wine.exe" "${args[@]}"
