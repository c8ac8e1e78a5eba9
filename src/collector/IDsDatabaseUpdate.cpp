// Refreshing the two ids databases from their public repositories.

#include "collector/CollectorModel.h"
#include "records/CollectorError.h"

namespace korvane {

namespace {

constexpr std::string_view failedNote = " update failed: ";

} // namespace

bool hasFailedDownload(std::string_view idsUpdateResult) {
    return idsUpdateResult.find(failedNote) != std::string_view::npos;
}

void CollectorModel::updateIDsDatabases() {
    if (isRunning_ || isScanningUSB_ || isUpdatingIDs_) {
        return;
    }
    isUpdatingIDs_ = true;
    lastIDsUpdateResult_.reset();
    changed();
    std::weak_ptr<CollectorModel> weak = weak_from_this();
    environment_.scheduler.runInBackground(Scheduler::Priority::utility, [weak] {
        if (auto model = weak.lock()) {
            model->performIDsDatabaseUpdate();
        }
    });
}

void CollectorModel::performIDsDatabaseUpdate() {
    onMain([this] { append("Updating pci.ids and usb.ids..."); });
    auto attempt = [this](const std::string& name, const std::string& address) -> std::string {
        try {
            updateDatabase(name, address, environment_.idsSources.fetch, environment_.idsLocations);
            return name + " updated";
        } catch (...) {
            return name + std::string(failedNote) + errorDescription(std::current_exception());
        }
    };
    const std::string pciNote = attempt("pci.ids", environment_.idsSources.pciAddress);
    const std::string usbNote = attempt("usb.ids", environment_.idsSources.usbAddress);
    environment_.names.reload();
    onMain([&] {
        const std::string result = pciNote + " | " + usbNote;
        append(result);
        lastIDsUpdateResult_ = result;
    });
    runUSBScanForEditing(true, false, true);
    onMain([this] {
        isUpdatingIDs_ = false;
        changed();
    });
}

} // namespace korvane
