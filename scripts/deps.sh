#!/usr/bin/env bash
# Makes sure the build and test tools are on the machine. As root it installs what is
# missing with apt-get; otherwise it prints the exact command to run and fails.
set -eu
need=()
have() { command -v "$1" >/dev/null 2>&1; }
have cmake                        || need+=(cmake)
have ninja                        || need+=(ninja-build)
have g++                          || need+=(g++)
have python3                      || need+=(python3)
have x86_64-w64-mingw32-g++-posix || need+=(g++-mingw-w64-x86-64-posix)
have x86_64-w64-mingw32-gcc-posix || need+=(gcc-mingw-w64-x86-64-posix)
have x86_64-w64-mingw32-as        || need+=(binutils-mingw-w64-x86-64)
have i686-w64-mingw32-gcc         || need+=(gcc-mingw-w64-i686)
[ -x /usr/lib/wine/wine64 ]       || need+=(wine64)
have xvfb-run                     || need+=(xvfb)
have xwd                          || need+=(x11-apps)
have convert                      || need+=(imagemagick)
have objdump                      || need+=(binutils)
[ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev libgmock-dev)
[ -d /usr/src/googletest ]        || need+=(googletest)
[ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
[ ${#need[@]} -eq 0 ] && exit 0
line="apt-get install -y ${need[*]}"
if [ "$(id -u)" = 0 ]; then
  echo "Installing: ${need[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -q && apt-get install -y -q "${need[@]}"
else
  echo "Missing tools. Run as root:"
  echo "  apt-get update && $line"
  exit 1
fi
