#pragma once

#include "scanner/NativeUSBNode.h"
#include "scanner/RegistrySource.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <tuple>

namespace korvane {

// Registry trees made by hand, and the comparisons the scanner and the saved
// registry tests share.

inline std::unique_ptr<NativeUSBNode> makeRoot() {
    return std::make_unique<NativeUSBNode>("Root", "", "IORegistryEntry", PropertyDictionary{}, nullptr);
}

// An xHCI PCI device with its identity as the registry stores it: four-byte
// little-endian buffers.
inline NativeUSBNode& addXHCIPCIDevice(NativeUSBNode& parent, const std::string& name,
                                       const std::string& location, std::uint32_t vendor,
                                       std::uint32_t device) {
    auto bytes = [](std::uint32_t v) { return ByteBuffer{std::uint8_t(v), std::uint8_t(v >> 8), 0, 0}; };
    return parent.addChild(name, location, "IOPCIDevice",
                           {{"class-code", ByteBuffer{0x30, 0x03, 0x0C, 0x00}},
                            {"vendor-id", bytes(vendor)},
                            {"device-id", bytes(device)}});
}

// A registry whose tree a function makes afresh for each copy.
class TreeSource final : public RegistrySource {
  public:
    explicit TreeSource(std::function<std::unique_ptr<NativeUSBNode>()> make) : make_(std::move(make)) {}
    std::unique_ptr<NativeUSBNode> copyRoot() const override { return make_(); }

  private:
    std::function<std::unique_ptr<NativeUSBNode>()> make_;
};

// The tree's shape as indented lines, "name@location <class>", two blanks a
// level; properties left out.
inline std::string treeText(const NativeUSBNode& node, int depth = 0) {
    std::string text = std::string(static_cast<std::size_t>(2 * depth), ' ') + node.name +
                       (node.location.empty() ? "" : "@" + node.location) + " <" + node.className + ">\n";
    for (const auto& child : node.children) {
        if (child->parent != &node) {
            text += "(broken parent link)\n";
        }
        text += treeText(*child, depth + 1);
    }
    return text;
}

// Two trees alike node by node: names, locations, classes, properties, and
// children in order, each linked back to its parent.
inline bool sameTree(const NativeUSBNode& a, const NativeUSBNode& b) {
    if (std::tie(a.name, a.location, a.className, a.properties) !=
            std::tie(b.name, b.location, b.className, b.properties) ||
        a.children.size() != b.children.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.children.size(); ++i) {
        if (a.children[i]->parent != &a || b.children[i]->parent != &b ||
            !sameTree(*a.children[i], *b.children[i])) {
            return false;
        }
    }
    return true;
}

} // namespace korvane
