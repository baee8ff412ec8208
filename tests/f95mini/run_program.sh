#!/usr/bin/env bash
# Builds one test program with f95mini, checks the image's debug tables with f95check,
# runs it under Wine and compares its standard output with NAME.expected.
#   run_program.sh F95MINI F95CHECK SOURCE_DIR WORK_DIR NAME
# Optional files next to NAME.f95:
#   NAME.flags     extra f95mini options (paths relative to SOURCE_DIR are resolved)
#   NAME.dll.f95   built first with --dll into NAME_lib.dll and linked with --link
#   NAME.status    the expected exit status (default 0)
#   NAME.require   address types (e.g. 1,3,7) that the image's variable records must use
set -u
f95mini=$1 f95check=$2 src=$3 work=$4 name=$5
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
mkdir -p "$work/$name"
cd "$work/$name" || exit 1
export ASAN_OPTIONS=detect_leaks=0

flags=()
if [ -f "$src/$name.flags" ]; then
  for f in $(cat "$src/$name.flags"); do
    if [ -f "$src/$f" ]; then flags+=("$src/$f"); else flags+=("$f"); fi
  done
fi
images=()
if [ -f "$src/$name.dll.f95" ]; then
  "$f95mini" --dll "$src/$name.dll.f95" -o "${name}_lib.dll" || { echo "FAIL: building the DLL"; exit 1; }
  flags+=(--link "${name}_lib.dll")
  images+=("${name}_lib.dll")
fi
"$f95mini" "${flags[@]}" "$src/$name.f95" -o "$name.exe" || { echo "FAIL: compiling $name.f95"; exit 1; }
images+=("$name.exe")
check=()
[ -f "$src/$name.require" ] && check=(--require-address-types "$(cat "$src/$name.require")")
"$f95check" "${check[@]}" "${images[@]}" || { echo "FAIL: debug tables"; exit 1; }

# Console programs need no display: an unreachable one spares starting a virtual X server.
run() {
  DISPLAY=:f95mini-none "$root/scripts/wine-run" "./$name.exe" > actual.raw 2> wine.err
  status=$?
}
run
# Under heavy load Wine has been seen, rarely, to end a program at once with neither
# output nor a message; a program that really prints nothing does the same again.
if [ ! -s actual.raw ] && [ ! -s wine.err ] && [ -s "$src/$name.expected" ]; then
  echo "no output and no message from Wine (status $status): running again"
  run
fi
tr -d '\r' < actual.raw > actual.txt
want_status=0
[ -f "$src/$name.status" ] && want_status=$(cat "$src/$name.status")
if ! diff -u "$src/$name.expected" actual.txt; then
  echo "FAIL: output of $name differs"
  exit 1
fi
if [ "$status" != "$want_status" ]; then
  echo "FAIL: exit status $status, expected $want_status"
  cat wine.err
  exit 1
fi
echo "PASS: $name"
