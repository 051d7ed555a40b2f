#!/usr/bin/env bash
# msi.sh refuses a folder that is no release, names what it lacks and writes
# nothing:  msi-refusals.sh SAMPLE_DIR
set -u
sample=$1 work=$(mktemp -d) failed=0
trap 'rm -rf "$work"' EXIT
msi=$(cd "$(dirname "$0")/../../scripts" && pwd)/msi.sh
mkdir -p "$work/no-setup" "$work/no-config" "$work/no-version"
cp "$sample/Zendra.ovc" "$work/no-setup/"
cp "$sample/Setup.exe" "$work/no-config/"
cp "$sample/Zendra.ovc" "$work/no-version/"
cp "$sample/About.gif" "$work/no-version/Setup.exe"
for case in "no-setup:Setup.exe is missing" "no-config:Zendra.ovc is missing" \
  "no-version:Setup.exe has no version resource"; do
  folder=${case%%:*} expected=${case#*:}
  message=$(BUILD=/nonexistent bash "$msi" "$work/$folder" "$work/$folder.msi" 2>&1)
  status=$?
  if [ $status -eq 0 ] || ! grep -qF "$expected" <<<"$message" || [ -e "$work/$folder.msi" ]; then
    echo "msi.sh did not refuse $folder as it should (exit $status): $message"
    failed=1
  fi
done
exit $failed
