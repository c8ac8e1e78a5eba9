#!/usr/bin/env bash
# Builds the Debian package from the release build and checks it as Debian
# would: lintian (no errors allowed), desktop-file-validate on the launcher
# and appstreamcli on the store entry. Prints the package's path last.
#   scripts/package.sh
# Install the result with: sudo apt install ./build/release/packages/korvane-generator_<version>_<arch>.deb
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh --test
cmake --preset release >/dev/null
cmake --build --preset release

out=build/release/packages
rm -rf "$out"
cpack --config build/release/CPackConfig.cmake -B "$out"
deb=$(ls "$out"/korvane-generator_*.deb)

echo "==> lintian"
# Warnings are reported, errors fail the package.
lintian --fail-on error "$deb"

echo "==> launcher and store entry"
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
dpkg-deb -x "$deb" "$root"
desktop-file-validate "$root/usr/share/applications/org.korvanegenerator.KorvaneGenerator.desktop"
appstreamcli validate --no-net "$root/usr/share/metainfo/org.korvanegenerator.KorvaneGenerator.metainfo.xml"

echo "$deb"
