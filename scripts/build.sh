#!/usr/bin/env bash
# Configures and builds one tree: `native` (the portable library and its tests,
# under the sanitizers) or `win` (Setup.exe and every test, for Wine).
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
kind=${1:?usage: build.sh native|win}
build="$top/build/$kind"
args=(-G Ninja -DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo})
[ "$kind" = win ] && args+=(-DCMAKE_TOOLCHAIN_FILE="$top/cmake/mingw-i686.cmake")
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$top" -B "$build" "${args[@]}" >/dev/null
fi
cmake --build "$build" -j "$(nproc)"
