#!/usr/bin/env bash
# Times breakpoint hits that do not stop and steps over a call under Wine, against the raw
# debug-event round trip measured in the same run. Needs `make build` (the compiler) and
# `make bench` (the benchmark).
#   tests/bench/wine/breakpoints_wine.sh [HITS] [STEPS]
set -eu
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)
here=$root/tests/bench/wine
hits=${1:-500} steps=${2:-200}
work=$root/build/bench-win64/breakpoint_loop
mkdir -p "$work"
"$root/scripts/f95mini" "$here/breakpoint_loop.f95" -o "$work/breakpoint_loop.exe"
counted=$(grep -n '! counted line' "$here/breakpoint_loop.f95" | cut -d: -f1)
call=$(grep -n '! call line' "$here/breakpoint_loop.f95" | cut -d: -f1)
DISPLAY=${DISPLAY:-:bench-none} "$root/scripts/wine-run" "$root/build/bench-win64/breakpoints_wine.exe" \
  "Z:${work//\//\\}\\breakpoint_loop.exe" breakpoint_loop.f95 "$counted" "$call" "$hits" "$steps"
