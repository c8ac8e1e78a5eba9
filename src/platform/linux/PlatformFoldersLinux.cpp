#include "base/FileIO.h"
#include "platform/PlatformFolders.h"

#include <sstream>
#include <system_error>
#include <unistd.h>

namespace korvane {

namespace {

// One value of user-dirs.dirs: a quoted text, either "$HOME/..." or an
// absolute path, with backslash escapes. Anything else is ignored, as
// xdg-user-dirs does.
std::optional<std::filesystem::path> userDirValue(std::string_view value, const std::filesystem::path& home) {
    if (value.size() < 2 || value.front() != '"') {
        return std::nullopt;
    }
    std::string text;
    bool closed = false;
    for (std::size_t i = 1; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size()) {
            text += value[++i];
        } else if (value[i] == '"') {
            closed = true;
            break;
        } else {
            text += value[i];
        }
    }
    if (!closed) {
        return std::nullopt;
    }
    if (text == "$HOME") {
        return home;
    }
    if (text.starts_with("$HOME/")) {
        return home / text.substr(6);
    }
    if (text.starts_with("/")) {
        return std::filesystem::path(text);
    }
    return std::nullopt;
}

} // namespace

std::filesystem::path configurationDirectory(const Environment& environment) {
    if (auto configHome = environment("XDG_CONFIG_HOME"); configHome && configHome->starts_with("/")) {
        return *configHome;
    }
    return homeDirectory(environment) / ".config";
}

std::filesystem::path desktopURL(const Environment& environment) {
    const auto home = homeDirectory(environment);
    if (auto contents = readFileBytes(configurationDirectory(environment) / "user-dirs.dirs")) {
        std::istringstream lines(*contents);
        std::string line;
        std::optional<std::filesystem::path> desktop;
        while (std::getline(lines, line)) {
            constexpr std::string_view key = "XDG_DESKTOP_DIR=";
            const auto start = line.find_first_not_of(" \t");
            if (start != std::string::npos && std::string_view(line).substr(start).starts_with(key)) {
                // The last entry wins, as when the file is sourced by a shell.
                if (auto value = userDirValue(std::string_view(line).substr(start + key.size()), home)) {
                    desktop = value;
                }
            }
        }
        if (desktop) {
            return *desktop;
        }
    }
    return home / "Desktop";
}

std::filesystem::path applicationSupportDirectory(const Environment& environment) {
    if (auto dataHome = environment("XDG_DATA_HOME"); dataHome && dataHome->starts_with("/")) {
        return *dataHome;
    }
    return homeDirectory(environment) / ".local" / "share";
}

std::filesystem::path lockDirectory(const Environment& environment) {
    // The runtime folder is the user's own and empties at log-out; relative
    // values are invalid there as everywhere in the base directory rules.
    if (auto runtime = environment("XDG_RUNTIME_DIR"); runtime && runtime->starts_with("/")) {
        return std::filesystem::path(*runtime) / "korvane-generator";
    }
    if (auto cache = environment("XDG_CACHE_HOME"); cache && cache->starts_with("/")) {
        return std::filesystem::path(*cache) / "korvane-generator";
    }
    return homeDirectory(environment) / ".cache" / "korvane-generator";
}

std::filesystem::path executableDirectory() {
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::current_path(error) : self.parent_path();
}

std::filesystem::path resourceDirectory(const std::filesystem::path& executableFolder) {
    return (executableFolder / ".." / "share" / "korvane-generator").lexically_normal();
}

ToolPaths platformToolPaths(const std::filesystem::path& executableFolder) {
    const auto libexec = (executableFolder / ".." / "libexec" / "korvane-generator").lexically_normal();
    return {(libexec / "ditto").string(), (libexec / "plutil").string(), "/usr/sbin/sysctl",
            programOnPath("acpiexec", Environment::process()).value_or("/usr/bin/acpiexec")};
}

} // namespace korvane
