#!/usr/bin/env bash
# Makes a fresh 64-bit Wine prefix at $1, removing any old one.
#   wine-prefix.sh PREFIX             boot it and keep its wineserver running
#   wine-prefix.sh PREFIX --template  boot it and stop its server, so that it
#                                     can be cloned (clone-prefix.sh)
set -eu
prefix=$1
mode=${2:-}
export WINEPREFIX=$prefix WINEDEBUG=-all WINEARCH=win64
export WINEDLLOVERRIDES=mscoree,mshtml=
if [ -d "$prefix" ]; then
  wineserver -k 2>/dev/null || true
  rm -rf "$prefix"
fi
mkdir -p "$prefix"
wine wineboot -i </dev/null >/dev/null 2>&1
# A crashing test program must end at once: no crash dialog, and no automatic
# debugger, which would outlive the program and keep its output open.
wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f >/dev/null 2>&1
for view in 32 64; do
  wine reg delete 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' \
    /v Debugger /f /reg:$view >/dev/null 2>&1 || true
done
wineserver -w
if [ "$mode" != --template ]; then
  wineserver -p 60 </dev/null >/dev/null 2>&1
fi
