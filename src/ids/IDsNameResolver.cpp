#include "ids/IDsNameResolver.h"

#include "base/FileIO.h"
#include "ids/IDsDatabaseText.h"
#include "records/PCIIdentityText.h"

#include <system_error>
#include <utility>

namespace korvane {

namespace {

// Whatever can't be read counts as no database; the error goes nowhere.
std::shared_ptr<const IDsDatabaseText> readDatabase(const std::string& fileName,
                                                    const IDsDatabaseLocations& locations) {
    std::string bytes;
    if (const auto url = IDsDatabaseManager::localDatabaseURL(fileName, locations)) {
        // Only regular files: a FIFO or a device under that name would block
        // the read or never end.
        std::error_code error;
        const auto status = std::filesystem::status(*url, error);
        if (!error && std::filesystem::is_regular_file(status) &&
            std::filesystem::file_size(*url, error) <= IDsDatabaseText::maximumTextBytes && !error) {
            if (auto contents = readFileBytes(*url)) {
                bytes = std::move(*contents);
            }
        }
    }
    return std::make_shared<const IDsDatabaseText>(bytes);
}

} // namespace

IDsNameResolver::IDsNameResolver(IDsDatabaseLocations locations)
    : locations_(std::move(locations)), pciText_(std::make_shared<const IDsDatabaseText>(std::string_view())),
      usbText_(pciText_) {
    reload();
}

void IDsNameResolver::reload() {
    auto pci = readDatabase("pci.ids", locations_);
    auto usb = readDatabase("usb.ids", locations_);
    std::lock_guard guard(lock_);
    pciText_ = std::move(pci);
    usbText_ = std::move(usb);
    pciCache_.clear();
    usbCache_.clear();
}

std::string IDsNameResolver::pciName(std::int64_t vendorID, std::int64_t deviceID) {
    return name(&IDsNameResolver::pciText_, &IDsNameResolver::pciCache_, vendorID, deviceID);
}

std::string IDsNameResolver::usbName(std::int64_t vendorID, std::int64_t deviceID) {
    return name(&IDsNameResolver::usbText_, &IDsNameResolver::usbCache_, vendorID, deviceID);
}

std::string IDsNameResolver::pciOrUSBName(std::int64_t vendorID, std::int64_t deviceID) {
    std::string found = pciName(vendorID, deviceID);
    return found.empty() ? usbName(vendorID, deviceID) : found;
}

std::string IDsNameResolver::name(std::shared_ptr<const IDsDatabaseText> IDsNameResolver::*text,
                                  Cache IDsNameResolver::*cache, std::int64_t vendorID,
                                  std::int64_t deviceID) {
    std::string key = vendorDeviceText(vendorID, deviceID);
    std::shared_ptr<const IDsDatabaseText> database;
    {
        std::lock_guard guard(lock_);
        const Cache& entries = this->*cache;
        if (const auto found = entries.find(key); found != entries.end()) {
            return found->second;
        }
        database = this->*text;
    }
    // Two threads missing on one key both search; the later store writes the
    // same text again. A search overlapping a reload may store a name from the
    // old text, which stays until the next reload.
    std::string result = database->name(vendorID, deviceID);
    std::lock_guard guard(lock_);
    (this->*cache)[std::move(key)] = result;
    return result;
}

} // namespace korvane
