#!/usr/bin/env bash
# Runs a Windows program under Wine in the build tree's throwaway prefix.
# WINEPREFIX may be set by the caller; by default it is <build>/wineprefix,
# where <build> is the current directory.
#
# Wine starts helper processes on demand (the desktop, services) that outlive
# the program and inherit its output. So the program writes into a file, and
# the file is copied out once the program itself has ended: no helper ever
# holds the caller's pipe open.
set -u
export WINEPREFIX=${WINEPREFIX:-$PWD/wineprefix}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
if [ ! -d "$WINEPREFIX/drive_c" ]; then
  "$(dirname "$0")/wine-prefix.sh" "$WINEPREFIX" || exit 1
fi
output=$(mktemp)
trap 'rm -f "$output"' EXIT
wine "$@" </dev/null >"$output" 2>&1
status=$?
cat "$output"
exit $status
