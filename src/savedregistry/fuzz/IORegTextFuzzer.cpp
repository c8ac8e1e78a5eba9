#include "savedregistry/IORegTextParser.h"
#include "scanner/PropertyReaders.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (auto root = korvane::parseIORegText(bytes)) {
        // Walk the tree the way a scan does, so a broken parent link or an
        // unbounded depth shows up here rather than in the scanner.
        for (const auto* node : korvane::flatten(*root)) {
            for (const auto& child : node->children) {
                if (child->parent != node) {
                    __builtin_trap();
                }
            }
        }
    }
    return 0;
}
