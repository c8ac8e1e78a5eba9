#!/usr/bin/env python3
"""Checks `korvane scan --json` (or each line of `korvane watch --json`)
from a VM against the ports the preset's QEMU arguments put there. A scan
file holds the live scan and the scan of its snapshot.

Usage: check-scan.py PRESET FILE [ZIP STDERR | STDERR]
PRESET is basic, dual or firmware for a scan, watch for the hotplug run, or
twin for the two like controllers on iMac19,1 firmware, whose `korvane
generate` left ZIP and wrote STDERR. The firmware file holds a third scan,
made without acpiexec, whose notice must be in the run's STDERR once."""
import json
import plistlib
import sys
import zipfile

# (vendor, device): for each controller of that ID in scan order, its
# [(port name, controller port number, attached device, companion's name)].
# QEMU's xHCI numbers its USB 3 ports first, and a live kernel tells the real
# numbers through debugfs or, with the firmware machine's SSDT, _ADR; the
# kernel's peer links pair HSn with SSn.
QEMU_XHCI = (0x1B36, 0x000D)
NEC = (0x1033, 0x0194)
PAIRED = {f"{a}0{n}": f"{b}0{n}" for n in range(1, 5) for a, b in (("HS", "SS"), ("SS", "HS"))}


def qemu_ports(devices, unpaired=()):
    names = ["SS01", "SS02", "SS03", "SS04", "HS01", "HS02", "HS03", "HS04"]
    return [(name, i + 1, devices.get(name, ""), None if name in unpaired else PAIRED[name])
            for i, name in enumerate(names)]


BASIC = {"SS04": "QEMU USB HARDDRIVE", "HS01": "QEMU USB Keyboard", "HS02": "QEMU USB Tablet",
         "HS03": "QEMU USB Hub"}
EXPECTED = {
    "basic": {QEMU_XHCI: [qemu_ports(BASIC)]},
    # The basic machine with firmware-ports.asl, whose _PLD groups pair only ports 1 and 3.
    "firmware": {QEMU_XHCI: [qemu_ports(BASIC, unpaired=("SS02", "SS04", "HS02", "HS04"))]},
    "dual": {
        QEMU_XHCI: [qemu_ports({"SS03": "QEMU USB HARDDRIVE", "HS01": "QEMU USB Keyboard"})],
        # nec-usb-xhci p2=6 p3=2: USB 3 ports 1-2, USB 2 ports 3-8, of which 3-6 have no peer.
        NEC: [[("SS01", 1, "", "HS01"), ("SS02", 2, "QEMU USB HARDDRIVE", "HS02"),
               ("HS01", 3, "QEMU USB Tablet", "SS01"), ("HS02", 4, "", "SS02"), ("HS03", 5, "", None),
               ("HS04", 6, "", None), ("HS05", 7, "QEMU USB Hub", None), ("HS06", 8, "QEMU USB HARDDRIVE", None)]],
    },
    # Two qemu-xhci behind two PCIe root ports, both device 0 on their bus:
    # two controllers, locations 00000000 and 01000000, each with its device.
    "twin": {QEMU_XHCI: [qemu_ports({"HS01": "QEMU USB Keyboard"}), qemu_ports({"HS02": "QEMU USB Tablet"})]},
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
WATCH = [[qemu_ports({})], [qemu_ports({"HS01": "QEMU USB Keyboard"})], [qemu_ports({})]]


def ports_of(scan, identity):
    keys = {p["portKey"]: p["name"] for c in scan["controllers"] for p in c["ports"]}
    return [[(p["name"], int.from_bytes(bytes.fromhex(p["portData"]), "little"), p["activeDevice"],
              keys.get(p["companion"]) if p["companion"] else None) for p in controller["ports"]]
            for controller in scan["controllers"] if (controller["vendorID"], controller["deviceID"]) == identity]


def check_twin_package(zip_path, stderr_path):
    """One merge personality for the two (macOS can't tell them apart), named
    and modelled for the firmware's iMac19,1, and a word on stderr about it."""
    with zipfile.ZipFile(zip_path) as archive:
        plist = plistlib.loads(archive.read("KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist"))
    merges = {name: p["model"] for name, p in plist["IOKitPersonalities"].items()
              if "IOProviderMergeProperties" in p}
    stderr = open(stderr_path, encoding="utf-8").read()
    ok = compare("merge personalities", list(merges.values()), ["iMac19,1"])
    ok &= compare("merge name", all(name.startswith("iMac19,1-") for name in merges), True)
    ok &= compare("note on stderr", "which macOS can't tell apart" in stderr, True)
    return ok & compare("no fallback warning", "--model" in stderr, False)


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
            # Told once, on standard error, and only by the scan without acpiexec.
            ok &= compare("notices on stderr", open(sys.argv[3], encoding="utf-8").read().count(NOTICE), 1)
            ok &= compare("notices on stdout", open(path, encoding="utf-8").read().count(NOTICE), 0)
        scan = json.loads(lines[0]) if lines else {"controllers": []}
        ok &= compare("controllers", len(scan["controllers"]), sum(map(len, EXPECTED[preset].values())))
        for identity, want in EXPECTED[preset].items():
            ok &= compare(f"{identity[0]:04x}:{identity[1]:04x}", ports_of(scan, identity), want)
        if preset == "twin":
            ok &= compare("locations", [c["location"] for c in scan["controllers"]], ["00000000", "01000000"])
            ok &= check_twin_package(sys.argv[3], sys.argv[4])
    print(f"{preset}: {'ok' if ok else 'FAILED'}")
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
