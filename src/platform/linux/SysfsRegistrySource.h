#pragma once

#include "scanner/RegistrySource.h"

#include <filesystem>
#include <vector>

namespace korvane {

class SysfsTreeBuilder;

// The registry tree of a Linux machine, read from sysfs: the PCI devices as
// sysfs nests them (class "IOPCIDevice"), below each xHCI function a host
// service node ("xhci_hcd") with the ports of both root hubs ("usb_port"),
// and the attached devices, interfaces and hubs below those, all in the
// property conventions of the macOS registry.
//
// The root is injected so that tests run on a directory of fixture files; the
// xHCI driver's debugfs is looked for at <root>/kernel/debug. Unreadable
// files and missing links give poorer nodes; the walk never follows a
// symbolic link into a directory, so a link loop can't hold it.
class SysfsRegistrySource final : public RegistrySource {
  public:
    explicit SysfsRegistrySource(std::filesystem::path sysfsRoot = "/sys");

    std::unique_ptr<NativeUSBNode> copyRoot() const override;

  private:
    struct XHCIFunction;

    // Adds the PCI functions below `directory`; the xHCI ones are gathered
    // in `xhci` for their services, which need every controller's address.
    void addPCIChildren(NativeUSBNode& parent, const std::filesystem::path& directory,
                        SysfsTreeBuilder& builder, int depth, std::vector<XHCIFunction>& xhci) const;

    std::filesystem::path root_;
};

} // namespace korvane
