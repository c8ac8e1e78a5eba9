#!/usr/bin/env bash
# Sets up a fresh Debian machine, builds the release and runs the program.
# Arguments go to the command line program; with none it shows where it finds
# its tools and folders.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release

if [ $# -eq 0 ]; then
  set -- paths
fi
exec build/release/bin/korvane "$@"
