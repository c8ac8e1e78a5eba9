#include "mapfile/MapMatching.h"
#include "records/PortNumber.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto parse = korvane::parsePackageInfoPlist(bytes);
    if (parse.package) {
        // Matching against a scan walks every field the reader kept.
        korvane::USBControllerMap controller;
        controller.name = "XHC1";
        controller.vendorID = 0x8086;
        controller.deviceID = 0xa36d;
        korvane::USBPortMap port;
        port.name = "HS01";
        port.portData = korvane::portData(1);
        controller.ports.push_back(port);
        (void)korvane::matchPackageToScan(*parse.package, {controller, controller});
    }
    return 0;
}
