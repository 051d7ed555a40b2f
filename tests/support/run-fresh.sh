#!/usr/bin/env bash
# Runs one test case in a fresh prefix cloned from the template:
#   run-fresh.sh [--locked-folders] [--small-drive] [--readonly-drive=DIR]
#                TEMPLATE PREFIX PROGRAM [ARGS...]
# The prefix is removed afterwards unless KEEP_PREFIX is set.
#
# --locked-folders first lays out locked items under C:\ZendraLocked:
#   ReadOnlyRoot\Startup           a read-only folder
#   TargetRoot\Startup\<template>  a read-only Word macro template
# Windows programs cannot make a folder read-only under Wine, and root writes
# through permissions, so as root the locked items are made immutable too.
#
# --small-drive gives the prefix a drive P: on an 8 MB tmpfs, for disks
# that fill up (as root only; without it there is no drive P:).
#
# --readonly-drive=DIR gives it a drive R: that shows DIR read-only, as a CD
# would (a read-only bind mount, as root only; without it there is no R:).
set -u
here=$(cd "$(dirname "$0")" && pwd)
locked= small= readonly=
while :; do
  case "${1:-}" in
    --locked-folders) locked=yes ;;
    --small-drive) small=yes ;;
    --readonly-drive=*) readonly=${1#--readonly-drive=} ;;
    *) break ;;
  esac
  shift
done
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

smallDir=$prefix-small-drive
if [ -n "$small" ]; then
  mkdir -p "$smallDir"
  if [ "$(id -u)" = 0 ] && mount -t tmpfs -o size=8m tmpfs "$smallDir"; then
    ln -sfn "$smallDir" "$prefix/dosdevices/p:"
  else
    echo "run-fresh.sh: no small drive (mounting a tmpfs needs root)" >&2
  fi
fi

readonlyDir=$prefix-readonly-drive
if [ -n "$readonly" ]; then
  mkdir -p "$readonlyDir"
  if [ "$(id -u)" = 0 ] && mount --bind "$readonly" "$readonlyDir" &&
    mount -o remount,bind,ro "$readonlyDir"; then
    ln -sfn "$readonlyDir" "$prefix/dosdevices/r:"
  else
    mountpoint -q "$readonlyDir" && umount "$readonlyDir"
    echo "run-fresh.sh: no read-only drive (a bind mount needs root)" >&2
  fi
fi

export WINEPREFIX=$prefix WINEDEBUG=-all
"$here/wine-run.sh" "$@"
status=$?
wineserver -k 2>/dev/null
[ -n "$locked" ] && unlock
if [ -n "$small" ]; then
  mountpoint -q "$smallDir" && umount "$smallDir"
  rmdir "$smallDir" 2>/dev/null
fi
if [ -n "$readonly" ]; then
  mountpoint -q "$readonlyDir" && umount "$readonlyDir"
  rmdir "$readonlyDir" 2>/dev/null
fi
[ -n "${KEEP_PREFIX:-}" ] || rm -rf "$prefix"
exit $status
