#!/usr/bin/env bash
# Turns the screenshots the Windows test run took under Xvfb
# (build/win/screenshots/*.bmp) into the README's pictures (docs/*.png).
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
shots=$top/build/win/screenshots
mkdir -p "$top/docs"
for bmp in "$shots"/*.bmp; do
  [ -e "$bmp" ] || { echo "no screenshots: run scripts/test.sh first" >&2; exit 1; }
  convert "$bmp" -strip "$top/docs/$(basename "${bmp%.bmp}").png"
done
ls -l "$top/docs"
