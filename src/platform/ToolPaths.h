#pragma once

#include <filesystem>
#include <string>

namespace korvane {

// Where each external tool is. Callers take these from here (or from a test)
// and never spell a tool's path themselves.
struct ToolPaths {
    std::string ditto;
    std::string plutil;
    std::string sysctl;

    // The platform's table. macOS: the system tools. Linux: our stand-ins for
    // ditto and plutil in ../libexec/korvane-generator beside the running
    // program (build and installed trees alike), and the system's sysctl.
    static ToolPaths forPlatform(const std::filesystem::path& executableFolder);
    static ToolPaths forPlatform();
};

} // namespace korvane
