#!/usr/bin/env bash
# The command line end to end: a real dump scanned, a package generated on a
# Desktop of the test's own, bad arguments refused.
set -euo pipefail
korvane=$1
data=$2

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME=$home XDG_CONFIG_HOME=$home/.config XDG_DATA_HOME=$home/.local/share
mkdir -p "$home/Desktop"
fail() { echo "FAIL: $*"; exit 1; }

dump=$data/macos/iMac19-1/IOReg.txt

# Scan: the FaceTime camera on HS13 is the one active port.
json=$("$korvane" scan --registry "$dump" --json)
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
assert active[0]["portKey"] == "8086:a36d|XHC1|14|HS13|0d000000"
PY

# Generate with one more port checked and its connector changed.
key='8086:a36d|XHC1|14|SS02|12000000'
"$korvane" generate --registry "$dump" --port "$key" --connector "$key=10" > "$home/out.txt" \
  || fail "generate: $(cat "$home/out.txt")"
grep -q "Generating Korvane.kext with 2 enabled port(s)..." "$home/out.txt" || fail "port count line"
tail -n 1 "$home/out.txt" | grep -qx "$home/Desktop/Korvane.zip" || fail "ZIP path"
entries=$(unzip -Z1 "$home/Desktop/Korvane.zip" | grep -v '/$' | sort | tr '\n' ' ')
[ "$entries" = "KorvaneGenerator_Work/Korvane-report.txt KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist KorvaneGenerator_Work/KorvaneGenerator-log.txt " ] \
  || fail "ZIP entries: $entries"
[ ! -e "$home/Desktop/KorvaneGenerator_Work" ] || fail "work folder left behind"
# --select comes first, whatever the order of the options: none, then the one port.
"$korvane" generate --registry "$dump" --port "$key" --select none > "$home/one.txt" || fail "generate one port"
grep -q "Generating Korvane.kext with 1 enabled port(s)..." "$home/one.txt" || fail "--select after --port"

# A registry without controllers: the ZIP holds the report alone. (The live
# road is run in a real kernel, under QEMU, never on the machine under test.)
"$korvane" generate --registry "$data/macos/hackintosh-CML/ioreg_IOUSB-plane.txt" > "$home/none.txt" \
  || fail "generate without controllers"
unzip -p "$home/Desktop/Korvane.zip" KorvaneGenerator_Work/Korvane-report.txt > "$home/report.txt"
[ -s "$home/report.txt" ] || fail "empty report"
! unzip -Z1 "$home/Desktop/Korvane.zip" | grep -q 'Korvane.kext' || fail "a package without controllers"

# A run that fails: the Desktop is a plain file.
rm -rf "$home/Desktop" && echo x > "$home/Desktop"
if "$korvane" generate --registry "$dump" > "$home/fail.txt"; then fail "generate on a file Desktop succeeded"; fi
grep -q "ERROR: Not a directory" "$home/fail.txt" || fail "no ERROR line: $(cat "$home/fail.txt")"

# Bad arguments: status 2 with one reason.
set +e
"$korvane" scan --registry "$home/missing" 2>/dev/null; [ $? -eq 2 ] || fail "missing registry file"
echo "not a registry" > "$home/junk.txt"
"$korvane" scan --registry "$home/junk.txt" 2>/dev/null; [ $? -eq 2 ] || fail "junk registry file"
"$korvane" generate --select some 2>/dev/null; [ $? -eq 2 ] || fail "bad --select"
"$korvane" generate --registry "$dump" --connector "$key=USB3" >/dev/null 2>&1; [ $? -eq 2 ] || fail "bad code"
"$korvane" frobnicate 2>/dev/null; [ $? -eq 2 ] || fail "unknown command"
set -e

# Snapshot round trip: the snapshot scans like the dump it came from.
"$korvane" snapshot --registry "$dump" -o "$home/snap.plist" >/dev/null
[ "$("$korvane" scan --registry "$home/snap.plist" --json)" = "$json" ] || fail "snapshot scans differently"
echo "cli end to end: OK"
