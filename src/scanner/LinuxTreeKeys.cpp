#include "scanner/LinuxTreeKeys.h"

namespace korvane {

bool isKeptBySnapshot(std::string_view key) {
    return key != linuxTreeKey::scanNotices;
}

ConnectorSource statedConnectorSource(const std::optional<PropertyValue>& named) {
    if (!named) {
        return ConnectorSource::registry;
    }
    const auto source = named->text() ? connectorSourceNamed(*named->text()) : std::nullopt;
    if (!source || *source == ConnectorSource::user) {
        return ConnectorSource::inferred;
    }
    return *source;
}

} // namespace korvane
