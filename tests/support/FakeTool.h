#pragma once

#include "base/FileIO.h"

#include <filesystem>
#include <string>

namespace korvane {

// A shell script standing in for a tool: `folder`/`name`, executable, running
// `body` under /bin/sh. Returns its path.
inline std::string writeFakeTool(const std::filesystem::path& folder, const std::string& name,
                                 const std::string& body) {
    const auto path = folder / name;
    writeFileAtomically(path, "#!/bin/sh\n" + body + "\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path.string();
}

} // namespace korvane
