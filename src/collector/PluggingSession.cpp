#include "collector/PluggingSession.h"

#include "base/Text.h"
#include "collector/PortBudget.h"
#include "records/Connector.h"

#include <algorithm>
#include <utility>

namespace korvane {

namespace {

// The port name of a key "vvvv:dddd|controller|location|SS01|hex" is its
// last field but one.
bool isSuperSpeed(const std::string& key) {
    const auto last = key.rfind('|');
    const auto before = last == std::string::npos || last == 0 ? std::string::npos : key.rfind('|', last - 1);
    return before != std::string::npos && key.compare(before + 1, 2, "SS") == 0;
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const auto& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

std::string inQuotes(const std::string& name) {
    return "\"" + name + "\"";
}

std::string typeText(std::int64_t code) {
    const auto label = connectorMenuLabel(code);
    return label ? std::string(*label) + " (" + std::to_string(code) + ")"
                 : "connector " + std::to_string(code);
}

// "4 of 15": the checked ports. A run with none checked would write the
// built-in template instead, which is the budget's count but no port kept.
std::string keptText(const USBControllerMap& controller, const std::set<std::string>& selected) {
    const auto kept =
        std::count_if(controller.ports.begin(), controller.ports.end(), [&](const USBPortMap& port) {
            return selected.contains(usbPortStableID(controller, port));
        });
    return std::to_string(kept) + " of " + std::to_string(portBudgetLimit);
}

} // namespace

PluggingSession::PluggingSession(std::shared_ptr<CollectorModel> model, std::filesystem::path mapFile)
    : model_(std::move(model)), mapFile_(std::move(mapFile)) {
    previous_ = activeDevices();
    for (const auto& [key, device] : previous_) {
        // A port a map being resumed already placed is a socket, not internal.
        if (model_->session().port(key).socket.empty()) {
            neverReplugged_.emplace(key, device);
        }
    }
    for (const auto& [key, port] : model_->session().ports()) {
        if (!port.socket.empty() && port.sighting) {
            landed_.insert(key);
        }
    }
    observer_ = model_->observe([this] { refreshed(); });
}

PluggingSession::~PluggingSession() {
    model_->stopObserving(observer_);
}

std::map<std::string, std::string> PluggingSession::activeDevices() const {
    std::map<std::string, std::string> devices;
    for (const auto& controller : model_->scannedControllers()) {
        for (const auto& port : controller.ports) {
            if (auto device = trimmed(port.activeDevice); !device.empty()) {
                devices.emplace(usbPortStableID(controller, port), std::move(device));
            }
        }
    }
    return devices;
}

// Any change of the model calls here; only a scan changes which devices are
// where, so comparing them finds the arrivals of a hotplug refresh.
void PluggingSession::refreshed() {
    auto now = activeDevices();
    if (now == previous_) {
        return;
    }
    std::vector<ScannedPort> arrivals;
    for (const auto& controller : model_->scannedControllers()) {
        for (const auto& port : controller.ports) {
            const auto key = usbPortStableID(controller, port);
            const auto current = now.find(key);
            const auto before = previous_.find(key);
            if (current != now.end() && (before == previous_.end() || before->second != current->second)) {
                arrivals.push_back({&controller, &port});
            }
        }
    }
    for (auto it = neverReplugged_.begin(); it != neverReplugged_.end();) {
        const auto current = now.find(it->first);
        it =
            current == now.end() || current->second != it->second ? neverReplugged_.erase(it) : std::next(it);
    }
    // Kept before the arrivals change the session, which calls back here.
    previous_ = std::move(now);
    for (const auto& landed : arrivals) {
        arrived(landed);
    }
}

void PluggingSession::arrived(const ScannedPort& landed) {
    const auto& controller = *landed.controller;
    const auto& port = *landed.port;
    const auto key = usbPortStableID(controller, port);
    const auto companion = model_->companionOf(port);
    const auto companionKey = companion ? usbPortStableID(*companion->controller, *companion->port) : "";
    PlugSighting sighting;
    sighting.portKey = key;
    sighting.text = "Seen: " + port.name +
                    (companion ? " (" + model_->companionText(controller, port) + ")" : "") + " on " +
                    controller.displayName() + ": " + trimmed(port.activeDevice);

    std::string socket = model_->session().port(key).socket;
    if (socket.empty() && companion) {
        socket = model_->session().port(companionKey).socket;
    }
    const std::string socketName = socket.empty() ? "" : model_->session().port(socket).nickname;
    const std::string socketText =
        socketName.empty() ? "the socket of " + nameOf(socket) : inQuotes(socketName);

    if (socket.empty()) {
        sighting.kind = PlugSighting::Kind::newSocket;
        socket = key;
    } else if (landed_.contains(key)) {
        sighting.kind = PlugSighting::Kind::again;
        sighting.text += ", again: " + socketText + ". The same socket turned over? Give its name again.";
    } else {
        sighting.kind = PlugSighting::Kind::otherHalf;
        sighting.text += ": the other half of " + socketText + ".";
    }
    landed_.insert(key);
    // Both halves join the socket, checked together, with its name; a name
    // given before plugging stays until the socket gets one.
    for (const auto& member : {key, companionKey}) {
        if (!member.empty()) {
            editKey(member, [&](SessionPort& entry) {
                entry.selected = true;
                entry.socket = socket;
                if (!socketName.empty()) {
                    entry.nickname = socketName;
                }
            });
        }
    }
    if (sighting.kind == PlugSighting::Kind::otherHalf) {
        typeSocket(socket, false);
    } else {
        sighting.asksName = true;
        awaiting_.push_back({key, sighting.kind});
    }
    saveQuietly();
    if (onSighting) {
        onSighting(sighting);
    }
}

std::string PluggingSession::nameSocket(const std::string& text) {
    if (awaiting_.empty()) {
        return "No socket waits for a name.";
    }
    const std::string name = trimmed(text);
    if (const auto problem = portTextProblem(name)) {
        return "That name can't be used: " + *problem + ". Give another, or an empty line.";
    }
    const Awaiting awaiting = awaiting_.front();
    awaiting_.pop_front();
    const std::string socket = model_->session().port(awaiting.portKey).socket;
    std::string line;
    if (name.empty()) {
        // A name one half had before plugging becomes the socket's.
        std::string kept;
        for (const auto& key : portsOf(socket)) {
            if (kept.empty()) {
                kept = model_->session().port(key).nickname;
            }
        }
        if (awaiting.kind == PlugSighting::Kind::again) {
            line = "The socket stays as it was.";
        } else if (!kept.empty()) {
            for (const auto& key : portsOf(socket)) {
                editKey(key, [&kept](SessionPort& entry) { entry.nickname = kept; });
            }
            line = "The socket of " + nameOf(socket) + " keeps the name " + inQuotes(kept) + ".";
        } else {
            line = "The socket of " + nameOf(socket) + " has no name.";
        }
    } else if (const auto target = socketNamed(name)) {
        const bool turnedOver =
            *target == socket && awaiting.kind == PlugSighting::Kind::again && isSuperSpeed(awaiting.portKey);
        if (*target != socket) {
            join(socket, *target);
        }
        typeSocket(*target, turnedOver);
        std::vector<std::string> names;
        for (const auto& key : portsOf(*target)) {
            names.push_back(nameOf(key));
        }
        line = "Same socket as " + inQuotes(name) + ": " + joined(names);
        if (const auto code = model_->session().port(*target).connector) {
            line += ", " + typeText(*code);
        }
        line += ".";
    } else {
        for (const auto& key : portsOf(socket)) {
            editKey(key, [&name](SessionPort& entry) { entry.nickname = name; });
        }
        line = "Named " + inQuotes(name) + ".";
    }
    saveQuietly();
    return line;
}

std::vector<std::string> PluggingSession::portsOf(const std::string& socket) const {
    std::vector<std::string> keys;
    for (const auto& [key, port] : model_->session().ports()) {
        if (!socket.empty() && port.socket == socket) {
            keys.push_back(key);
        }
    }
    return keys;
}

std::optional<std::string> PluggingSession::socketNamed(const std::string& name) const {
    for (const auto& [key, port] : model_->session().ports()) {
        if (!port.socket.empty() && port.nickname == name) {
            return port.socket;
        }
    }
    return std::nullopt;
}

void PluggingSession::join(const std::string& from, const std::string& into) {
    const std::string name = model_->session().port(into).nickname;
    for (const auto& key : portsOf(from)) {
        editKey(key, [&](SessionPort& entry) {
            entry.socket = into;
            entry.nickname = name;
        });
    }
}

// Two SuperSpeed ports in one socket are the two sides of a Type-C plug
// without a switch; one SuperSpeed port seen both ways has a switch.
void PluggingSession::typeSocket(const std::string& socket, bool turnedOverOnOnePort) {
    const auto keys = portsOf(socket);
    const auto superSpeed = std::count_if(keys.begin(), keys.end(), isSuperSpeed);
    std::optional<std::int64_t> code;
    if (superSpeed >= 2) {
        code = connector::typeC;
    } else if (turnedOverOnOnePort) {
        code = connector::typeCWithSwitch;
    }
    if (code) {
        for (const auto& key : keys) {
            editKey(key, [&code](SessionPort& entry) { entry.connector = code; });
        }
    }
}

void PluggingSession::editKey(const std::string& key, const std::function<void(SessionPort&)>& change) {
    for (const auto& controller : model_->scannedControllers()) {
        for (const auto& port : controller.ports) {
            if (usbPortStableID(controller, port) == key) {
                model_->editPort(controller, port, change);
                return;
            }
        }
    }
}

std::string PluggingSession::nameOf(const std::string& key) const {
    for (const auto& controller : model_->scannedControllers()) {
        for (const auto& port : controller.ports) {
            if (usbPortStableID(controller, port) == key) {
                return controller.displayName() + " " + port.name;
            }
        }
    }
    return key;
}

std::vector<std::string> PluggingSession::startLines() const {
    std::vector<std::string> lines;
    const auto selected = model_->selectedPortIDs();
    for (const auto& controller : model_->scannedControllers()) {
        lines.push_back(controller.displayName() + ": " + std::to_string(controller.ports.size()) +
                        " ports, " + keptText(controller, selected) + " kept");
    }
    lines.push_back(std::string(instruction) + ".");
    return lines;
}

std::string PluggingSession::progressText() const {
    const auto count = sockets().size();
    std::string text = std::to_string(count) + (count == 1 ? " socket" : " sockets") + " found; ports kept:";
    const auto selected = model_->selectedPortIDs();
    bool first = true;
    for (const auto& controller : model_->scannedControllers()) {
        text += (first ? " " : ", ") + controller.displayName() + " " + keptText(controller, selected);
        first = false;
    }
    const auto unseen = portsNotSeen().size();
    return text + "; not seen yet: " + std::to_string(unseen) + (unseen == 1 ? " port" : " ports");
}

std::vector<PluggedSocket> PluggingSession::sockets() const {
    std::vector<PluggedSocket> found;
    for (const auto& controller : model_->scannedControllers()) {
        for (const auto& port : controller.ports) {
            const auto& entry = model_->session().port(usbPortStableID(controller, port));
            if (entry.socket.empty()) {
                continue;
            }
            auto socket = std::find_if(found.begin(), found.end(), [&entry](const PluggedSocket& each) {
                return each.id == entry.socket;
            });
            if (socket == found.end()) {
                found.push_back(
                    {.id = entry.socket, .name = entry.nickname, .portNames = {}, .connector = {}});
                socket = std::prev(found.end());
            }
            socket->portNames.push_back(controller.displayName() + " " + port.name);
            if (entry.connector == connector::typeC || entry.connector == connector::typeCWithSwitch) {
                socket->connector = entry.connector;
            }
        }
    }
    return found;
}

std::vector<std::string> PluggingSession::portsNotSeen() const {
    std::vector<std::string> names;
    for (const auto& controller : model_->scannedControllers()) {
        for (const auto& port : controller.ports) {
            const auto key = usbPortStableID(controller, port);
            if (model_->session().port(key).socket.empty() && !landed_.contains(key) &&
                !neverReplugged_.contains(key)) {
                names.push_back(controller.displayName() + " " + port.name);
            }
        }
    }
    return names;
}

std::vector<std::string> PluggingSession::internalCandidates() const {
    std::vector<std::string> names;
    for (const auto& [key, device] : neverReplugged_) {
        names.push_back(nameOf(key) + " (" + device + ")");
    }
    return names;
}

std::vector<std::string> PluggingSession::keepCandidatesAsInternal() {
    const auto names = internalCandidates();
    for (const auto& [key, device] : neverReplugged_) {
        editKey(key, [](SessionPort& entry) {
            entry.selected = true;
            entry.connector = connector::internal;
        });
    }
    if (!names.empty()) {
        saveQuietly();
    }
    return names;
}

std::vector<std::string> PluggingSession::summaryLines() const {
    std::vector<std::string> lines;
    const auto found = sockets();
    lines.push_back(std::to_string(found.size()) + (found.size() == 1 ? " socket:" : " sockets:"));
    for (const auto& socket : found) {
        const auto code = socket.connector ? *socket.connector : model_->session().port(socket.id).connector;
        std::string type;
        if (code) {
            type = typeText(*code);
        } else {
            for (const auto& controller : model_->scannedControllers()) {
                for (const auto& port : controller.ports) {
                    if (usbPortStableID(controller, port) == socket.id) {
                        type = typeText(model_->connectorFor(controller, port));
                    }
                }
            }
        }
        lines.push_back("  " + (socket.name.empty() ? std::string("(no name)") : inQuotes(socket.name)) +
                        ": " + joined(socket.portNames) + "; " + type);
    }
    if (const auto unseen = portsNotSeen(); !unseen.empty()) {
        lines.push_back("Never seen (uncheck them to leave them out): " + joined(unseen));
    }
    if (const auto internal = internalCandidates(); !internal.empty()) {
        lines.push_back("In use from the start and never replugged, so likely built in (type them Internal, "
                        "255): " +
                        joined(internal));
    }
    const auto selected = model_->selectedPortIDs();
    for (const auto& controller : model_->scannedControllers()) {
        const auto budget = portBudget(controller, selected);
        if (!budget.isOverLimit()) {
            continue;
        }
        // Checked ports no socket holds go first: nothing showed they are used.
        std::vector<std::string> spare;
        for (const auto& port : controller.ports) {
            const auto key = usbPortStableID(controller, port);
            if (selected.contains(key) && model_->session().port(key).socket.empty()) {
                spare.push_back(port.name);
            }
        }
        const auto excess = budget.count() - portBudgetLimit;
        std::string line = overLimitText(budget) + ": uncheck " + std::to_string(excess);
        if (spare.size() >= excess) {
            line += " of " + joined(spare);
        } else {
            line += " ports" + (spare.empty() ? std::string() : ", among them " + joined(spare));
        }
        lines.push_back(line + ".");
    }
    return lines;
}

MapOutcome PluggingSession::save() {
    return model_->saveMap(mapFile_);
}

void PluggingSession::saveQuietly() {
    const MapOutcome outcome = save();
    if (!outcome.succeeded && onSaveFailure) {
        onSaveFailure(outcome.summary);
    }
}

} // namespace korvane
