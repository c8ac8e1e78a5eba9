#include "package/MergePersonalityNames.h"

#include "package/PersonalityNames.h"
#include "package/PortsToWrite.h"
#include "records/PCIIdentityText.h"

#include <cinttypes>
#include <map>

namespace korvane {

namespace {

// "XHC@00000000 (8086:15E9)": enough to tell two like-named controllers apart.
std::string controllerLabel(const USBControllerMap& controller) {
    std::string label = controller.displayName();
    if (!controller.location.empty()) {
        label += "@" + controller.location;
    }
    return label + " (" + upperVendorDeviceText(controller.vendorID, controller.deviceID) + ")";
}

} // namespace

std::vector<MergePersonalitySlot> mergePersonalitySlots(const std::vector<USBControllerMap>& controllers,
                                                        std::string_view machineModel) {
    std::vector<MergePersonalitySlot> slots;
    std::map<std::string, std::size_t> holders; // name -> controller whose entry it is
    for (std::size_t i = 0; i < controllers.size(); ++i) {
        const USBControllerMap& controller = controllers[i];
        if (!hasPCIIdentity(controller) || portsToWrite(controller).ports.empty()) {
            continue;
        }
        MergePersonalitySlot slot{i, mergePersonalityName(controller, machineModel), false, std::nullopt};
        auto holder = holders.find(slot.name);
        if (holder != holders.end() &&
            primaryMatch(controllers[holder->second]) != primaryMatch(controller)) {
            slot.name += " " + pairText("%04" PRIX64 "_%04" PRIX64, controller.vendorID, controller.deviceID);
            slot.isRenamed = true;
            holder = holders.find(slot.name);
        }
        if (holder != holders.end()) {
            slot.replacedController = holder->second;
        }
        holders[slot.name] = i;
        slots.push_back(std::move(slot));
    }
    return slots;
}

std::vector<std::string> mergePersonalityNotes(const std::vector<USBControllerMap>& controllers,
                                               std::string_view machineModel) {
    std::vector<std::string> notes;
    for (const auto& slot : mergePersonalitySlots(controllers, machineModel)) {
        const std::string label = controllerLabel(controllers[slot.controller]);
        if (slot.replacedController) {
            notes.push_back(label + " has the name and PCI ID of " +
                            controllerLabel(controllers[*slot.replacedController]) +
                            ", which macOS can't tell apart: the package keeps one merge personality, " +
                            slot.name + ", with the ports of " + label + ".");
        } else if (slot.isRenamed) {
            notes.push_back(label + " shares its name with a controller of another PCI ID: its merge " +
                            "personality is named " + slot.name + " so that both are kept.");
        }
    }
    return notes;
}

} // namespace korvane
