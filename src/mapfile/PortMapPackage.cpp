#include "mapfile/PortMapPackage.h"

#include "base/ByteBuffer.h"
#include "base/FileIO.h"
#include "savedregistry/GuardedPropertyList.h"

#include <fstream>
#include <limits>
#include <memory>
#include <zip.h>

namespace korvane {

namespace fs = std::filesystem;

namespace {

// A package's Info.plist is a few kilobytes; a few hundred controllers'
// worth of ports still stays far below this.
constexpr std::size_t maximumInfoPlistBytes = std::size_t{16} * 1024 * 1024;
// Info.plist nests six levels down to a port's keys.
constexpr int maximumInfoPlistDepth = 64;

constexpr std::string_view infoPlistInBundle = ".kext/Contents/Info.plist";

PortMapPackageParse refuse(std::string reason) {
    return {std::nullopt, std::move(reason)};
}

plist_t dictionaryItem(plist_t dictionary, const char* key) {
    if (plist_get_node_type(dictionary) != PLIST_DICT) {
        return nullptr;
    }
    return plist_dict_get_item(dictionary, key);
}

std::optional<std::int64_t> numberValue(plist_t node) {
    if (plist_get_node_type(node) == PLIST_UINT) {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        if (value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            return static_cast<std::int64_t>(value);
        }
        return std::nullopt;
    }
    if (plist_get_node_type(node) == PLIST_DATA) {
        std::uint64_t length = 0;
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(plist_get_data_ptr(node, &length));
        return bytes ? littleEndianValue(ByteBuffer(bytes, bytes + length)) : std::nullopt;
    }
    return std::nullopt;
}

std::vector<std::string> nameMatches(plist_t node) {
    std::vector<std::string> names;
    if (auto name = plistText(node)) {
        names.push_back(std::move(*name));
    } else if (plist_get_node_type(node) == PLIST_ARRAY) {
        for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
            if (auto element = plistText(plist_array_get_item(node, i))) {
                names.push_back(std::move(*element));
            }
        }
    }
    return names;
}

void readPersonality(std::string_view personalityName, plist_t personality, PortMapPackage& package) {
    plist_t ports = dictionaryItem(dictionaryItem(personality, "IOProviderMergeProperties"), "ports");
    if (plist_get_node_type(ports) != PLIST_DICT) {
        return;
    }
    if (!package.model) {
        if (auto model = plistText(dictionaryItem(personality, "model")); model && !model->empty()) {
            package.model = std::move(model);
        }
    }
    const auto controllerNames = nameMatches(dictionaryItem(personality, "IONameMatch"));
    const std::string primaryMatch = plistText(dictionaryItem(personality, "IOPCIPrimaryMatch")).value_or("");
    forEachDictionaryItem(ports, [&](std::string_view key, plist_t entry) {
        if (plist_get_node_type(entry) != PLIST_DICT) {
            return true;
        }
        PackagePort port{.personality = std::string(personalityName),
                         .controllerNames = controllerNames,
                         .primaryMatch = primaryMatch,
                         .name = plistText(dictionaryItem(entry, "name")).value_or(std::string(key)),
                         .number = numberValue(dictionaryItem(entry, "port")),
                         .connector = numberValue(dictionaryItem(entry, "UsbConnector"))};
        if (!port.number) {
            port.number = numberValue(dictionaryItem(entry, "usb-port-number"));
        }
        package.ports.push_back(std::move(port));
        return true;
    });
}

// The bytes of the one .kext's Info.plist in a ZIP archive.
PortMapPackageParse readFromZip(const fs::path& path) {
    int error = 0;
    std::unique_ptr<zip_t, decltype(&zip_discard)> archive(zip_open(path.c_str(), ZIP_RDONLY, &error),
                                                           &zip_discard);
    if (!archive) {
        return refuse("is not a readable ZIP archive");
    }
    std::vector<zip_uint64_t> candidates;
    const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* name = zip_get_name(archive.get(), static_cast<zip_uint64_t>(i), 0);
        const std::string_view entry = name ? name : "";
        // The Finder's resource copies sit under __MACOSX/ with the same names.
        if (entry.ends_with(infoPlistInBundle) && !entry.starts_with("__MACOSX/")) {
            candidates.push_back(static_cast<zip_uint64_t>(i));
        }
    }
    if (candidates.empty()) {
        return refuse("holds no .kext package");
    }
    if (candidates.size() > 1) {
        return refuse("holds " + std::to_string(candidates.size()) +
                      " .kext packages; unpack it and import the one you want");
    }
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_stat_index(archive.get(), candidates.front(), 0, &stat) != 0 || !(stat.valid & ZIP_STAT_SIZE)) {
        return refuse("is not a readable ZIP archive");
    }
    if (stat.size > maximumInfoPlistBytes) {
        return refuse("holds an Info.plist too large to be a package's");
    }
    std::unique_ptr<zip_file_t, decltype(&zip_fclose)> file(
        zip_fopen_index(archive.get(), candidates.front(), 0), &zip_fclose);
    if (!file) {
        return refuse("holds an Info.plist that can't be unpacked (encrypted or damaged)");
    }
    std::string bytes(static_cast<std::size_t>(stat.size), '\0');
    if (zip_fread(file.get(), bytes.data(), stat.size) != static_cast<zip_int64_t>(stat.size)) {
        return refuse("holds an Info.plist that can't be unpacked (damaged)");
    }
    return parsePackageInfoPlist(bytes);
}

PortMapPackageParse readFromFile(const fs::path& path) {
    // A ZIP of any size is read entry by entry, with the cap on its Info.plist.
    char magic[4] = {};
    if (std::ifstream(path, std::ios::binary).read(magic, sizeof magic) &&
        std::string_view(magic, sizeof magic) == "PK\x03\x04") {
        return readFromZip(path);
    }
    std::error_code error;
    const auto size = fs::file_size(path, error);
    if (!error && size > maximumInfoPlistBytes) {
        return refuse("is too large to be a package's Info.plist");
    }
    const auto bytes = readFileBytes(path);
    if (!bytes) {
        return refuse("could not be read");
    }
    return parsePackageInfoPlist(*bytes);
}

} // namespace

PortMapPackageParse parsePackageInfoPlist(std::string_view bytes) {
    if (bytes.size() > maximumInfoPlistBytes) {
        return refuse("is too large to be a package's Info.plist");
    }
    const PlistPtr root = parseGuardedPropertyList(bytes, maximumInfoPlistDepth);
    if (!root) {
        return refuse("is not a readable property list (malformed, or built to overwhelm a reader)");
    }
    plist_t personalities = dictionaryItem(root.get(), "IOKitPersonalities");
    if (plist_get_node_type(personalities) != PLIST_DICT) {
        return refuse("is no driver package's Info.plist (it has no IOKitPersonalities)");
    }
    PortMapPackage package;
    forEachDictionaryItem(personalities, [&](std::string_view name, plist_t personality) {
        readPersonality(name, personality, package);
        return true;
    });
    if (package.ports.empty()) {
        return refuse("holds no USB port map (no personality with IOProviderMergeProperties ports)");
    }
    return {std::move(package), {}};
}

PortMapPackageParse readPortMapPackage(const fs::path& path) {
    std::error_code error;
    const auto status = fs::status(path, error);
    if (error) {
        return refuse("could not be read (" + error.message() + ")");
    }
    if (fs::is_regular_file(status)) {
        return readFromFile(path);
    }
    if (!fs::is_directory(status)) {
        return refuse("is neither a .kext folder, an Info.plist nor a ZIP");
    }
    if (fs::is_regular_file(path / "Contents" / "Info.plist", error)) {
        return readFromFile(path / "Contents" / "Info.plist");
    }
    // An unpacked Korvane.zip: the work folder with the one package in it.
    std::vector<fs::path> bundles;
    for (fs::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code ignored;
        if (entry->path().extension() == ".kext" &&
            fs::is_regular_file(entry->path() / "Contents" / "Info.plist", ignored)) {
            bundles.push_back(entry->path());
        }
    }
    if (bundles.size() == 1) {
        return readFromFile(bundles.front() / "Contents" / "Info.plist");
    }
    return refuse(bundles.empty() ? "holds no Contents/Info.plist" : "holds several .kext packages");
}

} // namespace korvane
