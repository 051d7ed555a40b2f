#!/usr/bin/env bash
# Configures and builds one tree: `native` (the portable library and its tests,
# under the sanitizers), `win` (Setup.exe and every test, for Wine) or `fuzz`
# (the fuzz targets, with clang, under the sanitizers).
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
kind=${1:?usage: build.sh native|win|fuzz}
build="$top/build/$kind"
args=(-G Ninja -DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo})
[ "$kind" = win ] && args+=(-DCMAKE_TOOLCHAIN_FILE="$top/cmake/mingw-i686.cmake")
# The fuzz targets: native, with clang's libFuzzer, without the test programs.
[ "$kind" = fuzz ] && args+=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
                             -DZENDRA_FUZZ=ON -DZENDRA_TESTS=OFF)
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$top" -B "$build" "${args[@]}" >/dev/null
fi
cmake --build "$build" -j "$(nproc)"
