#!/usr/bin/env bash
# Runs one end-to-end case in a fresh prefix cloned from the template:
#   run-fresh.sh TEMPLATE PREFIX PROGRAM [ARGS...]
# The prefix is removed afterwards unless KEEP_PREFIX is set.
set -u
here=$(cd "$(dirname "$0")" && pwd)
template=$1
prefix=$2
shift 2
"$here/../support/clone-prefix.sh" "$template" "$prefix" || exit 1
export WINEPREFIX=$prefix WINEDEBUG=-all
"$here/../support/wine-run.sh" "$@"
status=$?
wineserver -k 2>/dev/null
[ -n "${KEEP_PREFIX:-}" ] || rm -rf "$prefix"
exit $status
