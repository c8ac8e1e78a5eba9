#include "platform/PlatformFolders.h"

#include <algorithm>
#include <pwd.h>
#include <unistd.h>

namespace korvane {

std::filesystem::path homeDirectory(const Environment& environment) {
    if (auto home = environment("HOME")) {
        return *home;
    }
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir) {
        return entry->pw_dir;
    }
    return "/";
}

std::filesystem::path desktopURL() {
    return desktopURL(Environment::process());
}

std::filesystem::path applicationSupportDirectory() {
    return applicationSupportDirectory(Environment::process());
}

std::filesystem::path lockDirectory() {
    return lockDirectory(Environment::process());
}

std::filesystem::path configurationDirectory() {
    return configurationDirectory(Environment::process());
}

std::filesystem::path resourceDirectory() {
    return resourceDirectory(executableDirectory());
}

std::filesystem::path bundleOrInstalledResourceDirectory(const std::filesystem::path& executableFolder) {
    const auto folder = executableFolder.lexically_normal();
    // A trailing separator leaves an empty last name; the folder is the same.
    const auto named = folder.filename().empty() ? folder.parent_path() : folder;
    if (named.filename() == "MacOS" && named.parent_path().filename() == "Contents") {
        return named.parent_path() / "Resources";
    }
    return (named / ".." / "share" / "korvane-generator").lexically_normal();
}

std::optional<std::string> programOnPath(std::string_view name, const Environment& environment) {
    const std::string path = environment("PATH").value_or("/usr/local/bin:/usr/bin:/bin");
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t end = std::min(path.find(':', start), path.size());
        const std::filesystem::path folder = path.substr(start, end - start);
        start = end + 1;
        if (!folder.is_absolute()) {
            continue;
        }
        const auto candidate = folder / name;
        std::error_code error;
        if (std::filesystem::is_regular_file(candidate, error) && ::access(candidate.c_str(), X_OK) == 0) {
            return candidate.string();
        }
    }
    return std::nullopt;
}

} // namespace korvane
