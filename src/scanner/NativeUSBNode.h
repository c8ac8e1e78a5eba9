#pragma once

#include "scanner/NodeProperties.h"

#include <memory>
#include <string>
#include <vector>

namespace korvane {

// One registry entry of a snapshot. The root owns the tree through
// `children`; `parent` is a plain back pointer that never keeps a node alive,
// so a parent walk must happen while the root is held.
class NativeUSBNode {
  public:
    NativeUSBNode(std::string nodeName, std::string nodeLocation, std::string nodeClassName,
                  NodeProperties nodeProperties, NativeUSBNode* parentNode)
        : name(std::move(nodeName)), location(std::move(nodeLocation)), className(std::move(nodeClassName)),
          properties(std::move(nodeProperties)), parent(parentNode) {}

    // Dismantles the subtree without recursion: a tree read from a file may
    // nest deeper than the call stack would allow.
    ~NativeUSBNode() {
        std::vector<std::unique_ptr<NativeUSBNode>> pending = std::move(children);
        while (!pending.empty()) {
            std::unique_ptr<NativeUSBNode> node = std::move(pending.back());
            pending.pop_back();
            for (auto& child : node->children) {
                pending.push_back(std::move(child));
            }
            node->children.clear();
        }
    }

    NativeUSBNode(const NativeUSBNode&) = delete;
    NativeUSBNode& operator=(const NativeUSBNode&) = delete;

    // Makes a child of this node and appends it.
    NativeUSBNode& addChild(std::string childName, std::string childLocation, std::string childClassName,
                            NodeProperties childProperties) {
        children.push_back(std::make_unique<NativeUSBNode>(std::move(childName), std::move(childLocation),
                                                           std::move(childClassName),
                                                           std::move(childProperties), this));
        return *children.back();
    }

    std::string name;      // may carry an "@..." part
    std::string location;  // may be empty
    std::string className; // empty when the source gives none
    NodeProperties properties;
    NativeUSBNode* parent = nullptr;
    std::vector<std::unique_ptr<NativeUSBNode>> children;
};

} // namespace korvane
