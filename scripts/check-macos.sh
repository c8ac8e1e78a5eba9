#!/usr/bin/env bash
# Compiles every file a macOS build compiles (the macOS sources, the shared
# code, the tests and the benchmarks) with clang's Apple arm64 target, and the
# macOS sources for x86_64 too, syntax only, with the project's warnings as
# errors. Apple's SDK is
# not on a Linux machine: the Apple calls come from the small declaration
# surface in scripts/macos-surface, the C and C++ libraries and the third-party
# headers from this machine's Debian packages. See "On a Mac" in README.md for
# what this can and cannot catch.
#
#   scripts/check-macos.sh [BUILD_DIR]
#
# BUILD_DIR (build/dev) gives each shared file its include paths and
# definitions through its compile_commands.json; it is configured first when
# it has none.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:-build/dev}
if [[ ! -f "${build}/compile_commands.json" ]]; then
  cmake --preset dev >/dev/null
fi

# The oldest macOS the project supports: the "macos" preset's deployment target.
release=$(python3 -c 'import json,sys
presets = json.load(open("CMakePresets.json"))["configurePresets"]
print(next(p for p in presets if p["name"] == "macos")["cacheVariables"]["CMAKE_OSX_DEPLOYMENT_TARGET"])')

commands=$(mktemp)
trap 'rm -f "${commands}"' EXIT
python3 scripts/macos-compile-commands.py "${build}/compile_commands.json" scripts/macos-surface \
  "arm64-apple-macos${release}" "x86_64-apple-macos${release}" >"${commands}"

count=$(grep -c . "${commands}")
echo "==> macOS compile check: ${count} compiles (arm64; the macOS files for x86_64 too; macOS ${release})"
# Each line is one compile; xargs runs them side by side and fails if any does.
if ! tr '\n' '\0' <"${commands}" | xargs -0 -P "$(nproc)" -n 1 bash -c; then
  echo "macOS compile check failed: see the errors above" >&2
  exit 1
fi
