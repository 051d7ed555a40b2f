#!/usr/bin/env bash
# Installs everything the build and the tests need from Debian's packages.
# Idempotent: a machine that already has every package does no apt work at all.
#   install-deps.sh         what the build, the tests and CI need
#   install-deps.sh bench   that, and the install benchmark's other
#                           installers: NSIS and the MSI tools
set -euo pipefail
here=$(dirname "$0")

packages=(
  cmake make ninja-build g++ clang-format
  g++-mingw-w64-i686-posix gcc-mingw-w64-i686-posix binutils-mingw-w64-i686
  mingw-w64-i686-dev libz-mingw-w64-dev
  wine wine32:i386 wine64 libwine:i386
  xvfb xauth xdotool x11-apps imagemagick
  googletest libbenchmark-dev zlib1g-dev python3-fonttools
  e2fsprogs
  # Authenticode signatures on the programs the product ships.
  osslsigncode openssl
  # The Windows Installer package that wraps the release.
  msitools wixl
  # The fuzz targets: clang with libFuzzer and the sanitizer runtimes (only
  # recommended by clang-14, so named here).
  clang libclang-rt-14-dev
)
if [ "${1:-}" = bench ]; then
  packages+=(nsis)
fi

sudo_if_needed() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# First make sure 32-bit programs run (Wine's 32-bit half and its install
# scripts need that); where the kernel can't, an emulator is registered.
if [ "$(id -u)" -eq 0 ]; then bash "$here/i386.sh" ensure; else sudo bash "$here/i386.sh" ensure; fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}\n' "$p" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: all packages present"
  exit 0
fi
echo "install-deps: installing ${missing[*]}"

export DEBIAN_FRONTEND=noninteractive
if ! dpkg --print-foreign-architectures | grep -qx i386; then
  sudo_if_needed dpkg --add-architecture i386
fi
sudo_if_needed apt-get update -q || true

apt_install() {
  sudo_if_needed apt-get install -y -q --no-install-recommends "$@"
}

if apt_install "${missing[@]}"; then
  exit 0
fi

# The i386 index of the security suite can lag behind the amd64 one, so the
# two architectures of a Multi-Arch: same package disagree on the version.
# Pin every package to the main suite's version for both architectures then.
echo "install-deps: plain install failed; retrying with the main suite's versions"
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
main_version() {  # package[:arch] -> version offered by the main suite, if any
  apt-cache madison "$1" 2>/dev/null |
    awk -F'|' -v s="$codename/main" '$3 ~ s" " || $3 ~ s"$" {gsub(/ /,"",$2); print $2; exit}'
}
pinned=()
for p in "${missing[@]}"; do
  v=$(main_version "$p")
  if [ -n "$v" ]; then pinned+=("$p=$v"); else pinned+=("$p"); fi
done
# Wine's libraries come in pairs too; pin the ones the two wine packages pull in.
for p in libwine libwine:i386 wine64 wine32:i386 wine; do
  v=$(main_version "$p")
  [ -n "$v" ] && pinned+=("$p=$v")
done
apt_install "${pinned[@]}" ||
  apt_install -t "$codename" "${missing[@]}"
