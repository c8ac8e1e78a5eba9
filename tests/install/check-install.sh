#!/usr/bin/env bash
# Installs the build into a scratch prefix and checks that the installed
# program finds its tools and resources there, not in the build tree.
set -euo pipefail
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT

cmake --install "$build" --prefix "$prefix" >/dev/null
out=$("$prefix/bin/korvane" paths)
echo "$out"

for label in resources ditto plutil; do
  line=$(grep "^$label:" <<<"$out")
  case "$line" in
    *"$prefix"*) ;;
    *) echo "FAIL: $label is not found below the install prefix: $line"; exit 1 ;;
  esac
  case "$line" in
    *"(missing)"*) echo "FAIL: $label is missing: $line"; exit 1 ;;
  esac
done
echo "installed layout OK"
