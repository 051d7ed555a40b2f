#!/usr/bin/env bash
# Makes PREFIX a fresh copy of the booted TEMPLATE prefix (wine-prefix.sh
# --template): the files of drive C are hard links, the registry is copied.
# Wine replaces the registry files rather than rewriting them, and programs
# under test create their own files, so the template stays as booted.
set -eu
template=$1
prefix=$2
export WINEPREFIX=$prefix
if [ -d "$prefix" ]; then
  wineserver -k 2>/dev/null || true
  rm -rf "$prefix"
fi
mkdir -p "$prefix"
cp -al "$template/drive_c" "$prefix/"
# Everything else as it is, the hidden update stamp included (without it
# Wine would set the prefix up again on its first start).
for item in "$template"/* "$template"/.update-timestamp; do
  case $(basename "$item") in drive_c | wineserver) continue ;; esac
  cp -a "$item" "$prefix/"
done
