#include "support/BuildTree.h"

namespace korvane {

ToolPaths buildTreeToolPaths() {
    const std::filesystem::path libexec = KORVANE_BUILD_LIBEXEC_DIR;
    return {(libexec / "ditto").string(), (libexec / "plutil").string(), "/usr/sbin/sysctl"};
}

std::filesystem::path buildTreeResourceDirectory() {
    return KORVANE_BUILD_RESOURCE_DIR;
}

} // namespace korvane
