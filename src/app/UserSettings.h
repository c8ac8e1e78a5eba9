#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace korvane {

// What the window remembers between runs: a JSON object in the user's
// configuration folder. Keys this version doesn't know are kept as they are.
struct UserSettings {
    std::string targetModelChoice;       // empty: not chosen
    std::vector<std::string> recentMaps; // absolute paths, the latest first
};

// <configuration folder>/KorvaneGenerator/settings.json on this machine.
std::filesystem::path userSettingsFile();

// The settings in `file`; a missing, unreadable or damaged file gives the
// defaults. Never throws.
UserSettings readUserSettings(const std::filesystem::path& file);

// Writes the settings into `file` atomically, making its folder, and keeps
// the other keys a readable file already holds. Throws std::system_error
// (or std::filesystem::filesystem_error) with the platform's wording.
void writeUserSettings(const std::filesystem::path& file, const UserSettings& settings);

// Reads the settings, lets `change` change them and writes them back, as
// writeUserSettings does (and throws as it does).
void updateUserSettings(const std::filesystem::path& file, const std::function<void(UserSettings&)>& change);

} // namespace korvane
