#!/usr/bin/env bash
# Generates a program of N routines (default 20000), compiles and links it with f95mini
# (which must take under a minute), checks its debug tables and runs it under Wine.
#   run_many_routines.sh F95MINI F95CHECK WORK_DIR [N]
set -u
f95mini=$1 f95check=$2 work=$3 n=${4:-20000}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
mkdir -p "$work"
cd "$work" || exit 1
python3 "$here/generate_many_routines.py" many.f95 "$n" || exit 1
start=$(date +%s%N)
"$f95mini" many.f95 -o many.exe || { echo "FAIL: compiling"; exit 1; }
end=$(date +%s%N)
ms=$(( (end - start) / 1000000 ))
echo "compiled and linked $n routines in $((ms / 1000)).$(printf %03d $((ms % 1000))) s"
if [ "$ms" -ge 60000 ]; then
  echo "FAIL: took a minute or more"
  exit 1
fi
"$f95check" many.exe | tail -1
[ "${PIPESTATUS[0]}" = 0 ] || { echo "FAIL: debug tables"; exit 1; }
DISPLAY=:f95mini-none "$root/scripts/wine-run" ./many.exe > actual.raw 2> wine.err || { echo "FAIL: running"; exit 1; }
tr -d '\r' < actual.raw | diff -u many.expected - || { echo "FAIL: output differs"; exit 1; }
echo "PASS"
