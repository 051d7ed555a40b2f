#!/usr/bin/env bash
# The benchmarks; not tests, and not part of CI. Prints, for each, the time
# per item at each size and the ratios the performance goals are given in.
#   bench.sh [all|native|install]
# native:  the portable library (streams, configuration files, template
#          expansion, paths), built natively in Release without sanitizers
#          in build/bench, with Google Benchmark; each figure is the median
#          of REPS runs (default 5).
# install: the sample product (1x), one with ten times the support files
#          (10x) and a large one of small files in deep trees (100x, about
#          a hundred times the files; SCALES picks them), installed silently
#          by Setup.exe, by an NSIS installer and an MSI package of the same
#          product, and by a plain program that copies the same files, each
#          in a fresh Wine prefix and checked after. Setup and NSIS are also
#          timed repairing (installing again over the installed product) and
#          removing it; REPS alternated rounds (default 15). KINDS picks the
#          kinds (default "setup nsis copy copy-fonts"; "copy-fonts" is the
#          font floor: the copy plus what any installer of the fonts must do;
#          "copy-gdi" the copy with the display driver loaded; "msi" the
#          package; "setup-nofonts" is Setup.exe -nofonts, "setup-before"
#          runs the Setup.exe that BEFORE names, an earlier build, from the
#          same product folder, and "setup-unsigned" the release with every
#          signature taken off, so that Setup checks none). EMULATE=1 runs
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

# The command of one operation of one kind. `setup` runs Setup.exe -s -i
# from the product folder (`setup-nofonts` adds -nofonts, to tell how much
# of it the fonts take), `nsis` and `msi` the other installers of the same
# product (bench/install/peers.py), `copy` copies that folder into the
# install folder and `copy-fonts` adds what installing its fonts takes.
# A repair runs the install again over the installed product; a removal
# runs the installed Setup.exe -s -u, or NSIS's uninstaller.
command_of() {
  local kind=$1 op=$2 installed='C:\Program Files (x86)\Orvane\Zendra'
  case $kind:$op in
  setup*:remove) command=("$installed\\Setup.exe" -s -u) ;;
  setup-nofonts:*) command=('C:\ZendraSource\Setup.exe' -s -i -nofonts) ;;
  setup*) command=('C:\ZendraSource\Setup.exe' -s -i) ;;
  nsis:remove) command=("$installed\\Uninstall.exe" /S) ;;
  nsis:*) command=('C:\ZendraPeers\ZendraNsis.exe' /S) ;;
  msi:*) command=(msiexec /i 'C:\ZendraPeers\Zendra.msi' /qn) ;;
  copy:*) command=('C:\PlainCopy.exe' 'C:\ZendraSource' "$installed") ;;
  copy-gdi:*) command=('C:\PlainCopy.exe' -gdi 'C:\ZendraSource' "$installed") ;;
  copy-fonts:*) command=('C:\PlainCopy.exe' -fonts 'C:\ZendraSource' "$installed") ;;
  esac
}

# Both uninstallers end before their work does: Setup's batch file deletes
# Setup.exe and the folder, NSIS's copy of itself in the temporary folder
# deletes the rest. The removal lasts until the install folder and the
# batch file are gone (at most a minute).
wait_until_removed() {
  local prefix=$1 tries=6000
  local folder="$prefix/drive_c/Program Files (x86)/Orvane/Zendra"
  while [ -e "$folder" ] ||
    compgen -G "$prefix/drive_c/users/*/Temp/OVDELSU.BAT" >/dev/null; do
    tries=$((tries - 1))
    [ "$tries" -gt 0 ] || return 1
    sleep 0.01
  done
}

# The operations each kind is timed in, one after the other in one prefix.
operations_of() {
  case $1 in
  setup | setup-before | setup-unsigned | nsis) echo install repair remove ;;
  *) echo install ;;
  esac
}

# One kind's timed runs in a fresh prefix: the product in C:\ZendraSource,
# the browser's stand-in library; only the installer's own command is
# timed (a removal until its work is done). Each is then checked from
# Linux. Prints a line "<op> <ms> <files installed> <ok|failed>" for each;
# an operation that fails ends the kind's runs.
run_kind() {
  local kind=$1 product=$2 peers=$3 prefix="$prefixes/$1"
  tests/support/clone-prefix.sh "$prefixes/wine-template" "$prefix"
  export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES=mscoree=
  mkdir -p "$prefix/drive_c/ZendraSource" "$prefix/drive_c/ZendraPeers"
  cp -r "$product/." "$prefix/drive_c/ZendraSource/"
  cp "$bench/PlainCopy.exe" "$prefix/drive_c/PlainCopy.exe"
  cp "$peers"/Zendra* "$prefix/drive_c/ZendraPeers/"
  cp build/win/tests/stand-ins/mshtml.dll "$prefix/drive_c/windows/syswow64/mshtml.dll"
  wine reg add 'HKCU\Software\Wine\DllOverrides' /v mshtml /d native,builtin /f \
    >/dev/null 2>&1
  local op check=$kind
  case $kind in
  setup-nofonts) check=none ;;
  setup-*) check=setup ;;
  copy-*) check=copy ;;
  esac
  for op in $(operations_of "$kind"); do
    # Each operation starts Wine as on a machine just switched on: the
    # server and its services start inside the timed run, as they would
    # for the first program run there. WARM=1 keeps them running instead,
    # which leaves only the installers' own work in the figures.
    if [ -n "${WARM:-}" ]; then
      wineserver -p
    else
      wineserver -k 2>/dev/null || true
      wineserver -w 2>/dev/null || true
    fi
    local command start end status verdict=ok installed
    command_of "$kind" "$op"
    # What the copies before left for the disk to write is written now, not
    # inside the timed run.
    sync
    start=$(date +%s%N)
    set +e
    wine "${command[@]}" </dev/null >/dev/null 2>&1
    status=$?
    [ "$op" != remove ] || wait_until_removed "$prefix" || status=124
    set -e
    end=$(date +%s%N)
    # Stopping the server writes the registry out, for the check to read.
    wineserver -k 2>/dev/null || true
    wineserver -w 2>/dev/null || true
    installed=$( (find "$prefix/drive_c/Program Files (x86)/Orvane/Zendra" \
      -type f 2>/dev/null || true) | wc -l)
    if [ "$status" -ne 0 ]; then
      echo "bench.sh: $op by $kind of $(basename "$product") exited $status" >&2
      tail -n 20 "$prefix"/drive_c/users/*/AppData/Local/Temp/Zendra*.log >&2 || true
      verdict=failed
    fi
    if [ "$check" != none ] && ! /usr/bin/python3 bench/install/peers.py \
      check "$check" "$product" "$prefix" "$([ "$op" = remove ] && echo removed || echo installed)"; then
      verdict=failed
    fi
    echo "$op $(((end - start) / 1000000)) $installed $verdict"
    [ "$verdict" = ok ] || break
  done
  [ -n "${KEEP_PREFIX:-}" ] || rm -rf "$prefix"
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

# A large product of small files in deep trees, about a hundred times the
# sample's file count: the tenfold product's subfolder trees copied again
# into 36 numbered groups below each tree's own folder ("Rules/Group 7/
# Speech Rules/English/..."), the large files of its top folder once.
make_hundredfold() {
  local ten=$1 to=$2 tree group
  rm -rf "$to"
  cp -r "$ten" "$to"
  for tree in "Rules" "Office Support" "LibLouis/Tables"; do
    for group in $(seq 2 37); do
      mkdir -p "$to/$tree/Group $group"
      (cd "$ten/$tree" && find . -mindepth 1 -maxdepth 1 ! -name 'Group *' \
        -exec cp -r {} "$to/$tree/Group $group/" \;)
    done
  done
}

# The product folders of the Setup variants among the kinds: the earlier
# build (BEFORE) in place of Setup.exe, or every program unsigned.
variant_folders() {
  local kind scale from file
  for kind in "${kinds[@]}"; do
    case $kind in setup-before | setup-unsigned) ;; *) continue ;; esac
    for scale in "${scales[@]}"; do
      from=$bench/$kind-$scale
      rm -rf "$from"
      cp -r "${product_of[$scale]}" "$from"
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
  # The prefixes live in memory (BENCH_TMPDIR, as the library's scratch
  # files), so that the disk's own pace and the other users of the machine,
  # which scatter thousands of small writes by tens of per cent, count as
  # little as possible.
  local tmp=${BENCH_TMPDIR:-/dev/shm}
  [ -d "$tmp" ] || tmp=$bench
  prefixes=$tmp/zendra-bench-prefixes
  rm -rf "$prefixes"
  mkdir -p "$prefixes"
  i686-w64-mingw32-g++-posix -O2 -static -s -o "$bench/PlainCopy.exe" \
    bench/install/PlainCopy.cpp
  tests/support/wine-prefix.sh "$prefixes/wine-template" --template
  local kinds scales scale r kind results="$bench/install.txt" peer_kinds=nsis
  read -r -a kinds <<<"${KINDS:-setup nsis copy copy-fonts}"
  read -r -a scales <<<"${SCALES:-1x 10x 100x}"
  [[ " ${kinds[*]} " != *" msi "* ]] || peer_kinds="nsis msi"
  declare -A product_of=([1x]="$top/build/release/sample"
    [10x]="$bench/sample-10x" [100x]="$bench/sample-100x")
  make_tenfold "${product_of[1x]}" "${product_of[10x]}"
  [[ " ${scales[*]} " != *" 100x "* ]] ||
    make_hundredfold "${product_of[10x]}" "${product_of[100x]}"
  {
    echo "mode $(bash scripts/i386.sh mode)"
    echo "start $([ -n "${WARM:-}" ] && echo warm || echo cold)"
  } >"$results"
  for scale in "${scales[@]}"; do
    /usr/bin/python3 bench/install/peers.py build "${product_of[$scale]}" \
      "$bench/peers-$scale" $peer_kinds
    echo "payload $scale $(find "${product_of[$scale]}" -type f | wc -l)" \
      "$(du -sb "${product_of[$scale]}" | cut -f1)" >>"$results"
  done
  variant_folders
  # Rounds: each runs every kind at every scale, so that a slow spell of
  # the machine falls on all of them alike, and starts with the next kind,
  # so that none is always the first.
  for r in $(seq "${REPS:-15}"); do
    kinds=("${kinds[@]:1}" "${kinds[0]}")
    for scale in "${scales[@]}"; do
      for kind in "${kinds[@]}"; do
        local from=${product_of[$scale]} line
        case $kind in setup-before | setup-unsigned) from=$bench/$kind-$scale ;; esac
        run_kind "$kind" "$from" "$bench/peers-$scale" | while read -r line; do
          echo "run $scale $kind $line $r" | tee -a "$results"
        done
      done
    done
  done
  rm -rf "$prefixes"
  /usr/bin/python3 "$top/bench/report.py" install "$results"
}

case $part in
all) native_bench; install_bench ;;
native) native_bench ;;
install) install_bench ;;
*) echo "usage: bench.sh [all|native|install]" >&2; exit 2 ;;
esac
