#!/usr/bin/env bash
# Runs one case of the install-action tests in a fresh prefix cloned from the
# template, with locked folders laid out first under C:\ZendraLocked:
#   ReadOnlyRoot\Startup           a read-only folder
#   TargetRoot\Startup\<template>  a read-only Word macro template
# Windows programs cannot make a folder read-only under Wine, and root writes
# through permissions, so as root the locked items are made immutable too.
#   run-case.sh TEMPLATE PREFIX PROGRAM [ARGS...]
# The prefix is removed afterwards unless KEEP_PREFIX is set.
set -u
here=$(cd "$(dirname "$0")" && pwd)
template=$1
prefix=$2
shift 2
"$here/../support/clone-prefix.sh" "$template" "$prefix" || exit 1

locked=$prefix/drive_c/ZendraLocked
folder=$locked/ReadOnlyRoot/Startup
target="$locked/TargetRoot/Startup/Zendra 4 Commands for Word (32 bit).dotm"
mkdir -p "$folder" "$(dirname "$target")"
printf 'an older template\n' >"$target"
chmod 0555 "$folder"
chmod 0444 "$target"
if [ "$(id -u)" = 0 ]; then
  chattr +i "$folder" "$target" || echo "run-case.sh: chattr failed" >&2
fi

export WINEPREFIX=$prefix WINEDEBUG=-all
"$here/../support/wine-run.sh" "$@"
status=$?
wineserver -k 2>/dev/null
[ "$(id -u)" = 0 ] && chattr -i "$folder" "$target" 2>/dev/null
chmod -R u+w "$locked"
[ -n "${KEEP_PREFIX:-}" ] || rm -rf "$prefix"
exit $status
