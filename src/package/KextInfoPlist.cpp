#include "package/KextInfoPlist.h"

#include "package/MergePersonalityNames.h"
#include "package/PackageConstants.h"
#include "package/PersonalityNames.h"
#include "package/PortsToWrite.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>

namespace korvane {

namespace {

// One power budget for every controller, in mA and mV: the writer knows
// nothing of how a port is wired, so it can't tailor it.
constexpr std::uint64_t portCurrentLimit = 2100;
constexpr std::uint64_t powerSupply = 5100;
constexpr std::uint64_t supportProbeScore = 900;
constexpr std::uint64_t mergeProbeScore = 5000;

void setString(plist_t dict, const char* key, std::string_view value) {
    plist_dict_set_item(dict, key, plist_new_string(std::string(value).c_str()));
}

void setInteger(plist_t dict, const char* key, std::int64_t value) {
    // libplist keeps 64-bit integers as two's complement and writes them signed.
    plist_dict_set_item(dict, key, plist_new_uint(static_cast<std::uint64_t>(value)));
}

void setBool(plist_t dict, const char* key, bool value) {
    plist_dict_set_item(dict, key, plist_new_bool(value ? 1 : 0));
}

void setData(plist_t dict, const char* key, const ByteBuffer& bytes) {
    plist_dict_set_item(dict, key, plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

plist_t supportPersonality(const USBControllerMap& controller) {
    plist_t personality = plist_new_dict();
    setString(personality, "CFBundleIdentifier", "com.apple.driver.usb.AppleUSBXHCIPCI");
    setString(personality, "IOClass", usbXHCIClassName(controller));
    setString(personality, "IOPCIPrimaryMatch", primaryMatch(controller));
    setBool(personality, "IOPCIPauseCompatible", true);
    setBool(personality, "IOPCITunnelCompatible", true);
    setInteger(personality, "IOProbeScore", supportProbeScore);
    setString(personality, "IOProviderClass", "IOPCIDevice");
    setString(personality, "model", supportPersonalityModel(controller));
    return personality;
}

plist_t portDictionary(const USBPortMap& port) {
    plist_t entry = plist_new_dict();
    setInteger(entry, "UsbConnector", port.connector);
    setString(entry, "name", port.name);
    setData(entry, "port", port.portData);
    setData(entry, "usb-port-number", port.portData);
    setInteger(entry, "usb-port-type", port.connector);
    return entry;
}

plist_t mergeProperties(const USBControllerMap& controller, const PortsToWrite& toWrite) {
    plist_t ports = plist_new_dict();
    std::int64_t highest = 0;
    for (const auto& port : toWrite.ports) {
        const std::int64_t number = portNumber(port.portData).value_or(0);
        if (number == 0) {
            continue;
        }
        highest = std::max(highest, number);
        // Ports are in ascending order, so of two equal names the higher
        // number is the one that stays.
        plist_dict_set_item(ports, port.name.c_str(), portDictionary(port));
    }

    std::uint32_t count = 0;
    if (toWrite.templateCount) {
        count = *toWrite.templateCount;
    } else {
        count = static_cast<std::uint32_t>(highest != 0 ? highest
                                                        : static_cast<std::int64_t>(controller.ports.size()));
    }

    plist_t properties = plist_new_dict();
    setInteger(properties, "kUSBSleepPortCurrentLimit", portCurrentLimit);
    setInteger(properties, "kUSBSleepPowerSupply", powerSupply);
    setInteger(properties, "kUSBWakePortCurrentLimit", portCurrentLimit);
    setInteger(properties, "kUSBWakePowerSupply", powerSupply);
    setData(properties, "port-count", portData(count));
    plist_dict_set_item(properties, "ports", ports);
    return properties;
}

plist_t mergePersonality(const USBControllerMap& controller, const PortsToWrite& toWrite,
                         std::string_view machineModel) {
    plist_t personality = plist_new_dict();
    setString(personality, "CFBundleIdentifier", "com.apple.driver.AppleUSBHostMergeProperties");
    setString(personality, "IOClass", "AppleUSBHostMergeProperties");
    setString(personality, "IONameMatch", controller.name);
    setString(personality, "IOPCIPrimaryMatch", primaryMatch(controller));
    setInteger(personality, "IOProbeScore", mergeProbeScore);
    setBool(personality, "IOPCIPauseCompatible", true);
    setBool(personality, "IOPCITunnelCompatible", true);
    setString(personality, "IOProviderClass", "AppleUSBXHCIPCI");
    setString(personality, "model", machineModel);
    plist_dict_set_item(personality, "IOProviderMergeProperties", mergeProperties(controller, toWrite));
    return personality;
}

void addSupportPersonalities(plist_t personalities, const std::vector<USBControllerMap>& controllers) {
    // Controllers with one PCI ID share the first one's personality: the
    // driver matches by ID, so a second entry would only compete with it.
    std::set<std::string> seenMatches;
    for (const auto& controller : controllers) {
        if (!hasPCIIdentity(controller) || !seenMatches.insert(primaryMatch(controller)).second) {
            continue;
        }
        plist_dict_set_item(personalities, supportPersonalityName(controller).c_str(),
                            supportPersonality(controller));
    }
}

void addMergePersonalities(plist_t personalities, const std::vector<USBControllerMap>& controllers,
                           std::string_view machineModel) {
    for (const auto& slot : mergePersonalitySlots(controllers, machineModel)) {
        const USBControllerMap& controller = controllers[slot.controller];
        // A later controller of equal name and PCI ID replaces the earlier entry.
        plist_dict_set_item(personalities, slot.name.c_str(),
                            mergePersonality(controller, portsToWrite(controller), machineModel));
    }
}

} // namespace

PlistPtr makeKextInfoPlist(const std::vector<USBControllerMap>& controllers, std::string_view machineModel) {
    plist_t personalities = plist_new_dict();
    addSupportPersonalities(personalities, controllers);
    addMergePersonalities(personalities, controllers, machineModel);

    PlistPtr root(plist_new_dict());
    plist_t dict = root.get();
    setString(dict, "CFBundleDevelopmentRegion", "English");
    setString(dict, "CFBundleGetInfoString", "1.0 " + std::string(makerLine));
    setString(dict, "CFBundleIdentifier", "com.brindlewick.Korvane");
    setString(dict, "CFBundleInfoDictionaryVersion", "6.0");
    setString(dict, "CFBundleName", "Korvane");
    setString(dict, "CFBundlePackageType", "KEXT");
    setString(dict, "CFBundleShortVersionString", "1.0");
    setString(dict, "CFBundleSignature", "????");
    setString(dict, "CFBundleVersion", "1.0");
    plist_dict_set_item(dict, "IOKitPersonalities", personalities);
    setString(dict, "OSBundleRequired", "Root");
    return root;
}

} // namespace korvane
