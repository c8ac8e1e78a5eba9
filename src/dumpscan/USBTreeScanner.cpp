#include "dumpscan/USBTreeScanner.h"

#include "base/Text.h"
#include "dumpscan/DumpParser.h"
#include "savedregistry/SavedRegistry.h"
#include "scanner/NativeUSBTreeScanner.h"
#include "tools/ProcessRunner.h"

#include <array>
#include <cstdio>
#include <random>

namespace korvane {

namespace {

// Removes the working copy on every way out, errors dropped.
class RemovedOnExit {
  public:
    explicit RemovedOnExit(std::filesystem::path path) : path_(std::move(path)) {}
    ~RemovedOnExit() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    RemovedOnExit(const RemovedOnExit&) = delete;
    RemovedOnExit& operator=(const RemovedOnExit&) = delete;

  private:
    std::filesystem::path path_;
};

std::string readTextWithinLimit(const std::filesystem::path& path) {
    const auto bytes = readSavedRegistryFile(path);
    return bytes ? strictUTF8(*bytes) : std::string();
}

} // namespace

std::string newUUIDText() {
    std::random_device source;
    std::array<unsigned char, 16> bytes{};
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        const auto value = source();
        for (std::size_t j = 0; j < 4; ++j) {
            bytes[i + j] = static_cast<unsigned char>(value >> (8 * j));
        }
    }
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40); // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80); // RFC 4122 variant
    std::string text;
    char digits[3];
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text.push_back('-');
        }
        std::snprintf(digits, sizeof digits, "%02X", bytes[i]);
        text.append(digits);
    }
    return text;
}

std::string readIORegistryExplorerFileForScanning(const std::filesystem::path& dump,
                                                  const DumpReadingOptions& options) {
    try {
        const std::filesystem::path copy =
            options.temporaryFolder / ("Korvane_IORegScan_" + newUUIDText() + ".xml");
        const RemovedOnExit removal(copy);
        std::error_code copyError;
        std::filesystem::copy_file(dump, copy, copyError);
        if (copyError) {
            return readTextWithinLimit(dump);
        }
        try {
            runProcess(options.plutil, {"-convert", "xml1", copy.string(), "-o", copy.string()}, std::nullopt,
                       options.conversionTimeout);
        } catch (...) {
            // A plain text dump is no property list: the tool refuses it and
            // the copy goes on as it was. A missing or hanging tool is no
            // different for the reader.
        }
        return readTextWithinLimit(copy);
    } catch (...) {
        // Only allocation can get here; the scan then finds nothing.
        return {};
    }
}

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
