#include "mapfile/MapFileCodec.h"

#include "base/FileIO.h"
#include "records/Connector.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <limits>

namespace korvane {

namespace {

using json = nlohmann::json;

constexpr const char* formatMarker = "korvane-port-map";
// A map nests four levels; far deeper input is built to exhaust the parser.
constexpr int maximumNesting = 32;

// Thrown inside the reader only; parseMapFile turns it into its result.
struct Damage {
    std::string what;
};

bool isNestingWithinLimit(std::string_view bytes) {
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (inString) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > maximumNesting) {
                return false;
            }
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return true;
}

const json& member(const json& object, const char* key, const std::string& where) {
    const auto it = object.find(key);
    if (it == object.end()) {
        throw Damage{where + " has no \"" + key + "\""};
    }
    return *it;
}

std::string text(const json& value, const std::string& where) {
    if (!value.is_string()) {
        throw Damage{where + " is not a text"};
    }
    return value.get<std::string>();
}

std::int64_t wholeNumber(const json& value, const std::string& where) {
    if (value.is_number_unsigned() &&
        value.get<std::uint64_t>() <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        return static_cast<std::int64_t>(value.get<std::uint64_t>());
    }
    if (value.is_number_integer() && !value.is_number_unsigned()) {
        return value.get<std::int64_t>();
    }
    throw Damage{where + " is not a whole number"};
}

const json& object(const json& value, const std::string& where) {
    if (!value.is_object()) {
        throw Damage{where + " is not an object"};
    }
    return value;
}

std::chrono::system_clock::time_point parseTime(const std::string& value, const std::string& where) {
    using namespace std::chrono;
    auto field = [&](std::size_t at, std::size_t length) {
        int number = -1;
        const char* begin = value.data() + at;
        const auto [end, error] = std::from_chars(begin, begin + length, number);
        return error == std::errc() && end == begin + length ? number : -1;
    };
    const bool isShaped = value.size() == 20 && value[4] == '-' && value[7] == '-' && value[10] == 'T' &&
                          value[13] == ':' && value[16] == ':' && value[19] == 'Z';
    if (isShaped) {
        const year_month_day date{year(field(0, 4)), month(static_cast<unsigned>(field(5, 2))),
                                  day(static_cast<unsigned>(field(8, 2)))};
        const int hour = field(11, 2);
        const int minute = field(14, 2);
        const int second = field(17, 2);
        // The clock counts nanoseconds from 1970 in 64 bits: a year far from
        // now doesn't fit, and no device was seen before this program was.
        const int yearNumber = field(0, 4);
        if (yearNumber >= 1970 && yearNumber <= 2200 && date.ok() && hour >= 0 && hour < 24 && minute >= 0 &&
            minute < 60 && second >= 0 && second < 60) {
            return sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
        }
    }
    throw Damage{where + " is not a UTC time like 2026-11-22T13:03:09Z"};
}

USBControllerMap readController(const json& value, const std::string& where) {
    object(value, where);
    USBControllerMap controller;
    controller.name = text(member(value, "name", where), where + " name");
    controller.location = text(member(value, "location", where), where + " location");
    controller.vendorID = wholeNumber(member(value, "vendorID", where), where + " vendorID");
    controller.deviceID = wholeNumber(member(value, "deviceID", where), where + " deviceID");
    controller.ioNameMatch = text(member(value, "ioNameMatch", where), where + " ioNameMatch");
    if (value.contains("providerClass")) {
        controller.providerClass = text(value["providerClass"], where + " providerClass");
    }
    if (value.contains("usbDeviceName")) {
        controller.usbDeviceName = text(value["usbDeviceName"], where + " usbDeviceName");
    }
    return controller;
}

// The text of a port's field: a nickname the window or the command line
// would refuse makes the map damaged, so nothing hostile reaches a terminal.
std::string portText(const json& value, const std::string& where) {
    std::string field = text(value, where);
    if (const auto problem = portTextProblem(field)) {
        throw Damage{where + " is refused: " + *problem};
    }
    return field;
}

void readPort(const std::string& key, const json& value, MappingSession& session) {
    if (key.empty()) {
        throw Damage{"a port has an empty key"};
    }
    // The key is shown in messages: one a terminal would take for commands is not.
    if (const auto problem = controlCharacterProblem(key)) {
        throw Damage{"a port key is refused: " + *problem};
    }
    const std::string where = "port \"" + key + "\"";
    object(value, where);
    SessionPort port;
    if (value.contains("selected")) {
        if (!value["selected"].is_boolean()) {
            throw Damage{where + " selected is not true or false"};
        }
        port.selected = value["selected"].get<bool>();
    }
    if (value.contains("connector")) {
        const std::int64_t code = wholeNumber(value["connector"], where + " connector");
        if (!isConnectorCode(code)) {
            throw Damage{where + " connector " + std::to_string(code) + " is not from 0 to 255"};
        }
        port.connector = code;
    }
    if (value.contains("nickname")) {
        port.nickname = portText(value["nickname"], where + " nickname");
    }
    if (value.contains("note")) {
        port.note = portText(value["note"], where + " note");
    }
    if (value.contains("socket")) {
        port.socket = text(value["socket"], where + " socket");
        if (const auto problem = controlCharacterProblem(port.socket)) {
            throw Damage{where + " socket is refused: " + *problem};
        }
    }
    if (value.contains("seen")) {
        const json& seen = object(value["seen"], where + " seen");
        std::string device = text(member(seen, "device", where + " seen"), where + " seen device");
        if (const auto problem = controlCharacterProblem(device)) {
            throw Damage{where + " seen device is refused: " + *problem};
        }
        port.sighting = PortSighting{
            std::move(device), parseTime(text(member(seen, "lastSeen", where + " seen"), where + " lastSeen"),
                                         where + " lastSeen")};
    }
    session.edit(key, [&port](SessionPort& entry) { entry = std::move(port); });
}

USBMapFile readMap(const json& document) {
    USBMapFile map;
    const json& machine = object(member(document, "machine", "the map"), "machine");
    const json& controllers = member(machine, "controllers", "machine");
    if (!controllers.is_array()) {
        throw Damage{"machine controllers is not a list"};
    }
    for (std::size_t i = 0; i < controllers.size(); ++i) {
        map.machineControllers.push_back(
            readController(controllers[i], "controller " + std::to_string(i + 1)));
    }
    if (document.contains("targetModel")) {
        map.session.targetModel = text(document["targetModel"], "targetModel");
    }
    const json& ports = object(member(document, "ports", "the map"), "ports");
    for (const auto& [key, value] : ports.items()) {
        readPort(key, value, map.session);
    }
    return map;
}

} // namespace

std::set<std::string> USBMapFile::portKeys() const {
    std::set<std::string> keys;
    for (const auto& [key, port] : session.ports()) {
        keys.insert(keys.end(), key);
    }
    return keys;
}

MapFileParse parseMapFile(std::string_view bytes) {
    auto refuse = [](MapFileProblem problem, std::string reason) {
        return MapFileParse{std::nullopt, problem, std::move(reason)};
    };
    const bool mentionsFormat = bytes.find(formatMarker) != std::string_view::npos;
    if (bytes.size() > maximumMapFileBytes) {
        return refuse(MapFileProblem::unreadable, "is too large to be a port map");
    }
    if (!isNestingWithinLimit(bytes)) {
        return refuse(mentionsFormat ? MapFileProblem::damaged : MapFileProblem::notAMap,
                      mentionsFormat ? "is damaged (nested far too deep)"
                                     : "is not a KorvaneGenerator port map");
    }
    const json document = json::parse(bytes, nullptr, /*allow_exceptions=*/false);
    const auto marker = document.is_object() ? document.find("format") : document.end();
    if (document.is_discarded()) {
        // A cut-off or garbled map still names its format near the start.
        return mentionsFormat ? refuse(MapFileProblem::damaged, "is damaged (not complete, valid JSON)")
                              : refuse(MapFileProblem::notAMap, "is not a KorvaneGenerator port map");
    }
    if (!document.is_object() || marker == document.end() || *marker != formatMarker) {
        return refuse(MapFileProblem::notAMap, "is not a KorvaneGenerator port map");
    }
    try {
        const auto version = document.find("formatVersion");
        if (version == document.end()) {
            throw Damage{"the map has no \"formatVersion\""};
        }
        const std::int64_t number = wholeNumber(*version, "formatVersion");
        if (number > USBMapFile::currentFormatVersion) {
            return refuse(MapFileProblem::newerFormat,
                          "was saved by a newer KorvaneGenerator (map format " + std::to_string(number) +
                              "; this version reads format " +
                              std::to_string(USBMapFile::currentFormatVersion) + ")");
        }
        if (number < 1) {
            throw Damage{"formatVersion " + std::to_string(number) + " does not exist"};
        }
        return {readMap(document), MapFileProblem::none, {}};
    } catch (const Damage& damage) {
        return refuse(MapFileProblem::damaged, "is damaged (" + damage.what + ")");
    } catch (const json::exception&) {
        return refuse(MapFileProblem::damaged, "is damaged (a value of the wrong kind)");
    }
}

nlohmann::json controllerIdentityJSON(const USBControllerMap& controller) {
    return {{"name", controller.name},
            {"location", controller.location},
            {"vendorID", controller.vendorID},
            {"deviceID", controller.deviceID},
            {"ioNameMatch", controller.ioNameMatch},
            {"providerClass", controller.providerClass},
            {"usbDeviceName", controller.usbDeviceName}};
}

nlohmann::json sightingJSON(const PortSighting& sighting) {
    return {{"device", sighting.deviceName}, {"lastSeen", utcTimeText(sighting.lastSeen)}};
}

std::string mapFileText(const USBMapFile& map) {
    json document;
    document["format"] = formatMarker;
    document["formatVersion"] = USBMapFile::currentFormatVersion;
    auto controllers = json::array();
    for (const auto& controller : map.machineControllers) {
        controllers.push_back(controllerIdentityJSON(controller));
    }
    document["machine"] = {{"controllers", std::move(controllers)}};
    if (map.session.targetModel) {
        document["targetModel"] = *map.session.targetModel;
    }
    auto ports = json::object();
    for (const auto& [key, entry] : map.session.ports()) {
        json port;
        port["selected"] = entry.selected;
        if (entry.connector) {
            port["connector"] = *entry.connector;
        }
        if (!entry.nickname.empty()) {
            port["nickname"] = entry.nickname;
        }
        if (!entry.note.empty()) {
            port["note"] = entry.note;
        }
        if (!entry.socket.empty()) {
            port["socket"] = entry.socket;
        }
        if (entry.sighting) {
            port["seen"] = sightingJSON(*entry.sighting);
        }
        ports[key] = std::move(port);
    }
    document["ports"] = std::move(ports);
    return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

MapFileParse readMapFile(const std::filesystem::path& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (error) {
        return {std::nullopt, MapFileProblem::unreadable, "could not be read (" + error.message() + ")"};
    }
    if (!std::filesystem::is_regular_file(status)) {
        return {std::nullopt, MapFileProblem::unreadable, "is not a file"};
    }
    const auto size = std::filesystem::file_size(path, error);
    if (!error && size > maximumMapFileBytes) {
        return {std::nullopt, MapFileProblem::unreadable, "is too large to be a port map"};
    }
    errno = 0;
    const auto bytes = readFileBytes(path);
    if (!bytes) {
        return {std::nullopt, MapFileProblem::unreadable,
                std::string("could not be read (") + std::strerror(errno ? errno : EIO) + ")"};
    }
    return parseMapFile(*bytes);
}

void writeMapFile(const std::filesystem::path& path, const USBMapFile& map) {
    writeFileAtomically(path, mapFileText(map));
}

} // namespace korvane
