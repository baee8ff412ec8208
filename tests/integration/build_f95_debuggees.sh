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
# Call-stack walks: recursion, large frames, a C library between Fortran frames or below
# them, a library with static data (also called from a C program), and variables of every
# address type.
# The C parts are built by the C compiler alone, so that they carry no routine map, with
# DWARF 4, the newest that Wine 8's symbol handler reads (without it only a routine's
# exact first byte has a name).
"$f95mini" "$src/stack_shapes.f95" -o stack_shapes.exe
"$f95mini" "$src/address_types.f95" -o address_types.exe
x86_64-w64-mingw32-gcc-posix -shared -O1 -gdwarf-4 -Wall -Wextra -static-libgcc -o callback_lib.dll "$src/callback_lib.c"
x86_64-w64-mingw32-gcc-posix -shared -O1 -gdwarf-4 -Wall -Wextra -static-libgcc -o late_callback_lib.dll \
  "$src/late_callback_lib.c"
"$f95mini" --link callback_lib.dll "$src/callback.f95" -o callback.exe
"$f95mini" --link callback_lib.dll "$src/waiting.f95" -o waiting.exe
"$f95mini" --dll "$src/dll_data_lib.f95" -o dll_data_lib.dll
"$f95mini" --link dll_data_lib.dll "$src/dll_data.f95" -o dll_data.exe
x86_64-w64-mingw32-gcc-posix -O1 -gdwarf-4 -Wall -Wextra -o c_calls_fortran.exe "$src/c_calls_fortran.c" dll_data_lib.dll
# Values at real stops: every supported type, in a checking build for never-assigned values.
"$f95mini" --undef "$src/../values/all_types.f95" -o all_types.exe
# Finding source text: a program whose line tables record only the bare file name.
"$f95mini" --record-name bare "$src/stepping.f95" -o stepping_bare.exe
echo "built the test programs in $out"
