#pragma once

#include "records/USBControllerMap.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// Where each controller's merge personality goes in IOKitPersonalities.
// macOS tells merge personalities apart by name, IONameMatch and
// IOPCIPrimaryMatch together, so two controllers of one name but different
// PCI IDs (a chipset's XHC and a Thunderbolt XHC) both need their own entry;
// only where name and PCI ID are both equal could macOS not tell them apart,
// and there the later one replaces the earlier.
struct MergePersonalitySlot {
    std::size_t controller = 0; // index in the list
    std::string name;
    // Its plain name ("{model}-{name}") already held another PCI ID's
    // personality, so " VVVV_DDDD" was appended.
    bool isRenamed = false;
    // The earlier controller, of equal name and PCI ID, whose entry this one
    // replaces.
    std::optional<std::size_t> replacedController;
};

// One slot per controller that gets a merge personality (a PCI ID and ports
// to write, its own or its template's), in list order.
std::vector<MergePersonalitySlot> mergePersonalitySlots(const std::vector<USBControllerMap>& controllers,
                                                        std::string_view machineModel);

// One sentence for each renamed or replaced merge personality, for the fronts
// to show beside a run; the package and its report say nothing of it.
std::vector<std::string> mergePersonalityNotes(const std::vector<USBControllerMap>& controllers,
                                               std::string_view machineModel);

} // namespace korvane
