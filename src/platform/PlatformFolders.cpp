#include "platform/PlatformFolders.h"

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

} // namespace korvane
