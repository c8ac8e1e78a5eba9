#!/usr/bin/env bash
# The Debian package of this build, made by the same rules as
# scripts/package.sh and unpacked into a scratch root: the programs there
# find their tools and resources inside it and scan a saved registry as the
# build tree's do, and the package's name, version and relations are the
# build's.
# Usage: check-package.sh BUILD_DIR DUMP
set -euo pipefail
build=$1 dump=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export HOME=$scratch XDG_CONFIG_HOME=$scratch/.config XDG_DATA_HOME=$scratch/.local/share
fail() { echo "FAIL: $*"; exit 1; }

cpack --config "$build/CPackConfig.cmake" -B "$scratch/out" >/dev/null
version=$("$build/bin/korvane" --version)
deb=$scratch/out/korvane-generator_${version}_$(dpkg --print-architecture).deb
[ -f "$deb" ] || fail "no $(basename "$deb") among: $(ls "$scratch/out")"
[[ ", $(dpkg-deb -f "$deb" Depends)," == *", hwdata,"* ]] || fail "Depends: $(dpkg-deb -f "$deb" Depends)"
[[ "$(dpkg-deb -f "$deb" Recommends)" == acpica-tools,* ]] || fail "Recommends: $(dpkg-deb -f "$deb" Recommends)"

root=$scratch/root
dpkg-deb -x "$deb" "$root"
id=org.korvanegenerator.KorvaneGenerator
grep -q "<release version=\"$version\"" "$root/usr/share/metainfo/$id.metainfo.xml" || fail "metainfo release"
desktop-file-validate "$root/usr/share/applications/$id.desktop"
appstreamcli validate --no-net "$root/usr/share/metainfo/$id.metainfo.xml" >/dev/null

paths=$("$root/usr/bin/korvane" paths)
for label in resources ditto plutil; do
  line=$(grep "^$label:" <<<"$paths")
  [[ "$line" == *"$root/usr/"* && "$line" != *"(missing)"* ]] || fail "$label not found in the package: $line"
done
# A sighting's time is the scan's, so two scans a second apart differ there only.
untimed() { sed -E 's/"lastSeen":"[^"]*"//g'; }
[ "$("$root/usr/bin/korvane" scan --registry "$dump" --json | untimed)" = "$("$build/bin/korvane" scan --registry "$dump" --json | untimed)" ] \
  || fail "the unpacked program scans $dump differently"
echo "package $(basename "$deb") OK"
