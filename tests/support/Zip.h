#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace korvane {

// Every entry of a ZIP by name (folders end in "/") with its contents; empty
// when the file is no readable ZIP.
std::map<std::string, std::string> readZip(const std::filesystem::path& path);

} // namespace korvane
