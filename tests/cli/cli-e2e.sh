#!/usr/bin/env bash
# The programs as processes: korvane's results alone on the process's standard
# output and its status, a package generated on a Desktop of the test's own;
# the window's program refusing bad arguments without a display. What the
# commands print and refuse is tested in-process (CommandLineTest).
set -euo pipefail
korvane=$1
data=$2
window=${3:-}

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME=$home XDG_CONFIG_HOME=$home/.config XDG_DATA_HOME=$home/.local/share
mkdir -p "$home/Desktop"
fail() { echo "FAIL: $*"; exit 1; }

dump=$data/macos/iMac19-1/IOReg.txt

# The log on standard error, the ZIP's path alone on standard output, and no
# word from a sound system.
"$korvane" generate --registry "$dump" --model iMac19,1 > "$home/out.txt" 2> "$home/err.txt" \
  || fail "generate: $(cat "$home/err.txt")"
[ "$(cat "$home/out.txt")" = "$home/Desktop/Korvane.zip" ] || fail "standard output: $(cat "$home/out.txt")"
grep -q "Generating Korvane.kext with 1 enabled port(s)..." "$home/err.txt" || fail "no log: $(cat "$home/err.txt")"
! grep -qi "alsa\|pulse" "$home/err.txt" || fail "sound-system noise"
entries=$(unzip -Z1 "$home/Desktop/Korvane.zip" | grep -v '/$' | sort | tr '\n' ' ')
[ "$entries" = "KorvaneGenerator_Work/Korvane-report.txt KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist KorvaneGenerator_Work/KorvaneGenerator-log.txt " ] \
  || fail "ZIP entries: $entries"
[ ! -e "$home/Desktop/KorvaneGenerator_Work" ] || fail "work folder left behind"
"$korvane" scan --registry "$dump" --json 2>/dev/null | python3 -c 'import json, sys; json.load(sys.stdin)' \
  || fail "scan --json is no JSON document"

# Bad arguments: status 2 and a line that names what was wrong, for both
# programs; the window's needs no display for that, nor for --help.
echo "not a registry" > "$home/junk.txt"
refused() { # WORDS PROGRAM ARGUMENTS...
  local words=$1
  shift
  set +e
  env -u DISPLAY -u WAYLAND_DISPLAY "$@" > /dev/null 2> "$home/refused.txt"
  local status=$?
  set -e
  [ $status -eq 2 ] || fail "$* exited $status"
  grep -q -- "$words" "$home/refused.txt" || fail "$*: $(cat "$home/refused.txt")"
}
refused "unknown command 'frobnicate'" "$korvane" frobnicate
refused "not a saved registry" "$korvane" scan --registry "$home/junk.txt"
"$korvane" --version | grep -q "^[0-9]" || fail "korvane --version"
if [ -n "$window" ]; then
  refused "no such file" "$window" --registry "$home/missing"
  refused "not a saved registry" "$window" --registry "$home/junk.txt"
  refused "is a folder" "$window" --registry "$home"
  refused "Unknown option 'bogus'" "$window" --bogus
  refused "unexpected argument 'stray'" "$window" stray
  env -u DISPLAY -u WAYLAND_DISPLAY "$window" --help | grep -q -- "--registry" || fail "window --help"
  env -u DISPLAY -u WAYLAND_DISPLAY "$window" --version | grep -q "^korvane-generator " || fail "window --version"
fi
echo "cli end to end: OK"
