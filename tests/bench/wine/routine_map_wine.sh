#!/usr/bin/env bash
# Builds the 20,000-routine program with the test compiler and times reading its tables
# under Wine. Needs `make build` (the compiler) and `make bench` (the benchmark).
#   tests/bench/wine/routine_map_wine.sh [ROUTINES] [REPEATS]
set -eu
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)
n=${1:-20000} repeats=${2:-3}
work=$root/build/bench-win64/many_routines
mkdir -p "$work"
if [ ! -f "$work/many_$n.exe" ]; then
  python3 "$root/tests/f95mini/generate_many_routines.py" "$work/many_$n.f95" "$n"
  "$root/scripts/f95mini" "$work/many_$n.f95" -o "$work/many_$n.exe"
fi
DISPLAY=${DISPLAY:-:bench-none} "$root/scripts/wine-run" "$root/build/bench-win64/routine_map_wine.exe" \
  "Z:${work//\//\\}\\many_$n.exe" "$repeats"
