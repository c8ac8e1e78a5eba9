"""Checks what `korvane map` printed and saved in the plugging VM run
(plug-sockets.steps): socket "rear" is root port 1's two halves, socket "C"
root ports 2 and 3 joined by name and typed Type-C (10), socket "D" root
port 4 turned over and typed Type-C with a switch (9).
Usage: check-map.py STDOUT MAPFILE"""
import json
import sys


def compare(what, got, want):
    if got != want:
        print(f"map by plugging: {what}: got {got!r}, want {want!r}")
        return False
    return True


def main():
    out = open(sys.argv[1], encoding="utf-8").read().splitlines()
    ok = compare("a line beginning with 'Plug '", any(line.startswith("Plug ") for line in out), True)
    ok &= compare("'Seen: ' lines", sum(line.startswith("Seen: ") for line in out), 6)
    try:
        ports = json.load(open(sys.argv[2], encoding="utf-8"))["ports"]
    except (OSError, ValueError, KeyError) as error:
        print(f"map by plugging: no map file ({error})")
        return 1
    sockets = {}
    for key, port in ports.items():
        if "socket" in port:
            name = port.get("nickname", "")
            sockets.setdefault(name, {})[key.split("|")[3]] = (
                port["selected"], port.get("connector"), "seen" in port)
    # The halves no device landed on are checked with their socket, unseen.
    ok &= compare("socket rear", sockets.get("rear"),
                  {"HS01": (True, None, True), "SS01": (True, None, True)})
    ok &= compare("socket C", sockets.get("C"),
                  {"HS02": (True, 10, False), "SS02": (True, 10, True),
                   "HS03": (True, 10, False), "SS03": (True, 10, True)})
    ok &= compare("socket D", sockets.get("D"), {"HS04": (True, 9, False), "SS04": (True, 9, True)})
    ok &= compare("sockets", sorted(sockets), ["C", "D", "rear"])
    print(f"map by plugging: {'ok' if ok else 'FAILED'}")
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
