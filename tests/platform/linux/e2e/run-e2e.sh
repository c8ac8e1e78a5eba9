#!/usr/bin/env bash
# The live Linux sources in a real kernel: `korvane scan --json` on four
# QEMU machines (and again from a `korvane snapshot` of the same tree), a
# `korvane generate` on the fourth, and `korvane watch --json --save-map`
# across a plug and an unplug. The third machine has ACPI port nodes of our
# own (firmware-ports.asl) and acpiexec: it is scanned a third time with
# acpiexec out of reach, as a machine without acpica-tools.
# Usage: run-e2e.sh KORVANE HARNESS_DIR CACHE_DIR
# Fails, naming what is missing, when QEMU, a kernel image, the harness,
# acpica-tools or Python isn't there: a run that checks nothing must not pass.
#
# Bounded so that a guest that never comes back (a /dev/kvm that exists but
# hangs, as in a VM inside a VM) fails the test in minutes: each VM run gets
# E2E_VM_TIMEOUT seconds (90; a run takes about 10, and 40 on two cores busy
# with builds), the whole test E2E_TOTAL_TIMEOUT (360), and after a run hangs
# no further one starts, since it would hang the same way. A hung run is
# named, with its console's tail.
set -uo pipefail

korvane=$1 harness=$2 cache=$3
vmTimeout=${E2E_VM_TIMEOUT:-90}
deadline=$((SECONDS + ${E2E_TOTAL_TIMEOUT:-360}))
here=$(cd "$(dirname "$0")" && pwd)
acpiexec=$(command -v acpiexec || true)
acpiexec_missing=()
[ -n "$acpiexec" ] && command -v iasl >/dev/null || acpiexec_missing+=("acpiexec and iasl (acpica-tools)")
source "$here/vm-prerequisites.sh" "$harness" "$cache" "${acpiexec_missing[@]}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

failed=0 hung=""
# vm NAME RUN-IN-VM-ARGS...: one VM run, its stdout in $work/NAME.out and its
# stderr in $work/NAME.err; returns the command's status, or 200 when the run
# hung or no time was left for it.
vm() {
    local name=$1; shift
    local left=$((deadline - SECONDS)) limit=$vmTimeout
    if [ -n "$hung" ] || [ "$left" -le 15 ]; then
        if [ -n "$hung" ]; then
            echo "$name: not run: the VM run \"$hung\" hung, and this one would too"
        else
            echo "$name: not run: the test is out of time"
        fi
        return 200
    fi
    [ "$left" -lt $((limit + 15)) ] && limit=$((left - 15))
    # The harness stops qemu at its --timeout (and 10 s later kills it); the
    # outer timeout catches a harness that hangs itself.
    local started=$SECONDS
    timeout -k 5 $((limit + 15)) bash "$harness/run-in-vm.sh" --timeout "$limit" --console "$work/$name.console" \
        "$@" >"$work/$name.out" 2>"$work/$name.err"
    local status=$?
    # The harness's 124 can't be told from a command's own by the status.
    if grep -q "^run-in-vm.sh: no result from the VM" "$work/$name.err" ||
       [ $((SECONDS - started)) -ge $((limit + 15)) ]; then
        hung=$name
        echo "$name: the VM run hung: no result within $limit s (status $status). Console tail:"
        tail -n 25 "$work/$name.console" 2>/dev/null || echo "(no console saved)"
        echo "Harness output tail:"
        tail -n 15 "$work/$name.err"
        return 200
    fi
    return "$status"
}

# A run that ended with a status of its own other than 0 prints its error output.
ranWell() {
    local name=$1 status=$2
    [ "$status" -eq 0 ] && return 0
    [ "$status" -ne 200 ] && { echo "$name: the VM run failed ($status)"; cat "$work/$name.err"; }
    failed=1
    return 1
}

iasl -p "$work/firmware-ports" "$here/firmware-ports.asl" >/dev/null || { echo "iasl failed"; exit 1; }

for preset in basic dual firmware; do
    args=(--devices "$preset") extra=""
    if [ "$preset" = firmware ]; then
        args=(--devices basic --qemu-arg -acpitable --qemu-arg "file=$work/firmware-ports.aml"
              --file "$acpiexec:/payload/bin/acpiexec")
        # Without acpiexec on PATH or in /usr/bin.
        extra='&& PATH=/bin /payload/bin/korvane scan --json'
    fi
    vm "$preset" "${args[@]}" --file "$korvane:/payload/bin/korvane" -- \
        sh -c "korvane scan --json && korvane snapshot -o /tmp/tree.plist >/dev/null &&
               korvane scan --json --registry /tmp/tree.plist $extra"
    ranWell "$preset" $? || continue
    python3 "$here/check-scan.py" "$preset" "$work/$preset.out" "$work/$preset.err" || failed=1
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
vm twin --devices none "${twin[@]}" --file "$korvane:/payload/bin/korvane" \
    --file "$tools/ditto:/payload/libexec/korvane-generator/ditto" \
    --file "$tools/plutil:/payload/libexec/korvane-generator/plutil" --out "$work/twin" -- \
    sh -c 'korvane scan --json && korvane snapshot -o /tmp/tree.plist >/dev/null &&
           korvane scan --json --registry /tmp/tree.plist && HOME=/out korvane generate >/out/generate.txt'
if ranWell twin $?; then
    python3 "$here/check-scan.py" twin "$work/twin.out" "$work/twin/Desktop/Korvane.zip" "$work/twin.err" ||
        { cat "$work/twin.err"; failed=1; }
else
    cat "$work/twin/generate.txt" 2>/dev/null
fi

# SIGTERM ends the watch cleanly, so everything it printed arrives. The map
# it saves after each refresh comes back through /out.
vm watch --devices empty --hotplug "$here/plug-keyboard.steps" \
    --file "$korvane:/payload/bin/korvane" --out "$work/out" -- \
    timeout -s TERM 14 korvane watch --json --save-map /out/session.korvanemap
status=$?
# 124 and 143 are timeout's own ways of saying it ended the watch.
[ "$status" -eq 143 ] || [ "$status" -eq 124 ] && status=0
if ranWell watch "$status" && ! python3 "$here/check-scan.py" watch "$work/watch.out"; then
    cat "$work/watch.err"; failed=1
fi
if [ "$status" -eq 0 ] && ! python3 "$here/check-scan.py" map "$work/out/session.korvanemap"; then
    cat "$work/watch.err"; failed=1
fi
exit $failed
