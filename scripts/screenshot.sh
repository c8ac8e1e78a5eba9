#!/usr/bin/env bash
# Makes the README's pictures of the window: builds the program, opens the
# window on a virtual X display with a saved machine's registry and saves what
# it shows once the first scan is in.
#   scripts/screenshot.sh [REGISTRY_FILE]
# Writes docs/korvane-generator.png (light, on a 1366x768 screen at scale 1),
# docs/korvane-generator-dark.png, docs/korvane-generator-map.png with the
# example map opened, docs/korvane-generator-model.png (an iMac Pro's registry:
# its model and a controller over 15 ports), docs/korvane-generator-budget.png
# (a map made for another Mac), docs/korvane-generator-plugging.png, and the
# light window at scale 1.5 and 2 on a 1920x1080 screen
# (docs/korvane-generator@1.5x.png, docs/korvane-generator@2x.png).
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
export QT_FONT_DPI=96
unset QT_QPA_PLATFORM QT_STYLE_OVERRIDE
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
# A home of its own: the window's first scan reads no ids copies of the user's.
export HOME="$home" XDG_CONFIG_HOME="$home/.config" XDG_DATA_HOME="$home/.local/share"

# The window takes the size the screen has room for, as it does for a user.
shoot() {
  local screen=$1 scale=$2 output=$3
  shift 3
  QT_SCALE_FACTOR=$scale xvfb-run --auto-servernum --server-args="-screen 0 ${screen}x24" \
    "$build/bin/korvane-generator" --registry "${shown:-$registry}" --screenshot "$output" "$@"
  echo "screenshot: $output"
}
shoot 1366x768 1 docs/korvane-generator.png
shoot 1366x768 1 docs/korvane-generator-dark.png --dark
shoot 1920x1080 1.5 docs/korvane-generator@1.5x.png
shoot 1920x1080 2 docs/korvane-generator@2x.png
# An iMac Pro's saved registry: the model it names, and its XHC1 left
# unchecked, whose built-in template writes more than the 15 ports macOS uses.
shown=tests/data/macos/iMacPro1-1/IOReg.txt shoot 1366x768 1 docs/korvane-generator-model.png
# A map made for another Mac opened on this one: the choice differs from the
# registry's own model, and the map's ports not here are counted apart.
shoot 1366x768 1 docs/korvane-generator-budget.png --map docs/example-iMac19-1.korvanemap
# Last: the window remembers the map's target model for the next start.
shoot 1366x768 1 docs/korvane-generator-map.png --map docs/example-MacBookPro15-2.korvanemap

# Map by plugging needs devices that arrive: the window test drives a hotplug
# source of its own and takes the picture while a socket's name is typed.
cmake --build "$build" --target korvane_ui_tests
KORVANE_PLUGGING_PICTURE="$PWD/docs/korvane-generator-plugging.png" QT_QPA_PLATFORM=xcb \
  xvfb-run --auto-servernum --server-args="-screen 0 1366x768x24" \
  "$build/bin/korvane_ui_tests" --gtest_filter='PluggingPanelTest.*'
echo "screenshot: docs/korvane-generator-plugging.png"
