#include "mapfile/MappingSession.h"

#include "base/Text.h"

#include <cstdio>

namespace korvane {

namespace {

// The code point starting at `at` of valid UTF-8, and its length in bytes.
std::pair<char32_t, std::size_t> codePointAt(std::string_view text, std::size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    char32_t value = length == 1 ? lead : lead & (0x7f >> length);
    for (std::size_t i = 1; i < length; ++i) {
        value = (value << 6) | (static_cast<unsigned char>(text[at + i]) & 0x3f);
    }
    return {value, length};
}

} // namespace

std::optional<std::string> controlCharacterProblem(std::string_view text) {
    if (!isValidUTF8(text)) {
        return "it is not valid UTF-8 text";
    }
    for (std::size_t at = 0; at < text.size();) {
        const auto [value, length] = codePointAt(text, at);
        // C0, DEL and C1: a terminal takes them for commands.
        if (value < 0x20 || (value >= 0x7f && value < 0xa0)) {
            char code[16];
            std::snprintf(code, sizeof code, "U+%04X", static_cast<unsigned>(value));
            return std::string("it holds a control character (") + code + ")";
        }
        at += length;
    }
    return std::nullopt;
}

std::optional<std::string> portTextProblem(std::string_view text) {
    if (auto problem = controlCharacterProblem(text)) {
        return problem;
    }
    std::size_t characters = 0;
    for (std::size_t at = 0; at < text.size(); ++characters) {
        at += codePointAt(text, at).second;
    }
    if (characters > maximumPortTextLength) {
        return "it is longer than " + std::to_string(maximumPortTextLength) + " characters";
    }
    return std::nullopt;
}

const SessionPort& MappingSession::port(const std::string& key) const {
    static const SessionPort blank;
    const auto it = ports_.find(key);
    return it == ports_.end() ? blank : it->second;
}

void MappingSession::edit(const std::string& key, const std::function<void(SessionPort&)>& change) {
    auto [it, isNew] = ports_.try_emplace(key);
    change(it->second);
    if (it->second.isBlank()) {
        ports_.erase(it);
    }
}

void MappingSession::editAll(const std::function<void(SessionPort&)>& change) {
    for (auto it = ports_.begin(); it != ports_.end();) {
        change(it->second);
        it = it->second.isBlank() ? ports_.erase(it) : std::next(it);
    }
}

std::set<std::string> MappingSession::selectedKeys() const {
    std::set<std::string> keys;
    for (const auto& [key, port] : ports_) {
        if (port.selected) {
            keys.insert(keys.end(), key);
        }
    }
    return keys;
}

void MappingSession::selectOnly(const std::set<std::string>& keys) {
    editAll([](SessionPort& port) { port.selected = false; });
    for (const auto& key : keys) {
        edit(key, [](SessionPort& port) { port.selected = true; });
    }
}

void MappingSession::sawDevices(const std::map<std::string, std::string>& devices,
                                std::chrono::system_clock::time_point when) {
    for (const auto& [key, device] : devices) {
        edit(key, [&, &device = device](SessionPort& port) {
            port.selected = true;
            port.sighting = PortSighting{device, when};
        });
    }
}

void MappingSession::reset(const std::map<std::string, std::string>& devices,
                           std::chrono::system_clock::time_point when) {
    editAll([](SessionPort& port) {
        port.selected = false;
        port.connector.reset();
    });
    sawDevices(devices, when);
}

void MappingSession::takeLaterSightings(const MappingSession& other) {
    for (const auto& [key, theirs] : other.ports_) {
        if (!theirs.sighting) {
            continue;
        }
        edit(key, [&theirs = theirs](SessionPort& port) {
            if (!port.sighting || port.sighting->lastSeen < theirs.sighting->lastSeen) {
                port.sighting = theirs.sighting;
            }
        });
    }
}

MappingSession MappingSession::comparable() const {
    MappingSession copy = *this;
    for (auto& [key, port] : copy.ports_) {
        if (port.sighting) {
            port.sighting->lastSeen = {};
        }
    }
    return copy;
}

} // namespace korvane
