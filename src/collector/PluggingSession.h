#pragma once

#include "collector/CollectorModel.h"

#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace korvane {

// What one device arriving told about the sockets on the case.
struct PlugSighting {
    enum class Kind {
        // A port no socket holds yet: a new socket, to be named.
        newSocket,
        // A port of a socket found before (its other half): nothing to ask.
        otherHalf,
        // The very port a device landed on before: a replug, or the plug
        // turned over; asked again, since only the user knows which.
        again,
    };
    Kind kind = Kind::newSocket;
    std::string portKey;
    // "Seen: SS01 (with HS01) on XHC1: SanDisk Ultra", and what follows for
    // a port already placed.
    std::string text;
    // Whether the session now waits for nameSocket().
    bool asksName = false;
};

// One socket as plugging found it.
struct PluggedSocket {
    // The key of the port its first device landed on.
    std::string id;
    std::string name;
    // "XHC1 HS01", in scan order.
    std::vector<std::string> portNames;
    // 9 or 10 once plugging showed it is Type-C; none keeps the scan's types.
    std::optional<std::int64_t> connector;
};

// Map by plugging: the user plugs a device into each socket they want to
// keep, and every device that arrives names its socket. Driven by the
// model's hotplug refresh (it rescans after the debounce); the same for the
// window and the terminal, which show its texts and pass the names on.
//
// Make it after the model's first scan (and after opening a map to resume):
// the devices present then are the start. Main thread only, like the model.
class PluggingSession {
  public:
    static constexpr const char* instruction = "Plug a device into a socket you want to keep: a USB 3 "
                                               "device first, then a USB 2 device into the same socket";

    // Saves to `mapFile` after every socket.
    PluggingSession(std::shared_ptr<CollectorModel> model, std::filesystem::path mapFile);
    ~PluggingSession();
    PluggingSession(const PluggingSession&) = delete;
    PluggingSession& operator=(const PluggingSession&) = delete;

    // Told of each arrival, in order, on the main thread.
    std::function<void(const PlugSighting&)> onSighting;
    // Told when saving the map failed, with the reason; the session goes on.
    std::function<void(const std::string&)> onSaveFailure;

    // Per controller its ports and the budget, then the instruction.
    std::vector<std::string> startLines() const;
    // "2 sockets found; ports kept: XHC1 4 of 15; not seen yet: 12 ports".
    std::string progressText() const;

    // Whether a sighting waits for its socket's name.
    bool isAwaitingName() const { return !awaiting_.empty(); }
    // Names the socket of the oldest sighting waiting: empty leaves it
    // unnamed (or, for a port seen before, as it was); the name of an earlier
    // socket joins the ports into that one. Gives the line to show; a name
    // the port text rule refuses gives the reason and keeps waiting.
    std::string nameSocket(const std::string& name);

    std::vector<PluggedSocket> sockets() const;
    // Ports no device landed on and no socket holds, as "XHC1 HS03".
    std::vector<std::string> portsNotSeen() const;
    // Ports with a device from the start that never left (Bluetooth,
    // cameras): internal rather than sockets.
    std::vector<std::string> internalCandidates() const;
    // Types those ports internal (255) and gives their names.
    std::vector<std::string> keepCandidatesAsInternal();

    // The sockets with their names and types, the ports never seen, the
    // internal candidates, and each controller over the budget with what
    // to uncheck.
    std::vector<std::string> summaryLines() const;

    // Saves the session to the map file now.
    MapOutcome save();

  private:
    struct Awaiting {
        std::string portKey;
        PlugSighting::Kind kind;
    };

    void refreshed();
    void arrived(const ScannedPort& landed);
    // Every port of the socket, by key.
    std::vector<std::string> portsOf(const std::string& socket) const;
    std::optional<std::string> socketNamed(const std::string& name) const;
    void join(const std::string& from, const std::string& into);
    // Types the socket Type-C when it holds two SuperSpeed ports.
    void typeSocket(const std::string& socket, bool turnedOverOnOnePort);
    void editKey(const std::string& key, const std::function<void(SessionPort&)>& change);
    std::string nameOf(const std::string& key) const;
    std::map<std::string, std::string> activeDevices() const;
    void saveQuietly();

    std::shared_ptr<CollectorModel> model_;
    std::filesystem::path mapFile_;
    std::size_t observer_ = 0;
    // The devices of the last scan seen, by port key.
    std::map<std::string, std::string> previous_;
    // Present at the start and not gone since.
    std::map<std::string, std::string> neverReplugged_;
    // The ports a device landed on while plugging.
    std::set<std::string> landed_;
    std::deque<Awaiting> awaiting_;
};

} // namespace korvane
