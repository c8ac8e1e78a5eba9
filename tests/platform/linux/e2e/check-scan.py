#!/usr/bin/env python3
"""Checks `korvane scan --json` (or each line of `korvane watch --json`)
from a VM against the ports the preset's QEMU arguments put there. A scan
file holds the live scan and the scan of its snapshot.

Usage: check-scan.py PRESET FILE
PRESET is basic, dual or acpi for a scan, watch for the hotplug run, or map
for the map file that run saved."""
import json
import re
import sys

# (vendor, device): [(port name, controller port number, attached device)]
# in scan order. QEMU's xHCI numbers its USB 3 ports first, and a live kernel
# tells the real numbers through debugfs or, with the acpi preset, _ADR.
QEMU_XHCI = (0x1B36, 0x000D)
NEC = (0x1033, 0x0194)


def qemu_ports(devices):
    names = ["SS01", "SS02", "SS03", "SS04", "HS01", "HS02", "HS03", "HS04"]
    return [(name, i + 1, devices.get(name, "")) for i, name in enumerate(names)]


EXPECTED = {
    "basic": {QEMU_XHCI: qemu_ports({"SS04": "QEMU USB HARDDRIVE", "HS01": "QEMU USB Keyboard",
                                     "HS02": "QEMU USB Tablet", "HS03": "QEMU USB Hub"})},
    "acpi": {QEMU_XHCI: qemu_ports({"SS04": "QEMU USB HARDDRIVE", "HS01": "QEMU USB Keyboard",
                                    "HS02": "QEMU USB Tablet", "HS03": "QEMU USB Hub"})},
    "dual": {
        QEMU_XHCI: qemu_ports({"SS03": "QEMU USB HARDDRIVE", "HS01": "QEMU USB Keyboard"}),
        # nec-usb-xhci p2=6 p3=2: USB 3 ports 1-2, USB 2 ports 3-8.
        NEC: [("SS01", 1, ""), ("SS02", 2, "QEMU USB HARDDRIVE"), ("HS01", 3, "QEMU USB Tablet"),
              ("HS02", 4, ""), ("HS03", 5, ""), ("HS04", 6, ""), ("HS05", 7, "QEMU USB Hub"),
              ("HS06", 8, "QEMU USB HARDDRIVE")],
    },
}
# Preset empty with a keyboard plugged into port 1 and pulled again: the
# first scan, one refresh with the keyboard, one without it.
WATCH = [qemu_ports({}), qemu_ports({"HS01": "QEMU USB Keyboard"}), qemu_ports({})]


def ports_of(scan, identity):
    for controller in scan["controllers"]:
        if (controller["vendorID"], controller["deviceID"]) == identity:
            return [(p["name"], int.from_bytes(bytes.fromhex(p["portData"]), "little"), p["activeDevice"])
                    for p in controller["ports"]]
    return None


def compare(label, got, want):
    if got != want:
        print(f"{label}:\n  got  {got}\n  want {want}")
        return False
    return True


def check_map(path):
    """The watch's map: the keyboard's port checked and named by it, though
    the keyboard left before the watch ended; no other port seen."""
    try:
        ports = json.load(open(path, encoding="utf-8"))["ports"]
    except (OSError, ValueError, KeyError) as error:
        print(f"map: no map file ({error})")
        return False
    seen = {key.split("|")[3]: (port["selected"], port.get("seen", {}).get("device"))
            for key, port in ports.items() if "seen" in port}
    return compare("ports seen", seen, {"HS01": (True, "QEMU USB Keyboard")})


def main():
    preset, path = sys.argv[1], sys.argv[2]
    if preset == "map":
        ok = check_map(path)
        print(f"map: {'ok' if ok else 'FAILED'}")
        return 0 if ok else 1
    lines = [line for line in open(path, encoding="utf-8").read().splitlines() if line.startswith("{")]
    ok = True
    if preset == "watch":
        ok = compare("refresh count", len(lines), len(WATCH))
        for i, (line, want) in enumerate(zip(lines, WATCH)):
            ok &= compare(f"refresh {i}", ports_of(json.loads(line), QEMU_XHCI), want)
    else:
        # The live scan, then the scan of its snapshot, which must not differ
        # but in when each device was seen.
        ok = compare("JSON objects", len(lines), 2)
        untimed = [re.sub(r'"lastSeen":"[^"]*"', '', line) for line in lines]
        ok &= compare("snapshot scan", untimed[1:2], untimed[0:1])
        scan = json.loads(lines[0]) if lines else {"controllers": []}
        ok &= compare("controllers", len(scan["controllers"]), len(EXPECTED[preset]))
        for identity, want in EXPECTED[preset].items():
            ok &= compare(f"{identity[0]:04x}:{identity[1]:04x}", ports_of(scan, identity), want)
    print(f"{preset}: {'ok' if ok else 'FAILED'}")
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
