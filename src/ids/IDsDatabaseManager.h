#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace korvane {

// Where the two ids databases are looked for, in this order: the user's copy
// ({applicationSupport}/KorvaneGenerator/Tools/{name}), written by updates,
// then the application's read-only copy ({resources}/Tools/{name}).
struct IDsDatabaseLocations {
    std::filesystem::path applicationSupportDirectory;
    std::filesystem::path resourceDirectory;
};

class IDsDatabaseManager {
  public:
    // The user's Tools folder, created when missing. Throws std::filesystem::filesystem_error
    // (the platform's wording) when it can't be made.
    static std::filesystem::path applicationSupportToolsDirectory(const IDsDatabaseLocations& locations);

    // The database file to read for `name` ("pci.ids", "usb.ids"), or none.
    // Never throws.
    static std::optional<std::filesystem::path> localDatabaseURL(const std::string& name,
                                                                 const IDsDatabaseLocations& locations);
};

} // namespace korvane
