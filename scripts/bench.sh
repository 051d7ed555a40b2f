#!/usr/bin/env bash
# The benchmarks; not tests, and not part of CI. Prints, for each, the time
# per item at each size and the ratios the performance goals are given in.
#   bench.sh [all|native|install]
# native:  the portable library (streams, configuration files, template
#          expansion, paths), built natively in Release without sanitizers
#          in build/bench, with Google Benchmark; each figure is the median
#          of REPS runs (default 5).
# install: a silent install of the sample product and of one with ten times
#          the support files, each against a plain program that copies the
#          same files, in fresh Wine prefixes; the median of REPS runs
#          (default 3) of each.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
part=${1:-all}
bench="$top/build/bench"

native_bench() {
  if [ ! -f "$bench/build.ninja" ]; then
    cmake -S "$top" -B "$bench" -G Ninja -DCMAKE_BUILD_TYPE=Release \
      -DTERN_SANITIZE=OFF -DZENDRA_TESTS=OFF -DZENDRA_BENCH=ON >/dev/null
  fi
  cmake --build "$bench" --target tern_bench
  # Scratch files go to memory (BENCH_TMPDIR), so that the disk's own pace
  # and the other users of the machine count as little as possible.
  local tmp=${BENCH_TMPDIR:-/dev/shm}
  [ -d "$tmp" ] || tmp=/tmp
  echo "== Library benchmarks (native, Release; median of ${REPS:-5} runs; files in $tmp) =="
  TMPDIR=$tmp "$bench/bench/tern_bench" --benchmark_repetitions="${REPS:-5}" \
    --benchmark_report_aggregates_only=true \
    --benchmark_min_time="${MIN_TIME:-0.2}" \
    --benchmark_format=json --benchmark_out="$bench/library.json" \
    --benchmark_out_format=json >/dev/null
  /usr/bin/python3 "$top/bench/report.py" library "$bench/library.json"
}

# One timed run in a fresh prefix: `setup` runs Setup.exe -s -i from the
# product folder (`setup-nofonts` adds -nofonts, to tell how much of it the
# fonts take), `copy` copies that folder into the install folder. Both
# start from the same prefix: the product in C:\ZendraSource, the browser's
# stand-in library, a running wineserver. Prints the milliseconds.
run_once() {
  local kind=$1 product=$2 prefix="$bench/prefixes/$1"
  tests/support/clone-prefix.sh "$bench/wine-template" "$prefix"
  export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES=mscoree=
  mkdir -p "$prefix/drive_c/ZendraSource"
  cp -r "$product/." "$prefix/drive_c/ZendraSource/"
  cp "$bench/PlainCopy.exe" "$prefix/drive_c/PlainCopy.exe"
  cp build/win/tests/stand-ins/mshtml.dll "$prefix/drive_c/windows/syswow64/mshtml.dll"
  wineserver -p
  wine reg add 'HKCU\Software\Wine\DllOverrides' /v mshtml /d native,builtin /f \
    >/dev/null 2>&1
  local start end status
  start=$(date +%s%N)
  set +e
  if [ "$kind" = setup ]; then
    wine 'C:\ZendraSource\Setup.exe' -s -i </dev/null >/dev/null 2>&1
  elif [ "$kind" = setup-nofonts ]; then
    wine 'C:\ZendraSource\Setup.exe' -s -i -nofonts </dev/null >/dev/null 2>&1
  else
    wine 'C:\PlainCopy.exe' 'C:\ZendraSource' \
      'C:\Program Files (x86)\Orvane\Zendra' </dev/null >/dev/null 2>&1
  fi
  status=$?
  set -e
  end=$(date +%s%N)
  local installed
  installed=$(find "$prefix/drive_c/Program Files (x86)/Orvane/Zendra" -type f 2>/dev/null | wc -l)
  if [ "$status" -ne 0 ]; then
    echo "bench.sh: $kind of $(basename "$product") exited $status" >&2
    tail -n 20 "$prefix"/drive_c/users/*/Temp/Zendra\ Install*.log >&2 || true
  fi
  wineserver -k 2>/dev/null || true
  [ -n "${KEEP_PREFIX:-}" ] || rm -rf "$prefix"
  echo "$(((end - start) / 1000000)) $installed"
}

# The sample product with ten times the support files: nine more copies of
# every file in the subfolder trees, beside the original.
make_tenfold() {
  local from=$1 to=$2
  rm -rf "$to"
  cp -r "$from" "$to"
  local tree file
  for tree in "Rules" "Office Support" "LibLouis"; do
    find "$to/$tree" -type f -print0 | while IFS= read -r -d '' file; do
      for n in 2 3 4 5 6 7 8 9 10; do
        cp "$file" "${file%.*} $n.${file##*.}"
      done
    done
  done
}

install_bench() {
  bash scripts/build.sh release
  [ -f build/win/tests/stand-ins/mshtml.dll ] || bash scripts/build.sh win
  if [ -z "${DISPLAY:-}" ]; then
    exec xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" install
  fi
  mkdir -p "$bench/prefixes"
  i686-w64-mingw32-g++-posix -O2 -static -s -o "$bench/PlainCopy.exe" \
    bench/install/PlainCopy.cpp
  tests/support/wine-prefix.sh "$bench/wine-template" --template
  local one="$top/build/release/sample" ten="$bench/sample-10x"
  make_tenfold "$one" "$ten"
  local mode
  mode=$(bash scripts/i386.sh mode)
  echo "== Install benchmark (Wine, fresh prefixes; median of ${REPS:-3} runs) =="
  echo "32-bit programs ran $mode"
  if [ "$mode" != natively ]; then
    echo "(every installer ran emulated alike: the ratios compare like with like," \
      "the absolute times are not those of a machine that runs 32-bit code natively)"
  fi
  echo "product files: 1x $(find "$one" -type f | wc -l), 10x $(find "$ten" -type f | wc -l)"
  local results="$bench/install.txt"
  : >"$results"
  local r product kind
  for r in $(seq "${REPS:-3}"); do
    for product in 1x 10x; do
      for kind in setup copy setup-nofonts; do
        local dir=$one
        [ "$product" = 10x ] && dir=$ten
        echo "$product $kind $(run_once "$kind" "$dir")" | tee -a "$results"
      done
    done
  done
  /usr/bin/python3 "$top/bench/report.py" install "$results"
}

case $part in
all) native_bench; install_bench ;;
native) native_bench ;;
install) install_bench ;;
*) echo "usage: bench.sh [all|native|install]" >&2; exit 2 ;;
esac
