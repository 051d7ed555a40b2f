#!/usr/bin/env bash
# Wraps a release folder, laid out as shipped, into one Windows Installer
# package that runs the release's own Setup.exe (tools/msi/make_msi.py):
#   msi.sh SOURCE OUT.msi
# A folder that is no release (no Setup.exe, no Zendra.ovc, no version
# resource) is refused with a message naming what is missing, and nothing is
# written. The package's custom actions come from the build tree BUILD
# (default build/release, built when it lacks them); where that tree signs
# what it ships, the package is signed with the same certificate.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
if [ $# -ne 2 ]; then
  echo "usage: msi.sh SOURCE OUT.msi" >&2
  exit 2
fi
python3 "$top/tools/msi/make_msi.py" --check "$1"
build=${BUILD:-$top/build/release}
action=$build/tools/msi/ZendraMsiAction.dll
[ -f "$action" ] || bash "$top/scripts/build.sh" "$(basename "$build")" >&2
python3 "$top/tools/msi/make_msi.py" "$1" "$2" "$action"
if grep -qx 'ZENDRA_SIGN:BOOL=ON' "$build/CMakeCache.txt" 2>/dev/null; then
  bash "$top/scripts/sign.sh" sign "$build/signing" "$2"
fi
