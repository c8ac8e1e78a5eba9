#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace korvane {

struct ZipEntry {
    std::string contents;
    unsigned mode = 0; // the Unix mode ditto records, type bits included

    bool operator==(const ZipEntry&) const = default;
};

// Every entry of a ZIP by name (folders end in "/"); empty when the file is
// no readable ZIP.
std::map<std::string, ZipEntry> readZip(const std::filesystem::path& path);

} // namespace korvane
