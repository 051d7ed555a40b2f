#!/usr/bin/env bash
# Whether this machine runs 32-bit (i386) programs, and making it do so.
#   i386.sh mode     prints how 32-bit programs run here: "natively",
#                    "under qemu-i386 emulation", or "not at all"
#   i386.sh ensure   where none runs, installs qemu-user 10 or later from the
#                    release's backports suite and registers it for i386
#                    programs with the kernel's binfmt_misc; root only
#   i386.sh emulate  registers qemu-i386 even where the kernel runs 32-bit
#                    programs itself, so that one machine can be measured
#                    both ways (the install benchmark's EMULATE=1); root only
#   i386.sh native   takes that registration back where the kernel runs
#                    32-bit programs itself
# Wine's 32-bit loader, and through it Setup.exe and every 32-bit program of
# the tests, is an i386 program: on a kernel whose IA-32 emulation is off it
# fails with "Exec format error" unless an emulator is registered.
set -euo pipefail

binfmt=/proc/sys/fs/binfmt_misc
handler_name=qemu-i386
interpreter=/usr/libexec/qemu-binfmt/i386-binfmt-P
min_qemu_major=10

# Runs a hand-made static i386 program that only exits with 42. Needs no i386
# package, so it answers before any is installed (their install scripts may
# run i386 programs themselves).
i386_runs() {
  local probe rc=0
  probe=$(mktemp "${TMPDIR:-/tmp}/i386-probe.XXXXXX")
  # ELF header, one loadable segment, then: mov eax,1; mov ebx,42; int 0x80.
  printf '%b' \
    '\x7f\x45\x4c\x46\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00' \
    '\x02\x00\x03\x00\x01\x00\x00\x00\x54\x80\x04\x08\x34\x00\x00\x00' \
    '\x00\x00\x00\x00\x00\x00\x00\x00\x34\x00\x20\x00\x01\x00\x00\x00' \
    '\x00\x00\x00\x00\x01\x00\x00\x00\x00\x00\x00\x00\x00\x80\x04\x08' \
    '\x00\x80\x04\x08\x60\x00\x00\x00\x60\x00\x00\x00\x05\x00\x00\x00' \
    '\x00\x10\x00\x00\xb8\x01\x00\x00\x00\xbb\x2a\x00\x00\x00\xcd\x80' >"$probe"
  chmod +x "$probe"
  "$probe" 2>/dev/null || rc=$?
  rm -f "$probe"
  [ "$rc" -eq 42 ]
}

handler_enabled() {
  [ -f "$binfmt/$handler_name" ] && head -n 1 "$binfmt/$handler_name" | grep -qx enabled
}

mode() {
  if ! i386_runs; then
    echo "not at all"
  elif handler_enabled; then
    echo "under qemu-i386 emulation"  # binfmt_misc comes before the kernel's own loader
  else
    echo natively
  fi
}

qemu_major() {  # the installed qemu-i386's major version, or 0
  local v
  v=$(qemu-i386 --version 2>/dev/null | sed -n 's/^qemu-i386 version \([0-9]*\).*/\1/p')
  echo "${v:-0}"
}

# The URIs of the apt source that serves the release's main suite, so that
# backports come from the same mirror. Reads both source formats.
main_suite_uris() {
  local codename=$1 f
  for f in /etc/apt/sources.list.d/*.sources; do
    [ -f "$f" ] || continue
    awk -v c="$codename" '
      BEGIN { RS = ""; FS = "\n" }
      {
        uris = ""; suite = 0; deb = 0
        for (i = 1; i <= NF; i++) {
          if ($i ~ /^URIs:/) { uris = $i; sub(/^URIs:[ \t]*/, "", uris) }
          if ($i ~ /^Suites:/ && (" " $i " ") ~ (" " c " ")) suite = 1
          if ($i ~ /^Types:/ && (" " $i " ") ~ / deb /) deb = 1
        }
        if (uris != "" && suite && deb) { print uris; exit }
      }' "$f"
  done
  for f in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$f" ] || continue
    awk -v c="$codename" '$1 == "deb" && $0 !~ /^#/ {
        i = 2; if ($2 ~ /^\[/) { while ($i !~ /\]$/) i++; i++ }
        if ($(i + 1) == c) { print $i; exit } }' "$f"
  done
}

add_backports() {
  local codename=$1 list=/etc/apt/sources.list.d/$1-backports.sources uris keyring
  [ -f "$list" ] && return 0
  uris=$(main_suite_uris "$codename" | head -n 1)
  if [ -z "$uris" ]; then
    echo "i386: no apt source serves the $codename suite, so its backports can't be added;" \
      "add '$codename-backports' to the apt sources and run this again" >&2
    exit 1
  fi
  keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  printf 'Types: deb\nURIs: %s\nSuites: %s-backports\nComponents: main\nSigned-By: %s\n' \
    "$uris" "$codename" "$keyring" >"$list"
  echo "i386: added $codename-backports from $uris"
}

install_qemu() {
  local codename
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  add_backports "$codename"
  export DEBIAN_FRONTEND=noninteractive
  # A suite whose index is mid-sync fails the update, not the install.
  apt-get update -q >/dev/null || true
  apt-get install -y -q --no-install-recommends -t "$codename-backports" qemu-user
  if [ "$(qemu_major)" -lt "$min_qemu_major" ]; then
    echo "i386: qemu-user $(qemu_major) was installed, but 32-bit programs need" \
      "$min_qemu_major or later to start in seconds rather than minutes" >&2
    exit 1
  fi
}

register_handler() {
  if ! mountpoint -q "$binfmt"; then
    mount -t binfmt_misc binfmt_misc "$binfmt" || {
      echo "i386: can't mount binfmt_misc on $binfmt, so no emulator can be" \
        "registered for 32-bit programs; boot the kernel with ia32_emulation=on," \
        "or run on a machine (or a privileged container) that has binfmt_misc" >&2
      exit 1
    }
  fi
  mkdir -p "$(dirname "$interpreter")"
  [ -e "$interpreter" ] || ln -s "$(command -v qemu-i386)" "$interpreter"
  [ -f "$binfmt/$handler_name" ] && echo -1 >"$binfmt/$handler_name"  # a stale one
  # i386 ELF executables and shared objects; P keeps argv[0], F opens the
  # emulator now, so it is found from any mount namespace.
  printf '%s' ":$handler_name:M::"'\x7f\x45\x4c\x46\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00'":"'\xff\xff\xff\xff\xff\xfe\xfe\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff'":$interpreter:OPF" \
    >"$binfmt/register"
}

ensure() {
  i386_runs && return 0
  if [ "$(id -u)" -ne 0 ]; then
    echo "i386: this machine runs no 32-bit programs, and only root can register" \
      "an emulator for them; run scripts/install-deps.sh as root" >&2
    exit 1
  fi
  echo "i386: this kernel runs no 32-bit programs; registering qemu-i386 for them"
  [ "$(qemu_major)" -ge "$min_qemu_major" ] || install_qemu
  register_handler
  if ! i386_runs; then
    echo "i386: qemu-i386 is registered, but a 32-bit program still does not run" >&2
    exit 1
  fi
}

# Emulation where the kernel needs none; binfmt_misc comes before the
# kernel's own loader, so every i386 program then goes through qemu.
emulate() {
  if ! i386_runs; then ensure; return; fi
  handler_enabled && return 0
  [ "$(qemu_major)" -ge "$min_qemu_major" ] || install_qemu
  register_handler
}

# Where the kernel can't run them itself, the registration stays.
native() {
  handler_enabled || return 0
  echo -1 >"$binfmt/$handler_name"
  i386_runs || register_handler
}

case ${1:-} in
mode) mode ;;
ensure) ensure ;;
emulate) emulate ;;
native) native ;;
*) echo "usage: i386.sh mode|ensure|emulate|native" >&2; exit 2 ;;
esac
