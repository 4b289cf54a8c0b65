#!/usr/bin/env bash
# Checks the release signing with a throwaway self-signed code-signing
# certificate: the build signs EditKel.exe, kelcfg.exe and the MSI, each
# signature verifies (the certificate is not trusted, which is expected), and
# a signed file changed afterwards fails verification.
#
#   tools/check-signing.sh [<build>]
#
# <build> is a Windows build tree whose package is rebuilt signed (the
# reproducibility check's second build in CI; build/windows by default).
set -euo pipefail
build=$(realpath "${1:-build/windows}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

openssl rand -hex 16 >"$work/password"
openssl req -x509 -newkey rsa:3072 -sha256 -days 2 -nodes -subj "/CN=EditKel test signing" \
    -addext "keyUsage=critical,digitalSignature" -addext "extendedKeyUsage=codeSigning" \
    -keyout "$work/key.pem" -out "$work/cert.pem" 2>/dev/null
openssl pkcs12 -export -inkey "$work/key.pem" -in "$work/cert.pem" -out "$work/sign.pfx" \
    -passout "file:$work/password"

rm -f "$build"/installer/EditKel-*-x64.msi "$build"/installer/EditKel-*-x64.zip
cmake "-DKEL_SIGN_PFX=$work/sign.pfx" "-DKEL_SIGN_PASSWORD_FILE=$work/password" "$build" >/dev/null
cmake --build "$build" --target package >/dev/null
status=0
stage=$(cd "$build/installer" && ls -d EditKel-*-x64 | grep -v '\.wix$' | head -1)
for file in "$build/installer/$stage/EditKel.exe" "$build/installer/$stage/kelcfg.exe" \
            "$build/installer/$stage.msi"; do
    name=$(basename "$file")
    if osslsigncode verify -CAfile "$work/cert.pem" -in "$file" >"$work/verify.log" 2>&1; then
        echo "signed and verified  $name"
    else
        echo "NOT VERIFIED         $name"; cat "$work/verify.log"; status=1
    fi
    # A signed file changed afterwards must fail.
    cp "$file" "$work/tampered"
    size=$(stat -c %s "$work/tampered")
    printf 'X' | dd of="$work/tampered" bs=1 seek=$((size / 3)) conv=notrunc status=none
    if osslsigncode verify -CAfile "$work/cert.pem" -in "$work/tampered" >/dev/null 2>&1; then
        echo "TAMPERED FILE VERIFIED  $name"; status=1
    else
        echo "tampered copy fails  $name"
    fi
done
# Back to an unsigned package.
rm -f "$build"/installer/EditKel-*-x64.msi "$build"/installer/EditKel-*-x64.zip
cmake -DKEL_SIGN_PFX= -DKEL_SIGN_PASSWORD_FILE= "$build" >/dev/null
exit $status
