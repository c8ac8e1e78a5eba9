#include "ids/IDsDatabaseManager.h"

#include <system_error>

namespace korvane {

namespace {

// create_directories reports an existing non-folder inconsistently across
// standard libraries; the caller must learn that the folder isn't there.
void makeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!error && !std::filesystem::is_directory(folder, error) && !error) {
        error = std::make_error_code(std::errc::not_a_directory);
    }
    if (error) {
        throw std::filesystem::filesystem_error("cannot create directory", folder, error);
    }
}

bool fileExists(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

} // namespace

std::filesystem::path
IDsDatabaseManager::applicationSupportToolsDirectory(const IDsDatabaseLocations& locations) {
    // An empty folder would turn the Tools path into one relative to wherever
    // the process happens to run.
    if (locations.applicationSupportDirectory.empty()) {
        throw std::filesystem::filesystem_error("no application support directory",
                                                locations.applicationSupportDirectory,
                                                std::make_error_code(std::errc::no_such_file_or_directory));
    }
    makeFolder(locations.applicationSupportDirectory);
    const auto tools = locations.applicationSupportDirectory / "KorvaneGenerator" / "Tools";
    makeFolder(tools);
    return tools;
}

std::optional<std::filesystem::path>
IDsDatabaseManager::localDatabaseURL(const std::string& name, const IDsDatabaseLocations& locations) {
    try {
        try {
            const auto userCopy = applicationSupportToolsDirectory(locations) / name;
            // Existence only: an empty or damaged user copy still wins over the
            // application's, so an update's result is what gets read.
            if (fileExists(userCopy)) {
                return userCopy;
            }
        } catch (const std::filesystem::filesystem_error&) {
        }
        if (!locations.resourceDirectory.empty()) {
            const auto applicationCopy = locations.resourceDirectory / "Tools" / name;
            if (fileExists(applicationCopy)) {
                return applicationCopy;
            }
        }
    } catch (const std::exception&) {
    }
    return std::nullopt;
}

} // namespace korvane
