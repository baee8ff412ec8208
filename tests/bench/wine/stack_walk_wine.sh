#!/usr/bin/env bash
# Times one full walk of 40 frames of our compiler's code under Wine, with its
# cross-process calls. Needs `make build` (the compiler) and `make bench` (the benchmark).
#   tests/bench/wine/stack_walk_wine.sh [WALKS]
set -eu
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)
program=$root/tests/integration/programs/stack_shapes.f95
walks=${1:-200}
work=$root/build/bench-win64/stack_walk
mkdir -p "$work"
"$root/scripts/f95mini" "$program" -o "$work/stack_shapes.exe"
deepest=$(grep -n '! stop: deepest' "$program" | cut -d: -f1)
DISPLAY=${DISPLAY:-:bench-none} "$root/scripts/wine-run" "$root/build/bench-win64/stack_walk_wine.exe" \
  "Z:${work//\//\\}\\stack_shapes.exe" stack_shapes.f95 "$deepest" "$walks"
