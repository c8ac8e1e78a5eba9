#include "dumpscan/USBTreeScanner.h"

#include "dumpscan/DumpControllerParser.h"
#include "dumpscan/DumpReading.h"
#include "scanner/NativeUSBTreeScanner.h"

namespace korvane {

USBScanResult USBTreeScanner::scan() const {
    auto live = NativeUSBTreeScanner(liveRegistry, names).scan();
    if (!live.controllers.empty() || !ioregFile) {
        return live;
    }
    return scanDump(*ioregFile);
}

USBScanResult USBTreeScanner::scanDump(const std::filesystem::path& dump) const {
    std::error_code error;
    if (!std::filesystem::exists(dump, error) || error) {
        return {};
    }
    std::filesystem::path folder;
    if (temporaryFolder) {
        folder = *temporaryFolder;
    } else {
        folder = std::filesystem::temp_directory_path(error);
        if (error) {
            folder = "/tmp";
        }
    }
    const std::string text = readIORegistryExplorerFileForScanning(dump, {plutil, conversionTimeout, folder});
    return USBScanResult{parseControllers(text, names)};
}

} // namespace korvane
