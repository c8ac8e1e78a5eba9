// Refreshing the two ids databases from their public repositories.

#include "collector/CollectorModel.h"
#include "records/CollectorError.h"

namespace korvane {

void CollectorModel::updateIDsDatabases() {
    if (isRunning_ || isScanningUSB_ || isUpdatingIDs_) {
        return;
    }
    isUpdatingIDs_ = true;
    lastIDsUpdateResult_.reset();
    hasFailedIDsUpdate_ = false;
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
    bool hasFailed = false;
    auto attempt = [this, &hasFailed](const std::string& name, const std::string& address) -> std::string {
        try {
            updateDatabase(name, address, environment_.idsSources.fetch, environment_.idsLocations);
            return name + " updated";
        } catch (...) {
            hasFailed = true;
            return name + " update failed: " + errorDescription(std::current_exception());
        }
    };
    const std::string pciNote = attempt("pci.ids", environment_.idsSources.pciAddress);
    const std::string usbNote = attempt("usb.ids", environment_.idsSources.usbAddress);
    environment_.names.reload();
    onMain([&] {
        const std::string result = pciNote + " | " + usbNote;
        append(result);
        lastIDsUpdateResult_ = result;
        hasFailedIDsUpdate_ = hasFailed;
    });
    runUSBScanForEditing(false, true);
    onMain([this] {
        isUpdatingIDs_ = false;
        changed();
    });
}

} // namespace korvane
