#!/usr/bin/env python3
"""Checks `korvane scan --json` (or each line of `korvane watch --json`)
from a VM against the ports the preset's QEMU arguments put there. A scan
file holds the live scan and the scan of its snapshot.

Usage: check-scan.py PRESET FILE
PRESET is basic, dual or firmware for a scan, or watch for the hotplug run.
The firmware file holds a third scan, made without acpiexec, and its notice."""
import json
import sys

# (vendor, device): [(port name, controller port number, attached device)]
# in scan order. QEMU's xHCI numbers its USB 3 ports first, and a live kernel
# tells the real numbers through debugfs or, with the firmware machine's SSDT, _ADR.
QEMU_XHCI = (0x1B36, 0x000D)
NEC = (0x1033, 0x0194)


def qemu_ports(devices):
    names = ["SS01", "SS02", "SS03", "SS04", "HS01", "HS02", "HS03", "HS04"]
    return [(name, i + 1, devices.get(name, "")) for i, name in enumerate(names)]


EXPECTED = {
    "basic": {QEMU_XHCI: qemu_ports({"SS04": "QEMU USB HARDDRIVE", "HS01": "QEMU USB Keyboard",
                                     "HS02": "QEMU USB Tablet", "HS03": "QEMU USB Hub"})},
    "firmware": {QEMU_XHCI: qemu_ports({"SS04": "QEMU USB HARDDRIVE", "HS01": "QEMU USB Keyboard",
                                        "HS02": "QEMU USB Tablet", "HS03": "QEMU USB Hub"})},
    "dual": {
        QEMU_XHCI: qemu_ports({"SS03": "QEMU USB HARDDRIVE", "HS01": "QEMU USB Keyboard"}),
        # nec-usb-xhci p2=6 p3=2: USB 3 ports 1-2, USB 2 ports 3-8.
        NEC: [("SS01", 1, ""), ("SS02", 2, "QEMU USB HARDDRIVE"), ("HS01", 3, "QEMU USB Tablet"),
              ("HS02", 4, ""), ("HS03", 5, ""), ("HS04", 6, ""), ("HS05", 7, "QEMU USB Hub"),
              ("HS06", 8, "QEMU USB HARDDRIVE")],
    },
}
# firmware-ports.asl: port -> (connector, its source, the place as text) with
# acpiexec, and without it, where the kernel's connect_type and peers decide.
FIRMWARE_TYPES = {
    "SS01": (3, "firmware", "back panel, left"), "SS02": (10, "firmware", "right panel, upper"),
    "SS03": (9, "firmware", "front panel, right"), "SS04": (3, "kernel", "top panel, lower left, in the lid"),
    "HS01": (3, "firmware", "back panel, left"), "HS02": (255, "firmware", ""),
    "HS03": (0, "firmware", "front panel, right"), "HS04": (3, "inferred", "bottom panel, center, on the dock"),
}
KERNEL_TYPES = dict(FIRMWARE_TYPES, SS01=(3, "kernel", "back panel, left"),
                    SS02=(3, "kernel", "right panel, upper"), SS03=(3, "kernel", "front panel, right"),
                    HS01=(3, "peer", "back panel, left"), HS02=(255, "kernel", ""),
                    HS03=(3, "peer", "front panel, right"))
NOTICE = "install acpica-tools (sudo apt install acpica-tools)"
# Preset empty with a keyboard plugged into port 1 and pulled again: the
# first scan, one refresh with the keyboard, one without it.
WATCH = [qemu_ports({}), qemu_ports({"HS01": "QEMU USB Keyboard"}), qemu_ports({})]


def ports_of(scan, identity):
    for controller in scan["controllers"]:
        if (controller["vendorID"], controller["deviceID"]) == identity:
            return [(p["name"], int.from_bytes(bytes.fromhex(p["portData"]), "little"), p["activeDevice"])
                    for p in controller["ports"]]
    return None


def types_of(scan):
    for controller in scan["controllers"]:
        if (controller["vendorID"], controller["deviceID"]) == QEMU_XHCI:
            return {p["name"]: (p["connector"], p["connectorSource"], (p["place"] or {}).get("text", ""))
                    for p in controller["ports"]}
    return None


def compare(label, got, want):
    if got != want:
        print(f"{label}:\n  got  {got}\n  want {want}")
        return False
    return True


def main():
    preset, path = sys.argv[1], sys.argv[2]
    lines = [line for line in open(path, encoding="utf-8").read().splitlines() if line.startswith("{")]
    ok = True
    if preset == "watch":
        ok = compare("refresh count", len(lines), len(WATCH))
        for i, (line, want) in enumerate(zip(lines, WATCH)):
            ok &= compare(f"refresh {i}", ports_of(json.loads(line), QEMU_XHCI), want)
    else:
        # The live scan, then the scan of its snapshot, which must not differ.
        ok = compare("JSON objects", len(lines), 3 if preset == "firmware" else 2)
        ok &= compare("snapshot scan", lines[1:2], lines[0:1])
        if preset == "firmware" and len(lines) == 3:
            ok &= compare("types from the firmware", types_of(json.loads(lines[0])), FIRMWARE_TYPES)
            ok &= compare("types without acpiexec", types_of(json.loads(lines[2])), KERNEL_TYPES)
            ok &= compare("notices", open(path, encoding="utf-8").read().count(NOTICE), 1)
        scan = json.loads(lines[0]) if lines else {"controllers": []}
        ok &= compare("controllers", len(scan["controllers"]), len(EXPECTED[preset]))
        for identity, want in EXPECTED[preset].items():
            ok &= compare(f"{identity[0]:04x}:{identity[1]:04x}", ports_of(scan, identity), want)
    print(f"{preset}: {'ok' if ok else 'FAILED'}")
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
