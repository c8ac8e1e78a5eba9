#pragma once

#include "platform/linux/FirmwareUPCReader.h"
#include "scanner/RegistrySource.h"

#include <filesystem>
#include <string>
#include <vector>

namespace korvane {

class FirmwarePortTypes;
class SysfsTreeBuilder;

// The registry tree of a Linux machine, read from sysfs: the PCI devices as
// sysfs nests them (class "IOPCIDevice"), below each xHCI function a host
// service node ("xhci_hcd") with the ports of both root hubs ("usb_port"),
// and the attached devices, interfaces and hubs below those, all in the
// property conventions of the macOS registry.
//
// The root is injected so that tests run on a directory of fixture files; the
// xHCI driver's debugfs is looked for at <root>/kernel/debug and the ACPI
// tables at <root>/firmware/acpi/tables. Unreadable files and missing links
// give poorer nodes; the walk never follows a symbolic link into a
// directory, so a link loop can't hold it.
//
// Ports with a firmware node take their connector type from the firmware's
// _UPC when `acpiexec` can evaluate the tables (root only), and say so in
// connector-source; otherwise from the kernel's connect_type and peer links.
// When the firmware's types can't be had, the root's scan-notices says how
// to get them.
class SysfsRegistrySource final : public RegistrySource {
  public:
    explicit SysfsRegistrySource(std::filesystem::path sysfsRoot = "/sys", std::string acpiexec = {},
                                 double acpiexecTimeout = FirmwareUPCReader::defaultTimeout);

    std::unique_ptr<NativeUSBNode> copyRoot() const override;

  private:
    struct XHCIFunction;

    // Adds the PCI functions below `directory`; the xHCI ones are gathered
    // in `xhci` for their services, which need every controller's address.
    void addPCIChildren(NativeUSBNode& parent, const std::filesystem::path& directory,
                        SysfsTreeBuilder& builder, FirmwarePortTypes& firmwareTypes, int depth,
                        std::vector<XHCIFunction>& xhci) const;

    std::filesystem::path root_;
    FirmwareUPCReader firmware_;
};

} // namespace korvane
