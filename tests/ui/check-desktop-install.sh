#!/usr/bin/env bash
# Installs the build into a scratch prefix and checks that desktop
# environments can find the window's launcher, icon and store entry there,
# and that the three name each other consistently.
set -euo pipefail
build=$1
id=org.korvanegenerator.KorvaneGenerator
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT

cmake --install "$build" --prefix "$prefix" >/dev/null
desktop="$prefix/share/applications/$id.desktop"
metainfo="$prefix/share/metainfo/$id.metainfo.xml"
fail() { echo "FAIL: $*"; exit 1; }

[ -f "$desktop" ] || fail "no launcher at $desktop"
[ -f "$metainfo" ] || fail "no metainfo at $metainfo"
exec_name=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$desktop")
[ -x "$prefix/bin/$exec_name" ] || fail "the launcher starts $exec_name, which is not in bin/"
icon=$(sed -n 's/^Icon=//p' "$desktop")
[ -f "$prefix/share/icons/hicolor/scalable/apps/$icon.svg" ] || fail "no scalable icon named $icon"
for size in 48 128 256; do
  [ -f "$prefix/share/icons/hicolor/${size}x${size}/apps/$icon.png" ] || fail "no ${size}px icon named $icon"
done
grep -q "<launchable type=\"desktop-id\">$id.desktop</launchable>" "$metainfo" || fail "metainfo names another launcher"
grep -q "<id>$id</id>" "$metainfo" || fail "metainfo has another id"
! grep -qiE "example\.(org|com)" "$metainfo" || fail "metainfo carries a made-up address"
[ -f "$prefix/share/korvane-generator/AppIcon.svg" ] || fail "the window's own icon file is missing"
echo "desktop integration OK"
