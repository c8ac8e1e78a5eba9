#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

// Which controller port each root-hub port is, from the xHCI driver's
// debugfs dump of the controller's Supported Protocol capabilities
// (reg-ext-protocol:NN). The kernel hands the controller's ports to the USB 2
// and USB 3 root hubs in ascending controller order, by the protocol each
// capability gives them, so the k-th port of a root hub is the k-th lowest
// port of its protocol.
struct XHCIPortLayout {
    std::vector<std::uint32_t> usb2; // usb2[k - 1]: controller port of USB 2 root-hub port k
    std::vector<std::uint32_t> usb3;

    // Reads <debugfsRoot>/usb/xhci/<pci address>/reg-ext-protocol:*. No value
    // when debugfs isn't mounted, isn't readable (it needs root) or shows no
    // capability.
    static std::optional<XHCIPortLayout> read(const std::filesystem::path& controllerDebugDirectory);

    // The same from the files' texts, as the kernel prints a register set:
    // "EXTCAP_REVISION = 0x03000802" and "EXTCAP_PORTINFO = 0x...", one a line.
    static std::optional<XHCIPortLayout> fromCapabilityTexts(const std::vector<std::string>& texts);
};

} // namespace korvane
