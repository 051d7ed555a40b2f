#!/usr/bin/env bash
# Checks from Linux that every Windows program in the product folder DIR
# carries an Authenticode signature by the certificate CERT (PEM) that the
# build signed with: a test publisher's is its own root, a release
# certificate chains to the system's roots.
#   verify-signatures.sh CERT DIR
set -u
cert=$1 dir=$2
roots=$cert
if [ "$(openssl x509 -in "$cert" -noout -subject -nameopt compat | cut -d= -f2-)" != \
  "$(openssl x509 -in "$cert" -noout -issuer -nameopt compat | cut -d= -f2-)" ]; then
  roots=/etc/ssl/certs/ca-certificates.crt
fi
serial=$(openssl x509 -in "$cert" -noout -serial | cut -d= -f2)
failed=0
for program in Setup.exe Zendra.dll ZendraMimer.dll ZendraBHO.dll \
  ZendraPanel.cpl ZendraBraille.dll VersionCheck.exe; do
  out=$(osslsigncode verify -CAfile "$roots" -in "$dir/$program" 2>&1)
  # The signer's serial number, as osslsigncode lists the certificates.
  if grep -q '^Succeeded' <<<"$out" && grep -qi "Serial *: *$serial" <<<"$out"; then
    echo "signed by the build's publisher: $program"
  else
    echo "NOT signed by the build's publisher: $program"
    tail -n 8 <<<"$out"
    failed=1
  fi
done
exit $failed
