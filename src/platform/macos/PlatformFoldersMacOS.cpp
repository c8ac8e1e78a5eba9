#include "platform/PlatformFolders.h"

#include <cstdint>
#include <mach-o/dyld.h>
#include <vector>

namespace korvane {

std::filesystem::path desktopURL(const Environment& environment) {
    return homeDirectory(environment) / "Desktop";
}

std::filesystem::path applicationSupportDirectory(const Environment& environment) {
    return homeDirectory(environment) / "Library" / "Application Support";
}

std::filesystem::path lockDirectory(const Environment& environment) {
    return homeDirectory(environment) / "Library" / "Caches" / "org.korvanegenerator.KorvaneGenerator";
}

std::filesystem::path configurationDirectory(const Environment& environment) {
    return applicationSupportDirectory(environment);
}

std::filesystem::path executableDirectory() {
    std::uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    std::vector<char> buffer(size + 1, '\0');
    if (_NSGetExecutablePath(buffer.data(), &size) != 0) {
        return std::filesystem::current_path();
    }
    std::error_code error;
    const auto resolved = std::filesystem::canonical(buffer.data(), error);
    return (error ? std::filesystem::path(buffer.data()) : resolved).parent_path();
}

// The window runs from KorvaneGenerator.app, the command line from bin/.
std::filesystem::path resourceDirectory(const std::filesystem::path& executableFolder) {
    return bundleOrInstalledResourceDirectory(executableFolder);
}

ToolPaths platformToolPaths(const std::filesystem::path&) {
    return {"/usr/bin/ditto", "/usr/bin/plutil", "/usr/sbin/sysctl", ""};
}

} // namespace korvane
