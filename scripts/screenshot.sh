#!/usr/bin/env bash
# Makes the README's pictures of the window: builds the program, opens the
# window on a virtual X display with a saved machine's registry and saves what
# it shows once the first scan is in.
#   scripts/screenshot.sh [REGISTRY_FILE]
# Writes docs/korvane-generator.png (light), docs/korvane-generator-dark.png,
# and docs/korvane-generator-map.png with the example map opened.
set -euo pipefail
cd "$(dirname "$0")/.."

registry=${1:-tests/data/macos/MacBookPro15-2/IOReg.txt}
build=${KORVANE_SCREENSHOT_BUILD:-build/release}

bash scripts/setup.sh --test
if [ ! -f "$build/build.ninja" ]; then
  cmake --preset release >/dev/null
fi
cmake --build "$build" --target korvane-generator

mkdir -p docs
# The window's font and size must not depend on who runs the script.
export QT_SCALE_FACTOR=1 QT_FONT_DPI=96
unset QT_QPA_PLATFORM QT_STYLE_OVERRIDE
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
# A home of its own: the window's first scan reads no ids copies of the user's.
export HOME="$home" XDG_CONFIG_HOME="$home/.config" XDG_DATA_HOME="$home/.local/share"

shoot() {
  local output=$1
  shift
  xvfb-run --auto-servernum --server-args="-screen 0 1280x900x24" \
    "$build/bin/korvane-generator" --registry "$registry" --screenshot "$output" "$@"
  echo "screenshot: $output"
}
shoot docs/korvane-generator.png
shoot docs/korvane-generator-dark.png --dark
shoot docs/korvane-generator-map.png --map docs/example-MacBookPro15-2.korvanemap
