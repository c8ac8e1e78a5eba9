#pragma once

#include "tools/ToolPaths.h"

#include <filesystem>

namespace korvane {

// What this build tree made for the program to use: our ditto and plutil
// stand-ins (with the system's sysctl) and the resource folder with the
// bundled ids databases.
ToolPaths buildTreeToolPaths();
std::filesystem::path buildTreeResourceDirectory();

} // namespace korvane
