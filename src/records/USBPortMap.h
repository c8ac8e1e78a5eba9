#pragma once

#include "records/Connector.h"
#include "records/PortNumber.h"
#include "records/PortPlace.h"

#include <cstdint>
#include <optional>
#include <string>

namespace korvane {

// One port of one controller, as a scan saw it.
struct USBPortMap {
    std::string name;     // without any "@..." part
    std::string location; // the port node's location, or the controller's for table ports
    std::int64_t connector = 0;
    ByteBuffer portData;
    std::string comment;
    std::string activeDevice; // non-empty makes the port count as active
    ConnectorSource connectorSource = ConnectorSource::inferred;
    std::optional<PortPlace> place{}; // where the socket is, when the firmware says
    // The port key (usbPortStableID) of the other half of its connector: the
    // SuperSpeed port of a USB 2 port or the other way round, possibly on
    // another controller. Empty when the registry names none.
    std::string companionKey{};

    // Identity of a row within one controller's list: name|location|hex(portData).
    std::string stableID() const;

    bool operator==(const USBPortMap&) const = default;
};

} // namespace korvane
