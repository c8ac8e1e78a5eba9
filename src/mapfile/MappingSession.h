#pragma once

#include "mapfile/PortSighting.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace korvane {

// What the session knows of one port: the user's decisions and the last
// device seen in it. A new per-port field is a member here, a line in the
// map file codec and whatever front shows or sets it; equality, saving,
// "unsaved" and the stale keys a rescan keeps all follow from the member.
//
// Every member has a default, so a port made with designated initialisers
// names only what it sets.
struct SessionPort {
    bool selected = false;
    // The user's connector pick; none keeps the scan's.
    std::optional<std::int64_t> connector{};
    // The user's name for the socket; empty when none.
    std::string nickname{};
    // The user's remark about the socket ("behind the card reader"); empty when none.
    std::string note{};
    // The socket on the case this port was found in by plugging: the key of
    // the port the first device landed on, shared by every port of that
    // socket (its companion, the other SuperSpeed port of a Type-C socket).
    // Empty when plugging has not placed the port.
    std::string socket{};
    std::optional<PortSighting> sighting{};

    // Nothing said about the port: the session holds no entry for it.
    bool isBlank() const { return *this == SessionPort{}; }
    bool operator==(const SessionPort&) const = default;
};

// The most a nickname or note may hold, in characters: the row and the table
// have room for no more.
inline constexpr std::size_t maximumPortTextLength = 64;

// Why `text` can't be a text the user gives a port (a nickname, a note), or none when
// it can: valid UTF-8, no control characters (they would reach a terminal as
// escape sequences), at most maximumPortTextLength characters. Callers trim
// the surrounding blanks first; the rule is the same for the window, the
// command line and a map file.
std::optional<std::string> portTextProblem(std::string_view text);
// The part of that rule for texts of any length (port keys): why `text` can't
// be shown on a terminal as it is, or none.
std::optional<std::string> controlCharacterProblem(std::string_view text);

// A mapping session: everything the user decided, keyed by port key
// (usbPortStableID), the one identity that survives a rescan, a reboot and,
// where names and numbers agree, the other system; and the Mac model the
// package is for. Keys no scanned port has stay, so that a map made on one
// machine or before a rescan loses nothing.
class MappingSession {
  public:
    // The Mac model the package is for; none when not chosen (never empty).
    std::optional<std::string> targetModel;

    const std::map<std::string, SessionPort>& ports() const { return ports_; }
    // The port's entry; a blank one for a key the session has nothing on.
    const SessionPort& port(const std::string& key) const;
    // Changes the port's entry; an entry left blank is dropped, so two
    // sessions that say the same are equal.
    void edit(const std::string& key, const std::function<void(SessionPort&)>& change);
    // Changes every entry, as edit() does.
    void editAll(const std::function<void(SessionPort&)>& change);

    std::set<std::string> selectedKeys() const;
    bool isSelected(const std::string& key) const { return port(key).selected; }
    // Checks exactly `keys`, unchecking every other port.
    void selectOnly(const std::set<std::string>& keys);

    // What a scan shows: `devices` (port key to device) were in their ports
    // at `when`. The ports are checked and their sightings renewed.
    void sawDevices(const std::map<std::string, std::string>& devices,
                    std::chrono::system_clock::time_point when);
    // A Reset Ports: every pick forgotten, only the ports with a device checked.
    void reset(const std::map<std::string, std::string>& devices, std::chrono::system_clock::time_point when);
    // Sightings are facts, not choices: where `other` saw a device later than
    // this session did, its sighting is taken.
    void takeLaterSightings(const MappingSession& other);

    // The session as "unsaved changes" compares it: a sighting by its device
    // only, since its time moves with every scan.
    MappingSession comparable() const;

    bool operator==(const MappingSession&) const = default;

  private:
    std::map<std::string, SessionPort> ports_;
};

} // namespace korvane
