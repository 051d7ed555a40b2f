#!/usr/bin/env bash
# Configures and builds one tree: `native` (the portable library and its tests,
# under the sanitizers), `win` (Setup.exe and every test, for Wine),
# `release` (the shipped Setup.exe and the sample product, optimised, no
# tests; Setup.exe.debug beside it holds the debug information) or `fuzz`
# (the fuzz targets, with clang, under the sanitizers).
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
kind=${1:?usage: build.sh native|win|release|fuzz}
build="$top/build/$kind"
toolchain=-DCMAKE_TOOLCHAIN_FILE="$top/cmake/mingw-i686.cmake"
case $kind in
native) args=(-DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo}) ;;
win) args=(-DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo} "$toolchain") ;;
release)
  args=(-DCMAKE_BUILD_TYPE=Release "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -g -DNDEBUG"
    -DZENDRA_TESTS=OFF "$toolchain") ;;
# The fuzz targets: native, with clang's libFuzzer, without the test programs.
fuzz)
  args=(-DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo} -DCMAKE_C_COMPILER=clang
    -DCMAKE_CXX_COMPILER=clang++ -DZENDRA_FUZZ=ON -DZENDRA_TESTS=OFF) ;;
*) echo "usage: build.sh native|win|release|fuzz" >&2; exit 2 ;;
esac
args=(-G Ninja "${args[@]}")
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$top" -B "$build" "${args[@]}" >/dev/null
fi
cmake --build "$build" -j "$(nproc)"
