#!/usr/bin/env bash
# The live Linux sources in a real kernel: `korvane scan --json` on four
# QEMU machines (and again from a `korvane snapshot` of the same tree), a
# `korvane generate` on the fourth, and `korvane watch --json --save-map`
# across a plug and an unplug. The third machine has ACPI port nodes of our
# own (firmware-ports.asl) and acpiexec: it is scanned a third time with
# acpiexec out of reach, as a machine without acpica-tools.
# Usage: run-e2e.sh KORVANE HARNESS_DIR CACHE_DIR
# Exits 77 (skipped) when QEMU, the harness or acpica-tools isn't installed.
set -uo pipefail

korvane=$1 harness=$2 cache=$3
here=$(cd "$(dirname "$0")" && pwd)
acpiexec=$(command -v acpiexec || true)
if ! command -v qemu-system-x86_64 >/dev/null || [ ! -x "$harness/run-in-vm.sh" ] ||
   ! ls /boot/vmlinuz-* >/dev/null 2>&1 || [ -z "$acpiexec" ] || ! command -v iasl >/dev/null; then
    echo "skipped: QEMU, a kernel image, the qemu-usb harness or acpica-tools is missing"
    exit 77
fi
mkdir -p "$cache"
export QEMU_USB_CACHE=$cache
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

iasl -p "$work/firmware-ports" "$here/firmware-ports.asl" >/dev/null || { echo "iasl failed"; exit 1; }

failed=0
for preset in basic dual firmware; do
    args=(--devices "$preset") extra=""
    if [ "$preset" = firmware ]; then
        args=(--devices basic --qemu-arg -acpitable --qemu-arg "file=$work/firmware-ports.aml"
              --file "$acpiexec:/payload/bin/acpiexec")
        # Without acpiexec on PATH or in /usr/bin.
        extra='&& PATH=/bin /payload/bin/korvane scan --json'
    fi
    if ! "$harness/run-in-vm.sh" "${args[@]}" --file "$korvane:/payload/bin/korvane" -- \
        sh -c "korvane scan --json && korvane snapshot -o /tmp/tree.plist >/dev/null &&
               korvane scan --json --registry /tmp/tree.plist $extra" >"$work/$preset.json" 2>"$work/$preset.err"; then
        echo "$preset: the VM run failed"; cat "$work/$preset.err"; failed=1; continue
    fi
    python3 "$here/check-scan.py" "$preset" "$work/$preset.json" "$work/$preset.err" || failed=1
done

# Two identical controllers behind two PCIe root ports, a device on each, on
# firmware that says it is an iMac19,1 (",," is QEMU's escaped comma). The
# package is made with the stand-in tools beside the program.
tools=$(dirname "$korvane")/../libexec/korvane-generator
twin=(--qemu-arg -smbios --qemu-arg "type=1,product=iMac19,,1")
for n in 1 2; do
    twin+=(--qemu-arg -device --qemu-arg "pcie-root-port,id=rp$n,chassis=$n,addr=0x$((5 + n))"
           --qemu-arg -device --qemu-arg "qemu-xhci,id=x$n,bus=rp$n")
done
twin+=(--qemu-arg -device --qemu-arg usb-kbd,bus=x1.0,port=1 --qemu-arg -device --qemu-arg usb-tablet,bus=x2.0,port=2)
if "$harness/run-in-vm.sh" --devices none "${twin[@]}" --file "$korvane:/payload/bin/korvane" \
    --file "$tools/ditto:/payload/libexec/korvane-generator/ditto" \
    --file "$tools/plutil:/payload/libexec/korvane-generator/plutil" --out "$work/twin" -- \
    sh -c 'korvane scan --json && korvane snapshot -o /tmp/tree.plist >/dev/null &&
           korvane scan --json --registry /tmp/tree.plist && HOME=/out korvane generate >/out/generate.txt' \
    >"$work/twin.json" 2>"$work/twin.err"; then
    python3 "$here/check-scan.py" twin "$work/twin.json" "$work/twin/Desktop/Korvane.zip" "$work/twin.err" ||
        { cat "$work/twin.err"; failed=1; }
else
    echo "twin: the VM run failed"; cat "$work/twin.err" "$work/twin/generate.txt" 2>/dev/null; failed=1
fi

# SIGTERM ends the watch cleanly, so everything it printed arrives. The map
# it saves after each refresh comes back through /out.
"$harness/run-in-vm.sh" --devices empty --hotplug "$here/plug-keyboard.steps" \
    --file "$korvane:/payload/bin/korvane" --out "$work/out" -- \
    timeout -s TERM 14 korvane watch --json --save-map /out/session.korvanemap \
    >"$work/watch.json" 2>"$work/watch.err"
status=$?
# 124 and 143 are timeout's own ways of saying it ended the watch.
if [ "$status" -ne 0 ] && [ "$status" -ne 143 ] && [ "$status" -ne 124 ]; then
    echo "watch: the VM run failed ($status)"; cat "$work/watch.err"; failed=1
fi
python3 "$here/check-scan.py" watch "$work/watch.json" || { cat "$work/watch.err"; failed=1; }
python3 "$here/check-scan.py" map "$work/out/session.korvanemap" || { cat "$work/watch.err"; failed=1; }
exit $failed
