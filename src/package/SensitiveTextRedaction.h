#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace korvane {

// Masks serial numbers, hardware UUIDs, MAC addresses, logic-board and ROM
// values in property lists, system-profiler documents and key/value lines.
// Ten rules applied in a fixed order, each to the result of the one before;
// the order matters, as a later rule can take part of an earlier mask for a
// value. Never fails; any thread. A rule that doesn't compile is left out and
// the others still apply; on a pathological text a rule stops at the match
// engine's time limit with what it masked so far.
std::string redactSensitiveText(std::string_view text);

// Writes `home` as "~" wherever it stands as a whole path or the start of
// one ("/home/ann/Desktop" but not "/home/anna"), so that a log shared with
// others doesn't carry the account name. An empty or root `home` changes
// nothing.
std::string maskHomeFolder(std::string_view text, const std::filesystem::path& home);

} // namespace korvane
