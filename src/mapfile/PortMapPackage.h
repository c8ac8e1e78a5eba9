#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// The port map inside a codeless port-map package (ours or anyone's): the
// AppleUSBHostMergeProperties personalities of its Info.plist, each naming
// its controller by IONameMatch and carrying IOProviderMergeProperties ->
// ports -> {name, port, UsbConnector}.

struct PackagePort {
    std::string personality;
    // The controller names the personality matches (IONameMatch: one text
    // or a list).
    std::vector<std::string> controllerNames;
    // IOPCIPrimaryMatch as written ("0xa36d8086", maybe several, maybe with
    // masks); empty when absent.
    std::string primaryMatch;
    std::string name;
    // From `port` (or `usb-port-number`): data, least significant byte first,
    // or a number. None when neither is there.
    std::optional<std::int64_t> number;
    std::optional<std::int64_t> connector;

    bool operator==(const PackagePort&) const = default;
};

struct PortMapPackage {
    // The merge personalities' `model`, the first one that has one.
    std::optional<std::string> model;
    std::vector<PackagePort> ports;
};

struct PortMapPackageParse {
    std::optional<PortMapPackage> package;
    // Worded to follow the file's name, as for map files.
    std::string reason;
};

// Reads the Info.plist bytes through the saved-registry reader's guards: a
// malformed, binary-bomb, hostile or huge list, or one without a single
// merge personality with ports, gives no package. Never throws.
PortMapPackageParse parsePackageInfoPlist(std::string_view bytes);

// The package at `path`: a .kext folder (or a folder holding exactly one),
// its Info.plist, or a ZIP holding exactly one .kext (the Korvane.zip this
// program writes). Never throws.
PortMapPackageParse readPortMapPackage(const std::filesystem::path& path);

} // namespace korvane
