#include "savedregistry/SnapshotCodec.h"
#include "scanner/PropertyReaders.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (auto root = korvane::parseSnapshot(bytes)) {
        for (const auto* node : korvane::flatten(*root)) {
            for (const auto& child : node->children) {
                if (child->parent != node) {
                    __builtin_trap();
                }
            }
        }
        // Whatever was read must also be writable.
        (void)korvane::snapshotPropertyList(*root);
    }
    return 0;
}
