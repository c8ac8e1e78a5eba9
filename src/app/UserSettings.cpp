#include "app/UserSettings.h"

#include "base/FileIO.h"
#include "platform/PlatformFolders.h"

#include <nlohmann/json.hpp>

namespace korvane {

namespace {

// One model for every machine, as earlier versions kept it: read as this
// machine's, and dropped once the choices are written by machine.
constexpr const char* singleTargetModelKey = "targetMacModel";
constexpr const char* targetModelsKey = "targetMacModels";
constexpr const char* thisMachine = "this machine";
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

std::string UserSettings::targetModelChoiceFor(const std::string& machine) const {
    const auto it = targetModelChoices.find(machine);
    return it == targetModelChoices.end() ? std::string() : it->second;
}

std::string UserSettings::targetModelOfferFor(const std::string& machine) const {
    for (const auto& [other, choice] : targetModelChoices) {
        if (other != machine) {
            return choice;
        }
    }
    return {};
}

void UserSettings::setTargetModelChoice(const std::string& machine, const std::string& choice) {
    if (choice.empty()) {
        targetModelChoices.erase(machine);
    } else {
        targetModelChoices[machine] = choice;
    }
}

std::string userSettingsMachine(const std::optional<std::filesystem::path>& registryFile) {
    if (!registryFile) {
        return thisMachine;
    }
    std::error_code error;
    const auto absolute = std::filesystem::absolute(*registryFile, error);
    return "registry " + (error ? *registryFile : absolute).lexically_normal().string();
}

std::filesystem::path userSettingsFile() {
    return configurationDirectory() / "KorvaneGenerator" / "settings.json";
}

UserSettings readUserSettings(const std::filesystem::path& file) {
    UserSettings settings;
    const nlohmann::json stored = storedObject(file);
    if (const auto it = stored.find(singleTargetModelKey); it != stored.end() && it->is_string()) {
        settings.setTargetModelChoice(thisMachine, it->get<std::string>());
    }
    if (const auto it = stored.find(targetModelsKey); it != stored.end() && it->is_object()) {
        for (const auto& [machine, choice] : it->items()) {
            if (choice.is_string()) {
                settings.setTargetModelChoice(machine, choice.get<std::string>());
            }
        }
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
    stored.erase(singleTargetModelKey);
    stored[targetModelsKey] = settings.targetModelChoices;
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
