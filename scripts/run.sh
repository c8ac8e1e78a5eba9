#!/usr/bin/env bash
# Sets up a fresh Debian machine, builds the release and runs the main job.
# On a desktop (DISPLAY or WAYLAND_DISPLAY set) that is the window, where you
# check the ports and press Generate; elsewhere the command line scans this
# machine's USB controllers and writes Korvane.zip on the Desktop.
# Arguments go to the command line program instead (korvane --help).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release

if [ $# -eq 0 ]; then
  if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -x build/release/bin/korvane-generator ]; then
    exec build/release/bin/korvane-generator
  fi
  set -- generate
fi
exec build/release/bin/korvane "$@"
