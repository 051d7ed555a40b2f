#!/usr/bin/env bash
# Runs one test case in a fresh prefix cloned from the template:
#   run-fresh.sh [--locked-folders] TEMPLATE PREFIX PROGRAM [ARGS...]
# The prefix is removed afterwards unless KEEP_PREFIX is set.
#
# --locked-folders first lays out locked items under C:\ZendraLocked:
#   ReadOnlyRoot\Startup           a read-only folder
#   TargetRoot\Startup\<template>  a read-only Word macro template
# Windows programs cannot make a folder read-only under Wine, and root writes
# through permissions, so as root the locked items are made immutable too.
set -u
here=$(cd "$(dirname "$0")" && pwd)
locked=
if [ "${1:-}" = --locked-folders ]; then
  locked=yes
  shift
fi
template=$1
prefix=$2
shift 2
"$here/clone-prefix.sh" "$template" "$prefix" || exit 1

lockedDir=$prefix/drive_c/ZendraLocked
folder=$lockedDir/ReadOnlyRoot/Startup
target="$lockedDir/TargetRoot/Startup/Zendra 4 Commands for Word (32 bit).dotm"
unlock() {
  [ "$(id -u)" = 0 ] && chattr -i "$folder" "$target" 2>/dev/null
  chmod -R u+w "$lockedDir"
}
if [ -n "$locked" ]; then
  mkdir -p "$folder" "$(dirname "$target")"
  printf 'an older template\n' >"$target"
  chmod 0555 "$folder"
  chmod 0444 "$target"
  if [ "$(id -u)" = 0 ]; then
    chattr +i "$folder" "$target" || echo "run-fresh.sh: chattr failed" >&2
  fi
fi

export WINEPREFIX=$prefix WINEDEBUG=-all
"$here/wine-run.sh" "$@"
status=$?
wineserver -k 2>/dev/null
[ -n "$locked" ] && unlock
[ -n "${KEEP_PREFIX:-}" ] || rm -rf "$prefix"
exit $status
