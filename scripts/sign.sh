#!/usr/bin/env bash
# Authenticode signatures (SHA-256, by osslsigncode) on the Windows programs
# the build ships, with the publisher's certificate:
#   sign.sh publisher DIR [NAME]  DIR/publisher.pem and DIR/publisher.cer
#                                 (DER, which Setup.exe carries): the release
#                                 certificate when ZENDRA_SIGN_PFX is set,
#                                 else a test publisher NAME ("Orvane Test
#                                 Publisher") made once in DIR with its key
#   sign.sh sign DIR FILE...      signs each FILE in place as DIR's publisher
#   sign.sh unsign FILE OUT       OUT is FILE without its signature
# A release is signed with ZENDRA_SIGN_PFX (a PFX file) and
# ZENDRA_SIGN_PASSWORD, as signtool's /f and /p take them; a timestamp is
# added only when ZENDRA_TIMESTAMP_URL names an RFC 3161 server.
set -euo pipefail
command=${1:?usage: sign.sh publisher|sign|unsign ...}
shift

release() { [ -n "${ZENDRA_SIGN_PFX:-}" ]; }

case $command in
publisher)
  dir=$1 name=${2:-Orvane Test Publisher}
  mkdir -p "$dir"
  if release; then
    openssl pkcs12 -in "$ZENDRA_SIGN_PFX" -passin env:ZENDRA_SIGN_PASSWORD \
      -nokeys -clcerts | openssl x509 -out "$dir/publisher.pem"
  elif [ ! -f "$dir/key.pem" ] || [ ! -f "$dir/test-publisher.pem" ]; then
    openssl req -x509 -newkey rsa:2048 -nodes -sha256 -days 3650 \
      -subj "/O=Orvane/CN=$name" -addext "keyUsage=critical,digitalSignature" \
      -addext "extendedKeyUsage=codeSigning" \
      -keyout "$dir/key.pem" -out "$dir/test-publisher.pem" 2>/dev/null
  fi
  release || cp "$dir/test-publisher.pem" "$dir/publisher.pem"
  # Written only when it changed: what depends on it is built again then.
  openssl x509 -in "$dir/publisher.pem" -outform DER -out "$dir/publisher.new"
  if cmp -s "$dir/publisher.new" "$dir/publisher.cer"; then
    rm "$dir/publisher.new"
  else
    mv "$dir/publisher.new" "$dir/publisher.cer"
  fi
  ;;
sign)
  dir=$1
  shift
  if release; then
    identity=(-pkcs12 "$ZENDRA_SIGN_PFX" -readpass <(printf '%s' "${ZENDRA_SIGN_PASSWORD:-}"))
  else
    identity=(-certs "$dir/publisher.pem" -key "$dir/key.pem")
  fi
  timestamp=()
  [ -n "${ZENDRA_TIMESTAMP_URL:-}" ] && timestamp=(-ts "$ZENDRA_TIMESTAMP_URL")
  for file; do
    osslsigncode sign "${identity[@]}" "${timestamp[@]}" -h sha256 -n Zendra \
      -in "$file" -out "$file.signed" >/dev/null
    mv -f "$file.signed" "$file"
  done
  ;;
unsign)
  mkdir -p "$(dirname "$2")"
  rm -f "$2"
  osslsigncode remove-signature -in "$1" -out "$2" >/dev/null
  ;;
*)
  echo "usage: sign.sh publisher|sign|unsign ..." >&2
  exit 2
  ;;
esac
