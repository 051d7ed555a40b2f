#!/usr/bin/env bash
# The main job: build Setup.exe, then install and remove the sample product
# as a user would, under Wine in a fresh prefix, and show the logs.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"

bash scripts/install-deps.sh
bash scripts/build.sh win

prefix="$top/build/main-prefix"
echo "== Fresh Wine prefix: $prefix =="
tests/support/wine-prefix.sh "$prefix"
export WINEPREFIX=$prefix WINEDEBUG=-all

# The install source folder: the sample product as it ships, Setup.exe
# beside the product's files.
source_dir="$prefix/drive_c/ZendraSource"
mkdir -p "$source_dir"
cp -r build/win/sample/. "$source_dir/"
echo "== Install source folder C:\ZendraSource =="
(cd "$source_dir" && find . -type f | sort)
wine build/win/tools/ovc/ovc.exe check 'C:\ZendraSource\Zendra.ovc'

run_setup() {
  echo "== Setup.exe $* =="
  set +e
  xvfb-run -a wine 'C:\ZendraSource\Setup.exe' "$@"
  local code=$?
  set -e
  echo "exit code: $code"
}

show_log() {
  local log
  log=$(ls "$prefix"/drive_c/users/*/Temp/"$1" 2>/dev/null | head -n 1)
  echo "== $1 =="
  if [ -n "$log" ]; then tr -d '\r' <"$log"; else echo "(no log)"; fi
}

run_setup -s -verbose -i
show_log "Zendra Install 1.log"
run_setup -s -u
show_log "Zendra Uninstall.log"
wineserver -k || true
