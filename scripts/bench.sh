#!/usr/bin/env bash
# The benchmarks; not tests, and not part of CI. Prints, for each, the time
# per item at each size and the ratios the performance goals are given in.
#   bench.sh [all|native|install]
# native:  the portable library (streams, configuration files, template
#          expansion, paths), built natively in Release without sanitizers
#          in build/bench, with Google Benchmark; each figure is the median
#          of REPS runs (default 5).
# install: a silent install of the sample product and of one with ten times
#          the support files by Setup.exe, by an NSIS installer and an MSI
#          package of the same product, and by a plain program that copies
#          the same files, each in a fresh Wine prefix and checked after;
#          the median of REPS rounds (default 5). KINDS picks the kinds
#          (default "setup nsis msi copy copy-gdi"; "copy-gdi" is the plain
#          copy followed by the least an installer of fonts must do beyond
#          it, the floor for such an installer; "setup-nofonts" is also
#          known, "setup-before" runs the Setup.exe that BEFORE names, an
#          earlier build, from the same product folder, and "setup-unsigned"
#          the release with every signature taken off, so that Setup checks
#          none: the cost of the checks). EMULATE=1 runs
#          32-bit programs under qemu-i386 on a machine that runs them
#          natively, and restores that afterwards, so that one machine gives
#          the figures of both kinds of machine.
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
# fonts take), `nsis` and `msi` the other installers of the same product
# (bench/install/peers.py), `copy` copies that folder into the install
# folder. All start from the same prefix: the product in C:\ZendraSource,
# the browser's stand-in library; only the installer's
# own command is timed. The install is then checked from Linux. Prints the
# milliseconds, the files in the install folder and "ok" or "failed".
run_once() {
  local kind=$1 product=$2 peers=$3 prefix="$bench/prefixes/$1"
  tests/support/clone-prefix.sh "$bench/wine-template" "$prefix"
  export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES=mscoree=
  mkdir -p "$prefix/drive_c/ZendraSource" "$prefix/drive_c/ZendraPeers"
  cp -r "$product/." "$prefix/drive_c/ZendraSource/"
  cp "$bench/PlainCopy.exe" "$prefix/drive_c/PlainCopy.exe"
  cp "$peers/ZendraNsis.exe" "$peers/Zendra.msi" "$prefix/drive_c/ZendraPeers/"
  cp build/win/tests/stand-ins/mshtml.dll "$prefix/drive_c/windows/syswow64/mshtml.dll"
  wine reg add 'HKCU\Software\Wine\DllOverrides' /v mshtml /d native,builtin /f \
    >/dev/null 2>&1
  # Each installer starts Wine as on a machine just switched on: the server
  # and its services start inside the timed run, as they would for the first
  # program run there. WARM=1 keeps them running instead, which leaves only
  # the installers' own work in the figures.
  if [ -n "${WARM:-}" ]; then
    wineserver -p
  else
    wineserver -k 2>/dev/null || true
    wineserver -w 2>/dev/null || true
  fi
  local command
  case $kind in
  setup) command=('C:\ZendraSource\Setup.exe' -s -i) ;;
  setup-nofonts) command=('C:\ZendraSource\Setup.exe' -s -i -nofonts) ;;
  setup-before | setup-unsigned) command=('C:\ZendraSource\Setup.exe' -s -i) ;;
  nsis) command=('C:\ZendraPeers\ZendraNsis.exe' /S) ;;
  msi) command=(msiexec /i 'C:\ZendraPeers\Zendra.msi' /qn) ;;
  copy) command=('C:\PlainCopy.exe' 'C:\ZendraSource' 'C:\Program Files (x86)\Orvane\Zendra') ;;
  copy-gdi) command=('C:\PlainCopy.exe' -gdi 'C:\ZendraSource' 'C:\Program Files (x86)\Orvane\Zendra') ;;
  esac
  local start end status
  start=$(date +%s%N)
  set +e
  wine "${command[@]}" </dev/null >/dev/null 2>&1
  status=$?
  set -e
  end=$(date +%s%N)
  # Stopping the server writes the registry out, for the check to read.
  wineserver -k 2>/dev/null || true
  wineserver -w 2>/dev/null || true
  local installed verdict=ok check=$kind
  installed=$(find "$prefix/drive_c/Program Files (x86)/Orvane/Zendra" -type f 2>/dev/null | wc -l)
  if [ "$status" -ne 0 ]; then
    echo "bench.sh: $kind of $(basename "$product") exited $status" >&2
    tail -n 20 "$prefix"/drive_c/users/*/Temp/Zendra\ Install*.log >&2 || true
    verdict=failed
  fi
  [ "$kind" = setup-nofonts ] && check=none
  [ "$kind" = setup-before ] || [ "$kind" = setup-unsigned ] && check=setup
  [ "$kind" = copy-gdi ] && check=copy
  if [ "$check" != none ] &&
    ! /usr/bin/python3 bench/install/peers.py check "$check" "$product" "$prefix"; then
    verdict=failed
  fi
  [ -n "${KEEP_PREFIX:-}" ] || rm -rf "$prefix"
  echo "$(((end - start) / 1000000)) $installed $verdict"
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

# The product folders of the Setup variants among the kinds: the earlier
# build (BEFORE) in place of Setup.exe, or every program unsigned.
variant_folders() {
  local one=$1 ten=$2 kind product from file
  shift 2
  for kind; do
    case $kind in setup-before | setup-unsigned) ;; *) continue ;; esac
    for product in 1x 10x; do
      from=$bench/$kind-$product
      rm -rf "$from"
      cp -r "$([ "$product" = 1x ] && echo "$one" || echo "$ten")" "$from"
      if [ "$kind" = setup-before ]; then
        cp "$BEFORE" "$from/Setup.exe"
        continue
      fi
      for file in Setup.exe Zendra.dll ZendraMimer.dll ZendraBHO.dll \
        ZendraPanel.cpl ZendraBraille.dll VersionCheck.exe; do
        bash scripts/sign.sh unsign "$from/$file" "$from/$file.unsigned"
        mv -f "$from/$file.unsigned" "$from/$file"
      done
    done
  done
}

sudo_if_needed() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

install_bench() {
  bash scripts/install-deps.sh bench
  bash scripts/build.sh release
  if [ ! -f build/win/tests/stand-ins/mshtml.dll ]; then
    [ -f build/win/build.ninja ] || cmake -S "$top" -B build/win -G Ninja \
      -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DCMAKE_TOOLCHAIN_FILE="$top/cmake/mingw-i686.cmake" >/dev/null
    cmake --build build/win --target mshtml_standin
  fi
  if [ -n "${EMULATE:-}" ] && [ "$(bash scripts/i386.sh mode)" = natively ]; then
    sudo_if_needed bash scripts/i386.sh emulate
    trap 'sudo_if_needed bash scripts/i386.sh native' EXIT
  fi
  if [ -z "${DISPLAY:-}" ]; then
    xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" install
    return
  fi
  mkdir -p "$bench/prefixes"
  i686-w64-mingw32-g++-posix -O2 -static -s -o "$bench/PlainCopy.exe" \
    bench/install/PlainCopy.cpp
  tests/support/wine-prefix.sh "$bench/wine-template" --template
  local one="$top/build/release/sample" ten="$bench/sample-10x"
  make_tenfold "$one" "$ten"
  /usr/bin/python3 bench/install/peers.py build "$one" "$bench/peers-1x"
  /usr/bin/python3 bench/install/peers.py build "$ten" "$bench/peers-10x"
  local results="$bench/install.txt"
  {
    echo "mode $(bash scripts/i386.sh mode)"
    echo "start $([ -n "${WARM:-}" ] && echo warm || echo cold)"
    echo "payload 1x $(find "$one" -type f | wc -l) $(du -sb "$one" | cut -f1)"
    echo "payload 10x $(find "$ten" -type f | wc -l) $(du -sb "$ten" | cut -f1)"
  } >"$results"
  local kinds r product kind dir peers
  read -r -a kinds <<<"${KINDS:-setup nsis msi copy copy-gdi}"
  variant_folders "$one" "$ten" "${kinds[@]}"
  # Rounds: each runs every kind at both sizes, so that a slow spell of the
  # machine falls on all of them alike, and starts with the next kind, so
  # that none is always the first.
  for r in $(seq "${REPS:-5}"); do
    kinds=("${kinds[@]:1}" "${kinds[0]}")
    for product in 1x 10x; do
      dir=$one peers=$bench/peers-1x
      [ "$product" = 10x ] && dir=$ten peers=$bench/peers-10x
      for kind in "${kinds[@]}"; do
        local from=$dir
        case $kind in setup-before | setup-unsigned) from=$bench/$kind-$product ;; esac
        echo "run $product $kind $(run_once "$kind" "$from" "$peers") $r" | tee -a "$results"
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
