#!/usr/bin/env bash
# Runs a Windows program under Wine in the build tree's throwaway prefix.
# WINEPREFIX may be set by the caller; by default it is <build>/wineprefix,
# where <build> is the current directory (CTest runs tests from the build tree).
set -u
export WINEPREFIX=${WINEPREFIX:-$PWD/wineprefix}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
if [ ! -d "$WINEPREFIX/drive_c" ]; then
  "$(dirname "$0")/wine-prefix.sh" "$WINEPREFIX" || exit 1
fi
exec wine "$@"
