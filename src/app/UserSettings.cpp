#include "app/UserSettings.h"

#include "platform/PlatformFolders.h"
#include "records/FileIO.h"

#include <nlohmann/json.hpp>

namespace korvane {

namespace {

constexpr const char* targetModelKey = "targetMacModel";
constexpr const char* recentMapsKey = "recentMaps";
// A settings file is a few dozen bytes; anything far larger is not ours.
constexpr std::size_t maximumSettingsBytes = 64 * 1024;

nlohmann::json storedObject(const std::filesystem::path& file) {
    const auto bytes = readFileBytes(file);
    if (!bytes || bytes->size() > maximumSettingsBytes) {
        return nlohmann::json::object();
    }
    auto parsed = nlohmann::json::parse(*bytes, nullptr, /*allow_exceptions=*/false);
    return parsed.is_object() ? parsed : nlohmann::json::object();
}

} // namespace

std::filesystem::path userSettingsFile() {
    return configurationDirectory() / "KorvaneGenerator" / "settings.json";
}

UserSettings readUserSettings(const std::filesystem::path& file) {
    UserSettings settings;
    const nlohmann::json stored = storedObject(file);
    if (const auto it = stored.find(targetModelKey); it != stored.end() && it->is_string()) {
        settings.targetModelChoice = it->get<std::string>();
    }
    if (const auto it = stored.find(recentMapsKey); it != stored.end() && it->is_array()) {
        for (const auto& path : *it) {
            if (path.is_string()) {
                settings.recentMaps.push_back(path.get<std::string>());
            }
        }
    }
    return settings;
}

void writeUserSettings(const std::filesystem::path& file, const UserSettings& settings) {
    nlohmann::json stored = storedObject(file);
    stored[targetModelKey] = settings.targetModelChoice;
    stored[recentMapsKey] = settings.recentMaps;
    std::filesystem::create_directories(file.parent_path());
    writeFileAtomically(file, stored.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
}

void updateUserSettings(const std::filesystem::path& file, const std::function<void(UserSettings&)>& change) {
    UserSettings settings = readUserSettings(file);
    change(settings);
    writeUserSettings(file, settings);
}

} // namespace korvane
