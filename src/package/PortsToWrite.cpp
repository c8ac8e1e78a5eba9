#include "package/PortsToWrite.h"

#include "package/LegacyUSBPortTemplate.h"

#include <algorithm>

namespace korvane {

PortsToWrite portsToWrite(const USBControllerMap& controller) {
    PortsToWrite result;
    if (!controller.ports.empty()) {
        result.ports = controller.ports;
    } else if (const auto key = legacyUSBPortTemplateKey(controller)) {
        if (const LegacyUSBPortTemplate* entry = legacyUSBPortTemplate(*key)) {
            result.ports = legacyUSBPortTemplatePorts(controller);
            result.templateCount = entry->count;
        }
    }
    std::stable_sort(result.ports.begin(), result.ports.end(), [](const USBPortMap& a, const USBPortMap& b) {
        return portNumber(a.portData).value_or(0) < portNumber(b.portData).value_or(0);
    });
    return result;
}

} // namespace korvane
