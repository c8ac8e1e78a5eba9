#include "savedregistry/IORegTextParser.h"
#include "scanner/PropertyReaders.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (auto root = korvane::parseIORegText(std::string(reinterpret_cast<const char*>(data), size))) {
        // Walk the tree the way a scan does, so a broken parent link or an
        // unbounded depth shows up here rather than in the scanner, and read
        // every value, which the parse itself leaves unread.
        for (const auto* node : korvane::flatten(*root)) {
            (void)node->properties.dictionary();
            for (const auto& child : node->children) {
                if (child->parent != node) {
                    __builtin_trap();
                }
            }
        }
    }
    return 0;
}
