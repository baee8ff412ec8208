#!/usr/bin/env bash
# Builds the Wine-side tests' programs with the test compiler, before the integration
# executable runs (a ctest fixture: the compiler is a native tool, the tests run in Wine).
#   build_f95_debuggees.sh F95MINI OUT_DIR
set -eu
f95mini=$1 out=$2
src=$(cd "$(dirname "${BASH_SOURCE[0]}")/programs" && pwd)
mkdir -p "$out"
cd "$out"
export ASAN_OPTIONS=detect_leaks=0
"$f95mini" --dll "$src/lines_lib.f95" -o lines_lib.dll
"$f95mini" --dll "$src/lines_moved.f95" -o lines_moved.dll
"$f95mini" --link lines_lib.dll --c "$src/load_moved.c" "$src/lines.f95" -o lines.exe
"$f95mini" "$src/stepping.f95" -o stepping.exe
"$f95mini" "$src/data_watch.f95" -o data_watch.exe
"$f95mini" --dll "$src/late_dll_lib.f95" -o late_dll_lib.dll
"$f95mini" --c "$src/late_dll_loader.c" "$src/late_dll.f95" -o late_dll.exe
echo "built the test programs in $out"
