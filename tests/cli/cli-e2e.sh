#!/usr/bin/env bash
# The command line end to end: a real dump scanned, a package generated on a
# Desktop of the test's own, bad arguments refused, results alone on standard
# output; and the window's program refusing the same way without a display.
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

# The merge personalities of the ZIP's package as "name model port:connector ...".
merges() {
  unzip -p "$home/Desktop/Korvane.zip" KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist | python3 -c '
import plistlib, sys
for name, p in sorted(plistlib.loads(sys.stdin.buffer.read())["IOKitPersonalities"].items()):
    if "IOProviderMergeProperties" in p:
        ports = p["IOProviderMergeProperties"]["ports"]
        print(name, p["model"], *sorted(k + ":" + str(v["UsbConnector"]) for k, v in ports.items()))'
}

# Scan: the FaceTime camera on HS13 is the one active port; HS03 pairs with SS03.
json=$("$korvane" scan --registry "$dump" --json 2>/dev/null)
python3 - "$json" <<'PY' || fail "scan --json"
import json, sys
doc = json.loads(sys.argv[1])
ctrls = doc["controllers"]
assert [c["name"] for c in ctrls] == ["XHC2", "XHC1"], ctrls
xhc1 = ctrls[1]
assert (xhc1["vendorID"], xhc1["deviceID"]) == (0x8086, 0xa36d)
active = [p for p in xhc1["ports"] if p["selected"]]
assert [p["name"] for p in active] == ["HS13"], active
assert active[0]["activeDevice"] == "FaceTime HD Camera (Built-in)"
assert active[0]["portKey"] == "8086:a36d|XHC1|14000000|HS13|0d000000"
assert active[0]["companion"] is None
ports = {p["name"]: p for p in xhc1["ports"]}
assert ports["HS03"]["companion"] == ports["SS03"]["portKey"], ports["HS03"]
assert ports["HS05"]["companion"] == ctrls[0]["ports"][0]["portKey"], ports["HS05"]
PY
"$korvane" scan --registry "$dump" | grep -Eq "HS05 +port 05000000 +with XHC2 SSP1 +Type-C\+Sw +registry " ||
  fail "companion, connector and source columns"

# The table says what a run would write for each controller.
"$korvane" scan --registry "$dump" 2>/dev/null > "$home/table.txt"
grep -qx "  Generate writes: support personality only" "$home/table.txt" || fail "XHC2's line: $(cat "$home/table.txt")"
grep -qx "  Generate writes: 1 port checked" "$home/table.txt" || fail "XHC1's line"

# Generate for an iMac19,1 with both halves of HS03 checked and typed at once:
# the log and the notes on standard error, the ZIP's path alone on standard output.
key='8086:a36d|XHC1|14000000|HS03|03000000'
"$korvane" generate --registry "$dump" --model iMac19,1 --port "$key" --connector "$key=10" --with-companion \
  > "$home/out.txt" 2> "$home/err.txt" || fail "generate: $(cat "$home/err.txt")"
grep -q "Generating Korvane.kext with 3 enabled port(s)..." "$home/err.txt" || fail "port count line"
grep -qx "  XHC1 8086:A36D: 3 ports checked" "$home/err.txt" || fail "what the package will hold: $(cat "$home/err.txt")"
[ "$(cat "$home/out.txt")" = "$home/Desktop/Korvane.zip" ] || fail "standard output: $(cat "$home/out.txt")"
! grep -qi "alsa\|pulse" "$home/err.txt" || fail "sound-system noise"
! grep -q "^korvane: " "$home/err.txt" || fail "warnings for a named model: $(grep "^korvane: " "$home/err.txt")"
[ "$(merges)" = "iMac19,1-XHC1 iMac19,1 HS03:10 HS13:255 SS03:10" ] || fail "merge personalities: $(merges)"
entries=$(unzip -Z1 "$home/Desktop/Korvane.zip" | grep -v '/$' | sort | tr '\n' ' ')
[ "$entries" = "KorvaneGenerator_Work/INSTALL.txt KorvaneGenerator_Work/Korvane-report.txt KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist KorvaneGenerator_Work/KorvaneGenerator-log.txt " ] \
  || fail "ZIP entries: $entries"
tail -n 1 "$home/err.txt" | grep -q "] Open Korvane.zip and read INSTALL.txt: how to install the map and what it holds.$" \
  || fail "the last line points elsewhere: $(tail -n 1 "$home/err.txt")"
unzip -p "$home/Desktop/Korvane.zip" KorvaneGenerator_Work/Korvane-report.txt \
  | grep -qx "Primary source: saved registry IOReg.txt (ioreg text), read from the file; the registry of the machine that ran this generator was not used." \
  || fail "the report's source line"
! unzip -p "$home/Desktop/Korvane.zip" KorvaneGenerator_Work/KorvaneGenerator-log.txt | grep -q "$home" \
  || fail "the log names the home folder"
[ ! -e "$home/Desktop/KorvaneGenerator_Work" ] || fail "work folder left behind"
# --select comes first, whatever the order of the options: none, then the one port.
"$korvane" generate --registry "$dump" --port "$key" --select none >"$home/one.txt" 2>&1 || fail "generate one port"
grep -q "Generating Korvane.kext with 1 enabled port(s)..." "$home/one.txt" || fail "--select after --port"

# Without --model this machine names no Mac: the package says "Mac" and the
# command says so; one half checked alone is offered its companion.
"$korvane" generate --registry "$dump" --port "$key" > "$home/out.txt" 2> "$home/err.txt" || fail "generate"
[ "$(merges)" = "Mac-XHC1 Mac HS03:3 HS13:255" ] || fail "fallback model: $(merges)"
grep -q -- "--model MODEL" "$home/err.txt" || fail "no fallback warning: $(cat "$home/err.txt")"
grep -q "HS03 is checked and its companion SS03 is not" "$home/err.txt" || fail "no companion offer"

# Two controllers named XHC with different PCI IDs: both merge personalities stay.
"$korvane" generate --registry "$data/macos/hackintosh-CML/ioreg_ioservice.txt" --model Macmini8,1 \
  > "$home/out.txt" 2> "$home/err.txt" || fail "generate hackintosh"
merges | cut -d' ' -f1-2 | tr '\n' ' ' | grep -qx "Macmini8,1-XHC Macmini8,1 Macmini8,1-XHC 8086_15E9 " \
  || fail "hackintosh merges: $(merges)"
grep -q "merge personality is named Macmini8,1-XHC 8086_15E9" "$home/err.txt" || fail "no rename note"

# A mapping session: the model, a checked port, its connector and a socket's
# name saved with the run, then the package made again from the map alone.
cam='8086:a36d|XHC1|14000000|HS13|0d000000'
ss02='8086:a36d|XHC1|14000000|SS02|12000000'
"$korvane" generate --registry "$dump" --model iMac19,1 --port "$ss02" --connector "$ss02=10" --nickname "$cam=camera, inside" \
  --save-map "$home/s.korvanemap" >/dev/null 2>&1 || fail "generate --save-map"
unzip -p "$home/Desktop/Korvane.zip" KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist > "$home/first.plist"
"$korvane" generate --registry "$dump" --map "$home/s.korvanemap" >/dev/null 2>&1 || fail "generate --map"
unzip -p "$home/Desktop/Korvane.zip" KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist \
  | cmp -s - "$home/first.plist" || fail "the map's package differs"
# A model of another shape is kept, and said, wherever it came from.
sed 's/"iMac19,1"/"My Mac"/' "$home/s.korvanemap" > "$home/odd.korvanemap"
"$korvane" generate --registry "$dump" --map "$home/odd.korvanemap" >/dev/null 2> "$home/err.txt" || fail "generate odd map"
grep -q "My Mac.* isn't shaped like a Mac model" "$home/err.txt" || fail "no shape warning: $(cat "$home/err.txt")"
python3 - "$("$korvane" scan --registry "$dump" --map "$home/s.korvanemap" --json 2>/dev/null)" \
  "$("$korvane" scan --registry "$dump" --import-kext "$home/Desktop/Korvane.zip" --json 2>/dev/null)" <<'PY' \
  || fail "scan --map and --import-kext"
import json, sys
nicknames = []
for doc in map(json.loads, sys.argv[1:]):
    ports = {p["name"]: p for c in doc["controllers"] for p in c["ports"]}
    assert [n for n, p in ports.items() if p["selected"]] == ["HS13", "SS02"], ports
    assert ports["SS02"]["connector"] == 10 and doc["notMatched"] == [], doc["notMatched"]
    nicknames.append(ports["HS13"]["nickname"])
assert nicknames == ["camera, inside", ""], nicknames
PY
"$korvane" scan --registry "$data/macos/MacBookPro15-2/IOReg.txt" --map "$home/s.korvanemap" 2>/dev/null \
  | grep -qx "Not on this machine (2):" || fail "mismatches of another machine"

# A registry without controllers: the run fails with the reason and the ZIP
# of the run before stays as it was. (The live road is run in a real kernel,
# under QEMU, never on the machine under test.)
cp "$home/Desktop/Korvane.zip" "$home/before.zip"
if "$korvane" generate --registry "$data/macos/hackintosh-CML/ioreg_IOUSB-plane.txt" > "$home/none.txt" \
  2> "$home/none-err.txt"; then fail "generate without controllers succeeded"; fi
grep -q "ERROR: No USB controller found: nothing to map. No USB controller in .*it looks like an ioreg text dump of the IOUSB plane" \
  "$home/none-err.txt" || fail "no word on why nothing matched: $(cat "$home/none-err.txt")"
cmp -s "$home/before.zip" "$home/Desktop/Korvane.zip" || fail "the earlier ZIP was touched"
[ ! -e "$home/Desktop/KorvaneGenerator_Work" ] || fail "work folder left behind by a failed run"

# A run that fails: the Desktop is a plain file.
rm -rf "$home/Desktop" && echo x > "$home/Desktop"
if "$korvane" generate --registry "$dump" 2> "$home/fail.txt"; then fail "generate on a file Desktop succeeded"; fi
grep -q "ERROR: $home/Desktop/KorvaneGenerator_Work: Not a directory" "$home/fail.txt" \
  || fail "no ERROR line naming the path: $(cat "$home/fail.txt")"
rm "$home/Desktop" && mkdir "$home/Desktop"

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
bad_registries() { # PROGRAM [COMMAND]
  refused "no such file" "$@" --registry "$home/missing"
  refused "not a saved registry" "$@" --registry "$home/junk.txt"
  refused "is a folder" "$@" --registry "$home"
  refused "is not a regular file" "$@" --registry /dev/null
  refused "an IORegistryExplorer archive (.ioreg)" "$@" --registry "$data/macos/iMac14-2/IORegistryExplorer.ioreg"
  head -c 800 "$data/savedregistry/ioreg-a-shape.xml" > "$home/cut.xml"
  refused "damaged (cut short?)" "$@" --registry "$home/cut.xml"
}
bad_registries "$korvane" scan
refused "unknown command 'frobnicate'" "$korvane" frobnicate
refused "unknown option '--bogus'" "$korvane" --bogus
refused "not expected: stray" "$korvane" scan stray
refused "select" "$korvane" generate --select some
refused "0 to 255" "$korvane" generate --registry "$dump" --connector "$key=256"
refused "0 to 255" "$korvane" generate --registry "$dump" --connector "$key=USB3"
if [ -n "$window" ]; then
  bad_registries "$window"
  refused "Unknown option 'bogus'" "$window" --bogus
  refused "unexpected argument 'stray'" "$window" stray
  env -u DISPLAY -u WAYLAND_DISPLAY "$window" --help | grep -q -- "--registry" || fail "window --help"
  env -u DISPLAY -u WAYLAND_DISPLAY "$window" --version | grep -q "^korvane-generator " || fail "window --version"
fi
"$korvane" generate --registry "$dump" --connector "$key=42" > /dev/null 2>&1 || fail "a code the menu doesn't name"

# Maps and packages that can't serve: refused, and no file written over.
refused "is not a KorvaneGenerator port map" "$korvane" scan --registry "$dump" --map "$home/junk.txt"
refused "is not a readable property list" "$korvane" scan --registry "$dump" --import-kext "$home/junk.txt"
refused "expected KEY=TEXT" "$korvane" scan --registry "$dump" --nickname "$cam"
refused "excludes" "$korvane" generate --map "$home/s.korvanemap" --select all
refused "the file exists" "$korvane" scan --registry "$dump" --save-map "$home/junk.txt"
[ "$(cat "$home/junk.txt")" = "not a registry" ] || fail "a file written over"
if "$korvane" scan --registry "$dump" --save-map "$home/junk.txt/below" >/dev/null 2>&1; then fail "saved below a file"; fi

# Watching a saved registry shows it once and says why it ends.
"$korvane" watch --registry "$dump" > "$home/watch.txt" 2> "$home/watch-err.txt" || fail "watch"
grep -q "never changes" "$home/watch-err.txt" || fail "watch's word: $(cat "$home/watch-err.txt")"
grep -qx "  Generate writes: 1 port checked" "$home/watch.txt" || fail "watch's table"

# Snapshot round trip: the snapshot scans like the dump it came from, with
# the serial number, the platform UUID, the Ethernet MAC address (stored as
# bytes, so base64 here) and the console user masked unless --raw is given.
secrets='OPnTlKjE\|C02Y862SJV3N\|67C622D3-7510-5F2A-81D0-2A874FC0E6B8\|"kiosk"\|>kiosk<'
[ "$("$korvane" snapshot --registry "$dump" -o "$home/snap.plist" 2>/dev/null)" = "$home/snap.plist" ] \
  || fail "snapshot's output"
untimed() { sed -E 's/"lastSeen":"[^"]*"//g'; }
[ "$("$korvane" scan --registry "$home/snap.plist" --json 2>/dev/null | untimed)" = "$(untimed <<<"$json")" ] \
  || fail "snapshot scans differently"
! grep -q "$secrets" "$home/snap.plist" || fail "snapshot leaks: $(grep -o "$secrets" "$home/snap.plist" | head -3)"
"$korvane" snapshot --raw --registry "$dump" -o "$home/raw.plist" >/dev/null 2>&1
grep -q "C02Y862SJV3N" "$home/raw.plist" || fail "--raw masked the serial number"
grep -q "OPnTlKjE" "$home/raw.plist" || fail "--raw masked the MAC address"
grep -q ">kiosk<" "$home/raw.plist" || fail "--raw masked the console user"
echo "cli end to end: OK"
