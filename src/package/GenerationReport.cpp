#include "package/GenerationReport.h"

#include "base/Text.h"
#include "package/PersonalityNames.h"
#include "package/PortsToWrite.h"
#include "records/PCIIdentityText.h"

#include <array>

namespace korvane {

namespace {

// The preface around the three lines that say where the controllers came from.
constexpr std::array<std::string_view, 2> prefaceHead = {
    "Korvane.kext generated automatically.",
    "Format: native dynamic AppleUSBHostMergeProperties / IOProviderMergeProperties.",
};
constexpr std::array<std::string_view, 5> prefaceTail = {
    "USB controller personalities also include IOPCIPauseCompatible and IOPCITunnelCompatible for better "
    "wake/tunnel stability on modern Intel/TB controllers.",
    "Controller discovery is USB-controller PCI class + AppleUSBXHCI* based; IONameMatch is the discovered "
    "name, "
    "not a hardcoded TXHC/XHCI assumption.",
    "The 15-port macOS limit is not enforced by this generator.",
    "Each port contains exactly: UsbConnector, name, port, usb-port-number, usb-port-type.",
    "",
};

bool hasFirmwareConnectors(const std::vector<USBControllerMap>& controllers) {
    for (const auto& controller : controllers) {
        for (const auto& port : controller.ports) {
            if (port.connectorSource == ConnectorSource::firmware) {
                return true;
            }
        }
    }
    return false;
}

// Lines 3 to 5: what was read, for the source it was read from.
std::array<std::string, 3> sourceLines(const ScanSource& source, bool isFromFirmware) {
    switch (source.kind) {
    case ScanSource::Kind::savedRegistry:
        return {
            "Includes only dynamic AppleUSBXHCIPCI support personalities for USB controller PCI IDs found in "
            "the saved registry.",
            "Primary source: " + scanSourceText(source) +
                ", read from the file; the registry of the machine that ran this generator was not used.",
            "No static controller database is injected; every support match is generated from the USB "
            "controller PCI IDs found in the saved registry.",
        };
    case ScanSource::Kind::linuxSysfs:
        return {
            "Includes only dynamic AppleUSBXHCIPCI support personalities for USB controller PCI IDs detected "
            "on this machine.",
            std::string("Primary source: this machine's Linux sysfs (PCI devices and USB root hubs), read "
                        "under Linux; ") +
                (isFromFirmware ? "connector types came from the firmware's ACPI _UPC objects."
                                : "connector types did not come from the firmware: they are the kernel's "
                                  "or inferred, so check them."),
            "No static controller database is injected; every support match is generated from this "
            "machine's detected USB controller PCI IDs.",
        };
    case ScanSource::Kind::liveMac:
        break;
    }
    return {
        "Includes only dynamic AppleUSBXHCIPCI support personalities for USB controller PCI IDs detected on "
        "this machine.",
        "Primary source: native IOKit IORegistry scan, the same live registry layer used by macOS tools. No "
        "saved .ioreg is used.",
        "No static controller database is injected; every support match is generated from this machine's "
        "detected USB controller PCI IDs.",
    };
}

std::string pciID(const USBControllerMap& controller) {
    return vendorDeviceText(controller.vendorID, controller.deviceID);
}

std::string portsLine(const PortsToWrite& toWrite) {
    if (toWrite.ports.empty()) {
        return "  Ports: 0 - support personality only; no usable USB port tree or fallback template was "
               "available "
               "during collection.";
    }
    std::string line = "  Ports: " + std::to_string(toWrite.ports.size());
    if (toWrite.isFromTemplate()) {
        line += " generated from internal controller template fallback.";
    }
    return line;
}

std::string portLine(const USBPortMap& port) {
    std::string line = "  " + port.name + "@" + port.location + "  port=" + hexString(port.portData) +
                       "  UsbConnector=" + std::to_string(port.connector);
    if (!port.activeDevice.empty()) {
        line += " active=" + port.activeDevice;
    }
    return line;
}

void appendBlock(const USBControllerMap& controller, std::vector<std::string>& lines) {
    lines.push_back("Controller: " + controller.name + "@" + controller.location);
    lines.push_back("  PCI ID: " + pciID(controller));
    lines.push_back("  Provider Class: " + controller.providerClass);
    lines.push_back("  Match: IONameMatch=" + controller.name +
                    " IOPCIPrimaryMatch=" + primaryMatch(controller));
    const PortsToWrite toWrite = portsToWrite(controller);
    lines.push_back(portsLine(toWrite));
    for (const auto& port : toWrite.ports) {
        lines.push_back(portLine(port));
    }
    lines.emplace_back();
}

} // namespace

std::string generationReportText(const std::vector<USBControllerMap>& controllers, const ScanSource& source) {
    std::vector<std::string> lines(prefaceHead.begin(), prefaceHead.end());
    for (auto& line : sourceLines(source, hasFirmwareConnectors(controllers))) {
        lines.push_back(std::move(line));
    }
    lines.insert(lines.end(), prefaceTail.begin(), prefaceTail.end());
    for (const auto& controller : controllers) {
        appendBlock(controller, lines);
    }
    return joined(lines, "\n");
}

std::string emptyGenerationReportText(const ScanSource& source) {
    std::string reason;
    std::string read;
    switch (source.kind) {
    case ScanSource::Kind::savedRegistry:
        reason = "Reason: no USB XHCI controllers or ports were found in the " + scanSourceText(source) + ".";
        read = "USB generation read that file only, not the registry of the machine that ran this generator.";
        break;
    case ScanSource::Kind::linuxSysfs:
        reason = "Reason: no USB XHCI controllers or ports were found in this machine's Linux sysfs.";
        read = "USB generation read the PCI devices and USB root hubs the Linux kernel shows, and no saved "
               "file.";
        break;
    case ScanSource::Kind::liveMac:
        reason = "Reason: no USB XHCI controllers or ports were found through the native IOKit scanner.";
        read =
            "The app does not call the host /usr/sbin/ioreg command. USB generation uses live IOKit data and "
            "does not use a saved .ioreg file.";
        break;
    }
    return "Korvane.kext was not generated.\n" + reason + "\n" + read +
           "\nThe ZIP was completed without USB configuration data.";
}

} // namespace korvane
