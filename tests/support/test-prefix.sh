#!/usr/bin/env bash
# The shared prefix of the Windows tests: a clone of the booted template
# with its wineserver kept running, so that test programs start quickly.
set -eu
"$(dirname "$0")/clone-prefix.sh" "$1" "$2"
export WINEPREFIX=$2 WINEDEBUG=-all
wineserver -p 60 </dev/null >/dev/null 2>&1
