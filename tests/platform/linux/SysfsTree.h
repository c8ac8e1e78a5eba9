#pragma once

#include "support/TestData.h"

#include <filesystem>
#include <fstream>
#include <string_view>

namespace korvane {

// Lays out below `root` one of the small hand-made sysfs trees of
// tests/data/linux/handmade, for the cases the real captures don't show. A
// tree is described one entry a line: "PATH<tab>TEXT" for an attribute (the
// kernel's line feed added), "PATH<tab>-> TARGET" for a link.
inline void writeSysfsTree(const std::filesystem::path& root, std::string_view name) {
    for (const auto& entry : testDataRows("linux/handmade/" + std::string(name))) {
        const auto path = root / entry.at(0);
        std::filesystem::create_directories(path.parent_path());
        if (entry.at(1).starts_with("-> ")) {
            std::filesystem::create_symlink(entry[1].substr(3), path);
        } else {
            std::ofstream(path, std::ios::binary) << entry[1] << '\n';
        }
    }
}

} // namespace korvane
