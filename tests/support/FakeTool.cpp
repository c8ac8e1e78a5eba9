#include "support/FakeTool.h"

#include "records/FileIO.h"

namespace korvane {

std::string writeFakeTool(const std::filesystem::path& folder, const std::string& name,
                          const std::string& body) {
    const auto path = folder / name;
    writeFileAtomically(path, "#!/bin/sh\n" + body + "\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path.string();
}

} // namespace korvane
