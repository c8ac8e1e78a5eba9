#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

// What the window remembers between runs: a JSON object in the user's
// configuration folder. Keys this version doesn't know are kept as they are.
struct UserSettings {
    // The target model chosen for each machine, by userSettingsMachine();
    // a machine without an entry has none chosen.
    std::map<std::string, std::string> targetModelChoices;
    std::vector<std::string> recentMaps; // absolute paths, the latest first

    // The choice made for `machine`; empty when none was.
    std::string targetModelChoiceFor(const std::string& machine) const;
    // A choice made for another machine, to offer and never to take
    // unasked; empty when there is none.
    std::string targetModelOfferFor(const std::string& machine) const;
    // Keeps `choice` for `machine`; an empty one forgets it.
    void setTargetModelChoice(const std::string& machine, const std::string& choice);
};

// Which machine a window shows, as the settings remember choices by: this
// machine, or the saved registry `registryFile` (a machine of its own).
std::string userSettingsMachine(const std::optional<std::filesystem::path>& registryFile);

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
