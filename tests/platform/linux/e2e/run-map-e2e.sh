#!/usr/bin/env bash
# Map by plugging in a real kernel under QEMU: `korvane map` runs with the
# socket names on its standard input while plug-sockets.steps plugs devices
# into the emulated controller's root ports one after another.
# Usage: run-map-e2e.sh KORVANE HARNESS_DIR CACHE_DIR
# Fails, naming what is missing, when QEMU, a kernel image, the harness or
# Python isn't there: a run that checks nothing must not pass. One VM run,
# bounded by E2E_VM_TIMEOUT seconds (150: a boot and six plugs, slow on two
# busy cores).
set -uo pipefail

korvane=$1 harness=$2 cache=$3
limit=${E2E_VM_TIMEOUT:-150}
here=$(cd "$(dirname "$0")" && pwd)
source "$here/vm-prerequisites.sh" "$harness" "$cache"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

timeout -k 5 $((limit + 15)) "$harness/run-in-vm.sh" --timeout "$limit" --console "$work/console" \
    --devices empty --hotplug "$here/plug-sockets.steps" --file "$korvane:/payload/bin/korvane" \
    --file "$here/map-by-plugging.sh:/payload/bin/map-by-plugging.sh" --out "$work/out" -- \
    bash /payload/bin/map-by-plugging.sh >"$work/stdout" 2>"$work/stderr"
status=$?
if [ "$status" -ne 0 ]; then
    echo "the VM run failed ($status)"
    cat "$work/stdout" "$work/stderr"
    tail -n 25 "$work/console" 2>/dev/null
    exit 1
fi
python3 "$here/check-map.py" "$work/stdout" "$work/out/plugged.korvanemap" ||
    { cat "$work/stdout" "$work/stderr"; exit 1; }
