#pragma once

#include "scanner/NativeUSBNode.h"

#include <gtest/gtest.h>
#include <string>

namespace korvane {

// Compares two trees node by node and names the first place they differ.
inline testing::AssertionResult sameTree(const NativeUSBNode& a, const NativeUSBNode& b,
                                         const std::string& where = "root") {
    const std::string here = where + "/" + a.name;
    if (a.name != b.name || a.location != b.location || a.className != b.className) {
        return testing::AssertionFailure()
               << here << ": (" << a.name << ", " << a.location << ", " << a.className << ") against ("
               << b.name << ", " << b.location << ", " << b.className << ")";
    }
    if (a.properties != b.properties) {
        for (const auto& [key, value] : a.properties) {
            const auto other = b.properties.find(key);
            if (other == b.properties.end() || other->second != value) {
                return testing::AssertionFailure() << here << ": property " << key << " differs";
            }
        }
        return testing::AssertionFailure() << here << ": the second tree has more properties";
    }
    if (a.children.size() != b.children.size()) {
        return testing::AssertionFailure()
               << here << ": " << a.children.size() << " children against " << b.children.size();
    }
    for (std::size_t i = 0; i < a.children.size(); ++i) {
        if (a.children[i]->parent != &a || b.children[i]->parent != &b) {
            return testing::AssertionFailure() << here << ": broken parent link at child " << i;
        }
        if (auto result = sameTree(*a.children[i], *b.children[i], here); !result) {
            return result;
        }
    }
    return testing::AssertionSuccess();
}

} // namespace korvane
