#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace korvane {

// The firmware's product name (<sysfs root>/class/dmi/id/product_name) when it
// has a Mac model's shape: a Mac running Linux, or a machine whose firmware
// was set up to say it is one. No value for any other product name or when
// the file can't be read.
std::optional<std::string> firmwareMacModel(const std::filesystem::path& sysfsRoot);

} // namespace korvane
