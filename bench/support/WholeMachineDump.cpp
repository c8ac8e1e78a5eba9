#include "bench/support/WholeMachineDump.h"

#include "base/FileIO.h"
#include "dumpscan/DumpText.h"

#include <stdexcept>
#include <unistd.h>

namespace korvane {

namespace {

// The PCI node's whole block, with ID lines put into the xHCI node's own properties.
std::string controllerSubtree(const std::string& file, std::string_view pciLine, const std::string& idLines) {
    const auto bytes = readFileBytes(std::filesystem::path(KORVANE_TEST_DATA_DIR) / file);
    if (!bytes) {
        throw std::runtime_error("missing fixture " + file);
    }
    const DumpLines lines(*bytes);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines.line(i).find(pciLine) == std::string_view::npos) {
            continue;
        }
        std::string subtree;
        for (std::size_t j = i; j < lines.blockEnd(i); ++j) {
            subtree.append(lines.line(j)).push_back('\n');
            if (lines.line(j).find("<class AppleUSBXHCI") != std::string_view::npos) {
                subtree.append(idLines);
            }
        }
        return subtree;
    }
    throw std::runtime_error("no controller subtree in " + file);
}

} // namespace

WholeMachineDump::WholeMachineDump(std::size_t bytes) {
    const std::string hackintosh = controllerSubtree(
        "macos/hackintosh-CML/ioreg_ioservice.txt", "+-o XHC@14  <class IOPCIDevice",
        "    | |   | | \"vendor-id\" = <86800000>\n    | |   | | \"device-id\" = <ed020000>\n");
    const std::string macPro = controllerSubtree(
        "macos/iMacPro1-1/IOReg.txt", "+-o XHC1@14  <class IOPCIDevice",
        "    | |   | | \"vendor-id\" = <86800000>\n    | |   | | \"device-id\" = <afa20000>\n");
    text_ = "+-o Root  <class IORegistryEntry, id 0x100000100, retain 10>\n";
    while (text_.size() < bytes) {
        text_ += hackintosh;
        text_ += macPro;
    }
    size_ = text_.size();
    path_ = std::filesystem::temp_directory_path() /
            ("korvane-whole-machine-" + std::to_string(::getpid()) + ".txt");
    writeFileAtomically(path_, text_);
}

WholeMachineDump::~WholeMachineDump() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
}

} // namespace korvane
