#pragma once

#include "ids/IDsDatabaseManager.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace korvane {

class IDsDatabaseText;

// Names for PCI and USB vendor/device pairs from pci.ids and usb.ids. Never
// fails: a missing database gives empty names. Safe to call from any thread.
// The program makes one for the process, over this machine's folders, in its
// composition root; tests make their own over folders of theirs.
class IDsNameResolver {
  public:
    // Reads both databases at once (reload()).
    explicit IDsNameResolver(IDsDatabaseLocations locations);

    IDsNameResolver(const IDsNameResolver&) = delete;
    IDsNameResolver& operator=(const IDsNameResolver&) = delete;

    // Reads both databases anew and empties both caches.
    void reload();

    std::string pciName(std::int64_t vendorID, std::int64_t deviceID);
    std::string usbName(std::int64_t vendorID, std::int64_t deviceID);
    // A controller's name: the PCI database's, else the USB database's (some
    // controllers are listed only there).
    std::string pciOrUSBName(std::int64_t vendorID, std::int64_t deviceID);

    const IDsDatabaseLocations& locations() const { return locations_; }

  private:
    using Cache = std::unordered_map<std::string, std::string>;

    std::string name(std::shared_ptr<const IDsDatabaseText> IDsNameResolver::*text,
                     Cache IDsNameResolver::*cache, std::int64_t vendorID, std::int64_t deviceID);

    IDsDatabaseLocations locations_;
    // lock_ guards the four below. It is never held while a file is read or a
    // text searched: a search works on its own reference to the text.
    std::mutex lock_;
    std::shared_ptr<const IDsDatabaseText> pciText_;
    std::shared_ptr<const IDsDatabaseText> usbText_;
    Cache pciCache_;
    Cache usbCache_;
};

} // namespace korvane
