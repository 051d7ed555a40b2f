#!/usr/bin/env bash
# Runs every fuzz target for SECONDS each (default 60), one after the other,
# and prints per target the executions, the time and the findings.
#   scripts/fuzz.sh [SECONDS] [TARGET...]
# FUZZ_RUNS=N ends a target after N executions when that comes first.
# FUZZ_JOBS=N fuzzes each target in N processes at once (libFuzzer's -fork);
# the executions printed are then those of all of them.
# Each target starts from its seed corpus (fuzz/corpus/<name>) and keeps
# what it finds in build/fuzz/corpus/<name>; crashes, leaks, timeouts and
# out-of-memory inputs go to build/fuzz/findings/<name>. The exit status is 1
# when any target found something.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
seconds=${1:-60}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] ||
  targets=(config ovc font path version format cmdline regscript)

bash scripts/build.sh fuzz >/dev/null

work="$top/build/fuzz"
status=0
printf '%-10s %14s %8s %9s\n' target executions seconds findings
for name in "${targets[@]}"; do
  corpus="$work/corpus/$name" findings="$work/findings/$name"
  mkdir -p "$corpus" "$findings"
  # Each run writes its own log, which then replaces the last one, so that a
  # short run beside a long one (CI during a long run) leaves both whole.
  log="$work/fuzz_$name.log"
  runlog="$log.$$"
  start=$(date +%s)
  set +e
  # The targets report their internal errors on stderr and carry on;
  # -close_fd_mask=2 keeps that quiet while libFuzzer's own reports stay.
  ASAN_OPTIONS=detect_leaks=1 nice -n 15 "$work/fuzz/fuzz_$name" \
    -max_total_time="$seconds" ${FUZZ_RUNS:+-runs=$FUZZ_RUNS} ${FUZZ_JOBS:+-fork=$FUZZ_JOBS} -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -close_fd_mask=2 -artifact_prefix="$findings/" \
    "$corpus" "fuzz/corpus/$name" >"$runlog" 2>&1
  code=$?
  set -e
  mv -f "$runlog" "$log"
  elapsed=$(($(date +%s) - start))
  runs=$(sed -n -e 's/^stat::number_of_executed_units: *//p' \
    -e 's/^#\([0-9]*\): cov:.*/\1/p' "$log" | tail -n 1)
  found=$(find "$findings" -type f | wc -l)
  printf '%-10s %14s %8s %9s\n' "$name" "${runs:-?}" "$elapsed" "$found"
  if [ "$code" -ne 0 ] || [ "$found" -ne 0 ]; then
    status=1
    echo "  fuzz_$name: exit $code; see $log and $findings" >&2
    grep -E 'ERROR|FUZZ_CHECK|SUMMARY|runtime error' "$log" | head -n 5 >&2 || true
  fi
done
exit $status
