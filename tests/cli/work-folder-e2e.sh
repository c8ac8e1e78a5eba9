#!/usr/bin/env bash
# The Desktop's work folder from the outside: a folder of the user's own by
# that name is never removed, and runs started at once on one Desktop, each
# its own process, all end well.
set -euo pipefail
korvane=$1
dump=$2

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME=$home XDG_CONFIG_HOME=$home/.config XDG_DATA_HOME=$home/.local/share XDG_RUNTIME_DIR=$home/run
mkdir -p "$home/Desktop/KorvaneGenerator_Work"
fail() { echo "FAIL: $*"; exit 1; }

echo "my notes" > "$home/Desktop/KorvaneGenerator_Work/notes.txt"
if "$korvane" generate --registry "$dump" > "$home/refused.txt" 2>&1; then fail "ran over the user's folder"; fi
grep -qx "\[[0-9:]*\] ERROR: $home/Desktop/KorvaneGenerator_Work was not made by KorvaneGenerator and is left as it is. Move it away from the Desktop or rename it, then generate again." \
  "$home/refused.txt" || fail "no clear ERROR line: $(cat "$home/refused.txt")"
[ "$(cat "$home/Desktop/KorvaneGenerator_Work/notes.txt")" = "my notes" ] || fail "the user's file is gone"
mv "$home/Desktop/KorvaneGenerator_Work" "$home/moved"

# A folder where the ZIP goes is the user's too.
mkdir -p "$home/Desktop/Korvane.zip" && echo "my photo" > "$home/Desktop/Korvane.zip/photo.txt"
if "$korvane" generate --registry "$dump" > "$home/refused.txt" 2>&1; then fail "ran over the user's Korvane.zip folder"; fi
grep -q "ERROR: $home/Desktop/Korvane.zip is a folder, not a ZIP of an earlier run" "$home/refused.txt" \
  || fail "no ERROR line naming the folder: $(cat "$home/refused.txt")"
[ "$(cat "$home/Desktop/Korvane.zip/photo.txt")" = "my photo" ] || fail "the user's folder was touched"
[ ! -e "$home/Desktop/KorvaneGenerator_Work" ] || fail "a refused run left its work folder"
mv "$home/Desktop/Korvane.zip" "$home/moved-zip"

pids=()
for run in 1 2 3 4; do
  "$korvane" generate --registry "$dump" > "$home/run$run.txt" 2>&1 &
  pids+=($!)
done
for run in 1 2 3 4; do
  wait "${pids[$((run - 1))]}" || fail "run $run: $(cat "$home/run$run.txt")"
  grep -q "ZIP created successfully" "$home/run$run.txt" || fail "run $run made no ZIP"
done
entries=$(unzip -Z1 "$home/Desktop/Korvane.zip" | grep -v '/$' | sort | tr '\n' ' ')
[ "$entries" = "KorvaneGenerator_Work/INSTALL.txt KorvaneGenerator_Work/Korvane-report.txt KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist KorvaneGenerator_Work/KorvaneGenerator-log.txt " ] \
  || fail "ZIP entries: $entries"
[ "$(ls -A "$home/Desktop")" = "Korvane.zip" ] || fail "left on the Desktop: $(ls -A "$home/Desktop")"
echo "work folder end to end: OK"
