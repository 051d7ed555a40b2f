#!/usr/bin/env bash
# Runs every test: installs what is missing, builds both trees, runs the
# native tests under the sanitizers and every fuzz target for a few seconds,
# then the Windows tests under Wine in a fresh prefix on a virtual display.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"

bash scripts/install-deps.sh
echo "== 32-bit programs run $(bash scripts/i386.sh mode) =="
bash scripts/build.sh native
bash scripts/build.sh win

echo "== Native tests (AddressSanitizer, UBSan) =="
(cd build/native && ctest --output-on-failure)

echo "== Fuzz targets, 5 seconds each (libFuzzer, AddressSanitizer, UBSan) =="
bash scripts/fuzz.sh 5

echo "== Windows tests (Wine, Xvfb) =="
(cd build/win &&
  xvfb-run -a -s "-screen 0 1280x1024x24" ctest --output-on-failure)
