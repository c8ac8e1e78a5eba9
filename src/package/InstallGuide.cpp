#include "package/InstallGuide.h"

#include "base/Text.h"
#include "package/LegacyUSBPortTemplate.h"
#include "package/PackageConstants.h"
#include "package/PortsToWrite.h"
#include "records/PCIIdentityText.h"
#include "records/PortNumber.h"
#include "records/PortPlace.h"

#include <set>

namespace korvane {

namespace {

void heading(std::vector<std::string>& lines, const std::string& title) {
    lines.emplace_back();
    lines.push_back(title);
    lines.push_back(std::string(title.size(), '-'));
}

std::string connectorText(std::int64_t code) {
    const auto label = connectorMenuLabel(code);
    return label ? std::string(*label) + " (code " + std::to_string(code) + ")"
                 : "code " + std::to_string(code) + " (no name)";
}

std::string budgetText(const InstallGuideController& entry, std::size_t count) {
    const std::string ports = std::to_string(count) + (count == 1 ? " port" : " ports");
    if (!entry.portBudget) {
        return ports;
    }
    const auto budget = *entry.portBudget;
    const auto used = static_cast<std::int64_t>(count);
    std::string text = ports + " of the " + std::to_string(budget) + " macOS uses on this controller";
    if (used > budget) {
        text += ": " + std::to_string(used - budget) + " too many; macOS ignores the ports past " +
                std::to_string(budget) + ", so keep fewer";
    }
    return text;
}

std::string controllerTitle(const USBControllerMap& controller) {
    return controller.displayName() + " (" + vendorDeviceText(controller.vendorID, controller.deviceID) +
           (controller.location.empty() ? "" : ", at " + controller.location) + ")";
}

void appendPort(std::vector<std::string>& lines, const USBPortMap& port, const InstallGuidePort& about) {
    lines.push_back("  " + port.name + ", port " + std::to_string(portNumber(port.portData).value_or(0)) +
                    ": " + connectorText(port.connector) +
                    " (source: " + std::string(connectorSourceName(port.connectorSource)) + ")");
    std::vector<std::string> facts;
    if (!about.nickname.empty()) {
        facts.push_back("name: \"" + about.nickname + "\"");
    }
    if (!about.companion.empty()) {
        facts.push_back("companion: " + about.companion + (about.isCompanionKept ? "" : " (not kept)"));
    }
    if (port.place) {
        facts.push_back("place: " + portPlaceText(*port.place));
    }
    if (!about.lastDevice.empty()) {
        facts.push_back("last device seen: " + about.lastDevice);
    }
    if (!facts.empty()) {
        lines.push_back("      " + joined(facts, "; "));
    }
}

// Why one half of a connector alone is worth a second look.
std::string loneHalfText(const USBControllerMap& controller, const USBPortMap& port,
                         const InstallGuidePort& about) {
    const bool isUSB2Half = uppercased(port.name).starts_with("HS");
    return "  " + controller.displayName() + " " + port.name + " is kept without " + about.companion +
           (isUSB2Half ? ": USB 3 devices in that socket will run at USB 2 speed."
                       : ": USB 2 devices in that socket will not work.");
}

} // namespace

std::string installGuideText(const InstallGuide& guide) {
    std::vector<std::string> lines = {
        "Korvane.kext: what it is and how to install it",
        "==============================================",
        "",
        "This ZIP holds:",
        "  Korvane.kext                a USB port map for macOS: a driver package with no code in it",
        "  " + std::string(reportFileName) + "          the controllers and ports it names, line by line",
        "  KorvaneGenerator-log.txt    the log of the run that made it",
        "  INSTALL.txt                 this guide",
        "KorvaneGenerator made it from " + scanSourceText(guide.source) + ".",
    };

    heading(lines, "The Mac it is for");
    lines.push_back("Target model: " + guide.targetModel + " (" + guide.targetModelOrigin + ").");
    if (guide.isTargetModelAMac) {
        lines.push_back("macOS applies this map only on a Mac whose model (the SMBIOS product name) is " +
                        guide.targetModel + "; on any other model it does nothing.");
    } else {
        lines.push_back("\"" + guide.targetModel +
                        "\" names no Mac, so macOS applies this map nowhere. Generate it again with the "
                        "model of the Mac it is for (the SMBIOS product name, such as iMac19,1).");
    }

    heading(lines, "Controllers and ports");
    std::set<ConnectorSource> sources;
    std::vector<std::string> loneHalves;
    std::vector<std::string> unseen;
    for (const auto& entry : guide.controllers) {
        const USBControllerMap& controller = entry.controller;
        const PortsToWrite toWrite = portsToWrite(controller);
        lines.push_back(controllerTitle(controller) + ": " + budgetText(entry, toWrite.ports.size()));
        if (toWrite.isFromTemplate()) {
            lines.push_back("  No port kept: the map gives it the built-in template's " +
                            std::to_string(toWrite.ports.size()) + " ports.");
            std::vector<std::string> names;
            for (const auto& port : toWrite.ports) {
                names.push_back(port.name);
            }
            unseen.push_back("  " + controller.displayName() + ": " + joined(names, ", "));
        } else if (toWrite.ports.empty()) {
            lines.push_back("  No port kept and no template: the map names no port of it, only the "
                            "controller itself.");
        }
        std::vector<std::string> templateNames;
        for (std::size_t index = 0; index < controller.ports.size(); ++index) {
            const USBPortMap& port = controller.ports[index];
            const InstallGuidePort about =
                index < entry.ports.size() ? entry.ports[index] : InstallGuidePort{};
            appendPort(lines, port, about);
            sources.insert(port.connectorSource);
            if (!about.companion.empty() && !about.isCompanionKept) {
                loneHalves.push_back(loneHalfText(controller, port, about));
            }
            if (port.location == templatePortLocation) {
                templateNames.push_back(port.name);
            }
        }
        if (!templateNames.empty()) {
            unseen.push_back("  " + controller.displayName() + ": " + joined(templateNames, ", "));
        }
        lines.emplace_back();
    }
    if (guide.controllers.empty()) {
        lines.push_back("No controller.");
        lines.emplace_back();
    }
    lines.push_back("Where each connector code came from:");
    for (const auto source : sources) {
        lines.push_back("  " + std::string(connectorSourceName(source)) + ": " +
                        std::string(connectorSourceDescription(source)) + ".");
    }

    if (!loneHalves.empty()) {
        heading(lines, "Ports kept without their companion");
        lines.push_back(
            "A USB 3 socket is two ports, a USB 2 one and a SuperSpeed one; keep both or neither.");
        lines.insert(lines.end(), loneHalves.begin(), loneHalves.end());
    }
    if (!unseen.empty()) {
        heading(lines, "Template ports the scan didn't see");
        lines.push_back("These come from a built-in template, not from this machine: check that each one "
                        "is a socket the Mac has.");
        lines.insert(lines.end(), unseen.begin(), unseen.end());
    }

    heading(lines, "How to install");
    const std::vector<std::string> install = {
        "1. Copy Korvane.kext into your boot loader's kexts folder (OpenCore: EFI/OC/Kexts).",
        "2. Add an entry for it to the boot loader's configuration (OpenCore: config.plist, Kernel > Add):",
        "     BundlePath       Korvane.kext",
        "     PlistPath        Contents/Info.plist",
        "     ExecutablePath   empty: the kext has no executable",
        "     Enabled          true",
        "3. Remove every other USB port map or USB injector kext, with its entry, and any patch that lifts",
        "   the 15-port limit (OpenCore: Kernel > Quirks > XhciPortLimit off): two maps fight over the "
        "ports.",
        "4. Reboot. Then check which ports macOS shows (System Information > USB, or ioreg -p IOUSB):",
        "   plug a device into each socket and see that it appears, at the speed the socket should give.",
    };
    lines.insert(lines.end(), install.begin(), install.end());

    heading(lines, "How to change the map later");
    const std::vector<std::string> later = {
        "Open the map file you saved (File > Open Map..., or korvane generate --map FILE), or import this",
        "ZIP (File > Import Package..., or korvane scan --import-kext Korvane.zip) to start from the map",
        "it holds. Change the ports, generate again, and replace Korvane.kext in the kexts folder with the",
        "new one; the configuration entry stays as it is.",
        "",
    };
    lines.insert(lines.end(), later.begin(), later.end());
    return joined(lines, "\n");
}

} // namespace korvane
