#pragma once

#include "records/Connector.h"
#include "scanner/PropertyValue.h"

#include <optional>
#include <string_view>

namespace korvane {

// The registry keys of a Linux tree that IOKit never sets. The sysfs tree
// builder (src/platform/linux) writes them beside the macOS registry's own
// keys; the scanner reads some back on any system, since a snapshot made on
// Linux may be opened on a Mac. Each key is named here once: where it sits,
// who writes it, who reads it, and whether a snapshot keeps it. Every key a
// snapshot keeps comes back from it unchanged, so a saved Linux tree scans as
// the live one did.
namespace linuxTreeKey {

// Port node, beside UsbConnector. Written by SysfsXHCIService: "firmware",
// "kernel" or "peer", the words of connectorSourceName(). Read by the port
// discovery through statedConnectorSource(). Kept by a snapshot.
inline constexpr char connectorSource[] = "connector-source";

// Port node: where the firmware's _PLD puts the socket, as a dictionary of the
// kernel's words (the keys below). Written by SysfsXHCIService when the port
// has a physical_location folder. Read by the port discovery (the port's
// place). Kept by a snapshot.
inline constexpr char physicalLocation[] = "physical-location";
namespace place {
inline constexpr char panel[] = "panel";                            // "top", "back", "left", ...
inline constexpr char verticalPosition[] = "vertical_position";     // "upper", "center", "lower"
inline constexpr char horizontalPosition[] = "horizontal_position"; // "left", "center", "right"
inline constexpr char dock[] = "dock";                              // 1 or 0
inline constexpr char lid[] = "lid";                                // 1 or 0
} // namespace place

// Port node: the name of the other root hub's port the kernel pairs it with
// (its sysfs peer link), the other half of a USB 3 connector on the same
// controller. Written by SysfsXHCIService. Read by PortCompanions. Kept by a
// snapshot.
inline constexpr char peer[] = "peer";

// Port node: where its port number came from, a sentence for a person
// ("firmware (_ADR)", "xHCI driver (debugfs)", or a guess that says so).
// Written by SysfsXHCIService; no code reads it. Kept by a snapshot, where a
// person looking into a wrong number finds it.
inline constexpr char portNumberSource[] = "port-number-source";

// Port node: the bus number of the port's root hub. Written by
// SysfsXHCIService; no code reads it. Kept by a snapshot, to tie a port to
// the kernel's usbN and lsusb.
inline constexpr char usbBus[] = "usb-bus";

// Root-hub port and hub port nodes: the kernel's connect_type word
// ("hotplug", "hardwired", "not used", "unknown"). Written by
// SysfsXHCIService and SysfsUSBDevice; no code reads it (the builder has
// already turned it into UsbConnector). Kept by a snapshot, as the evidence
// behind a "kernel" connector.
inline constexpr char sysfsConnectType[] = "sysfs-connect-type";

// PCI host bridge and USB device nodes: the sysfs folder name ("pci0000:00",
// "1-2.3"). Written by SysfsRegistrySource and SysfsUSBDevice; no code reads
// it. Kept by a snapshot, to find the node in /sys again.
inline constexpr char sysfsName[] = "sysfs-name";

// USB device node: the kernel's speed in Mbit/s ("480", "5000"). Written by
// SysfsUSBDevice; no code reads it. Kept by a snapshot.
inline constexpr char sysfsSpeed[] = "sysfs-speed";

// xHCI service node: the controller's PCI address ("0000:00:14.0"). Written
// by SysfsXHCIService; no code reads it. Kept by a snapshot.
inline constexpr char pciAddress[] = "pci-address";

// Root node: sentences for the user on what the scan couldn't learn and how
// to (run as root, install acpica-tools). Written by SysfsRegistrySource.
// Read by NativeUSBTreeScanner into the scan's notices. Not kept by a
// snapshot, which drops it on writing and on reading: the advice is for the
// person at the scanned machine, and would be false for whoever opens the
// file; each port's connector-source still says where its type came from.
inline constexpr char scanNotices[] = "scan-notices";

} // namespace linuxTreeKey

// Whether a snapshot keeps a node property of this name: every key but
// scan-notices.
bool isKeptBySnapshot(std::string_view key);

// The source of a connector code a tree states (UsbConnector or like), from
// the connector-source value beside it (`named`, none when the node has
// none). The rule, for trees from this build, older ones and hand-made ones:
// - no connector-source: "registry", the tree's own statement; macOS and
//   ioreg trees never name a source;
// - "firmware", "kernel", "peer", "registry", "inferred": that source;
// - "user", any other word and any non-text value: "inferred". The user's
//   pick lives in the session, never in a tree, and a word this build doesn't
//   know vouches for nothing it can name, so the code is kept but shown as
//   one to check rather than as what the machine stated.
ConnectorSource statedConnectorSource(const std::optional<PropertyValue>& named);

} // namespace korvane
