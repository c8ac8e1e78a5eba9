#!/bin/bash
# Inside the VM: `korvane map` with the socket names written ahead on its
# standard input, as a script would; input ends once the last socket has
# been told, which ends the session. The map goes to /out.
set -o pipefail
out=/tmp/map.out
: >"$out"
{
    printf 'rear\nC\nC\nD\nD\n'
    until grep -q 'Same socket as "D"' "$out"; do sleep 0.2; done
} | korvane map --save-map /out/plugged.korvanemap | tee "$out"
