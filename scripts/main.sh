#!/usr/bin/env bash
# The main job: build Setup.exe, then install and remove the sample product
# as a user would, under Wine in a fresh prefix made to look like a user's
# machine, and show what a user and support staff would look at.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"

if [ "${1:-}" != --on-display ]; then
  bash scripts/install-deps.sh
  echo "== 32-bit programs run $(bash scripts/i386.sh mode) =="
  bash scripts/build.sh win
  # Every Wine command of the job shares one virtual display.
  exec xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" --on-display
fi

build=$top/build/win
prefix=$top/build/main-prefix
echo "== Fresh Wine prefix: $prefix =="
tests/support/wine-prefix.sh "$prefix"
export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES=mscoree=
c=$prefix/drive_c
reg32() { wine reg "$@" /reg:32 >/dev/null; }

echo "== The machine: the browser's library, Word 2016 and PowerPoint 2016 =="
rm -f "$c/windows/syswow64/mshtml.dll"  # never write through a shared file
cp "$build/tests/stand-ins/mshtml.dll" "$c/windows/syswow64/mshtml.dll"
wine reg add 'HKCU\Software\Wine\DllOverrides' /v mshtml /d native,builtin /f >/dev/null
office="$c/Program Files (x86)/Microsoft Office/Office16"
mkdir -p "$office/Startup"
cp "$build/tests/stand-ins/fake_word.exe" "$office/WINWORD.EXE"
reg32 add 'HKLM\Software\Microsoft\Office\16.0\Word\InstallRoot' /v PATH \
  /d 'C:\Program Files (x86)\Microsoft Office\Office16\' /f
reg32 add 'HKLM\Software\Microsoft\Office\16.0\PowerPoint\InstallRoot' /f

# The install source folder: the sample product as it ships.
source_dir=$c/ZendraSource
mkdir -p "$source_dir"
cp -r "$build/sample/." "$source_dir/"
echo "== Install source folder C:\\ZendraSource =="
(cd "$source_dir" && find . -type f | sort)
wine "$build/tools/ovc/ovc.exe" check 'C:\ZendraSource\Zendra.ovc'

run() {
  echo "== $* =="
  set +e
  wine "$@"
  local code=$?
  set -e
  echo "exit code: $code"
}

show_log() {
  local log
  log=$(ls "$c"/users/*/Temp/"$1" 2>/dev/null | head -n 1)
  echo "== The log: $1 =="
  if [ -n "$log" ]; then tr -d '\r' <"$log"; else echo "(no log)"; fi
}

installed='C:\Program Files (x86)\Orvane\Zendra'
classes=(5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1 5A1C7E36-2B94-4F6D-9E21-7C3B0D84A6F1
         C35712C8-F326-4410-9093-0B461B0A77A0 7D241A8E-2B24-4DEC-AE24-090769270D92
         5F496A42-193E-4734-8FCA-1030514B457B)
show_machine() {
  echo "== Installed folders =="
  (cd "$c/Program Files (x86)" && find Orvane 2>/dev/null | sort) || true
  echo "== Add/Remove Programs (wine uninstaller --list) =="
  wine uninstaller --list
  echo "== Font families GDI knows (Zendra ...) =="
  wine "$build/tests/stand-ins/list_fonts.exe" Zendra
  echo "== Registered classes =="
  for id in "${classes[@]}"; do
    wine reg query "HKCR\\CLSID\\{$id}\\InprocServer32" /reg:32 2>&1 |
      grep -E 'HKEY|Default' || echo "{$id}: not registered"
  done
  echo "== Word's Startup folder =="
  ls "$office/Startup"
}

run 'C:\ZendraSource\Setup.exe' -s -verbose -i
show_log "Zendra Install 1.log"
show_machine

# Removal as Add/Remove Programs starts it: the installed Setup.exe.
run "$installed\\Setup.exe" -s -u
# The batch file deletes Setup.exe and its folder once Setup has ended.
for _ in $(seq 1 300); do
  [ -e "$c/Program Files (x86)/Orvane/Zendra" ] || break
  sleep 0.1
done
show_log "Zendra Uninstall.log"
show_machine

# The same release as administrators deploy it: the Windows Installer package.
cp "$build/Zendra.msi" "$c/Zendra.msi"
run msiexec /i 'C:\Zendra.msi' /qn /l*v 'C:\msi-install.log'
echo "== The package's log: how Setup ended =="
grep -a 'Zendra:' "$c/msi-install.log" | tr -d '\r'
show_machine
code=$(grep -a -o 'ProductCode = {[0-9A-F-]*}' "$c/msi-install.log" | head -n 1 |
  cut -d' ' -f3)
run msiexec /x "$code" /qn /l*v 'C:\msi-removal.log'
grep -a 'Zendra:' "$c/msi-removal.log" | tr -d '\r'
for _ in $(seq 1 300); do
  [ -e "$c/Program Files (x86)/Orvane/Zendra" ] || break
  sleep 0.1
done
show_machine
wineserver -k || true
