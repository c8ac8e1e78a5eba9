#include "scanner/PlatformModel.h"

#include "base/Text.h"
#include "records/MacModel.h"
#include "scanner/PropertyReaders.h"

#include <deque>

namespace korvane {

namespace {

constexpr const char* platformClass = "IOPlatformExpertDevice";

std::optional<std::string> modelOf(const NativeUSBNode& node) {
    const auto value = node.properties.value("model");
    if (!value) {
        return std::nullopt;
    }
    std::optional<std::string> text;
    if (const auto* bytes = value->bytes()) {
        text = stringFromNullTerminatedData(*bytes);
    } else if (const auto* string = value->text()) {
        text = *string;
    }
    if (!text) {
        return std::nullopt;
    }
    std::string model = trimmed(*text);
    if (model.empty() || !macModelProblem(model).empty()) {
        return std::nullopt;
    }
    return model;
}

} // namespace

std::optional<std::string> platformModel(const NativeUSBNode& root) {
    // The platform node sits right below the root; a breadth-first walk
    // finds it there at once and still finds a tree saved from deeper down.
    std::deque<const NativeUSBNode*> pending{&root};
    while (!pending.empty()) {
        const NativeUSBNode* node = pending.front();
        pending.pop_front();
        if (node->className == platformClass) {
            return modelOf(*node);
        }
        for (const auto& child : node->children) {
            pending.push_back(child.get());
        }
    }
    return std::nullopt;
}

} // namespace korvane
