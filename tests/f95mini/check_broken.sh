#!/usr/bin/env bash
# Builds a program with one of f95mini's deliberately broken outputs and expects the
# image checker to reject it with the given message.
#   check_broken.sh F95MINI F95CHECK SOURCE WORK_DIR OPTION... -- EXPECTED_TEXT
set -u
f95mini=$1 f95check=$2 src=$3 work=$4
shift 4
opts=()
while [ "$1" != "--" ]; do opts+=("$1"); shift; done
shift
want=$1
mkdir -p "$work"
exe="$work/broken$(echo "${opts[*]}" | tr -c 'a-z0-9' '_').exe"
export ASAN_OPTIONS=detect_leaks=0
"$f95mini" "${opts[@]}" "$src" -o "$exe" || { echo "FAIL: compiling with ${opts[*]}"; exit 1; }
if out=$("$f95check" "$exe"); then
  echo "FAIL: the checker accepted an image built with ${opts[*]}"
  exit 1
fi
if ! grep -qF -- "$want" <<<"$out"; then
  echo "FAIL: expected '$want' in:"
  echo "$out"
  exit 1
fi
echo "PASS: ${opts[*]}"
