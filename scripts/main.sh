#!/usr/bin/env bash
# The main job: build Setup.exe, then run it as a user would under Wine in a
# fresh prefix, and show what it did.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"

bash scripts/install-deps.sh
bash scripts/build.sh win

prefix="$top/build/main-prefix"
echo "== Fresh Wine prefix: $prefix =="
tests/support/wine-prefix.sh "$prefix"
export WINEPREFIX=$prefix WINEDEBUG=-all

run_setup() {
  echo "== Setup.exe $* =="
  set +e
  xvfb-run -a wine build/win/setup/Setup.exe "$@"
  local code=$?
  set -e
  echo "exit code: $code"
}

run_setup -s -i
run_setup -s -u
wineserver -k || true
