#include "package/GenerationReport.h"

#include "package/PersonalityNames.h"
#include "package/PortsToWrite.h"
#include "records/PCIIdentityText.h"
#include "records/Text.h"

#include <array>

namespace korvane {

const std::string_view emptyGenerationReportText =
    "Korvane.kext was not generated.\n"
    "Reason: no USB XHCI controllers or ports were found through the native IOKit scanner.\n"
    "The app does not call the host /usr/sbin/ioreg command. USB generation uses live IOKit data and does "
    "not "
    "use a saved .ioreg file.\n"
    "The ZIP was completed without USB configuration data.";

namespace {

constexpr std::array<std::string_view, 10> preface = {
    "Korvane.kext generated automatically.",
    "Format: native dynamic AppleUSBHostMergeProperties / IOProviderMergeProperties.",
    "Includes only dynamic AppleUSBXHCIPCI support personalities for USB controller PCI IDs detected on this "
    "machine.",
    "Primary source: native IOKit IORegistry scan, the same live registry layer used by macOS tools. No "
    "saved "
    ".ioreg is used.",
    "No static controller database is injected; every support match is generated from this machine's "
    "detected "
    "USB controller PCI IDs.",
    "USB controller personalities also include IOPCIPauseCompatible and IOPCITunnelCompatible for better "
    "wake/tunnel stability on modern Intel/TB controllers.",
    "Controller discovery is USB-controller PCI class + AppleUSBXHCI* based; IONameMatch is the discovered "
    "name, "
    "not a hardcoded TXHC/XHCI assumption.",
    "The 15-port macOS limit is not enforced by this generator.",
    "Each port contains exactly: UsbConnector, name, port, usb-port-number, usb-port-type.",
    "",
};

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

std::string generationReportText(const std::vector<USBControllerMap>& controllers) {
    std::vector<std::string> lines(preface.begin(), preface.end());
    for (const auto& controller : controllers) {
        appendBlock(controller, lines);
    }
    return joined(lines, "\n");
}

} // namespace korvane
