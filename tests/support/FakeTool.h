#pragma once

#include <filesystem>
#include <string>

namespace korvane {

// A shell script standing in for a tool: `folder`/`name`, executable, running
// `body` under /bin/sh. Returns its path.
std::string writeFakeTool(const std::filesystem::path& folder, const std::string& name,
                          const std::string& body);

} // namespace korvane
