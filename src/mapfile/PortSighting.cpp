#include "mapfile/PortSighting.h"

#include <cstdio>
#include <ctime>

namespace korvane {

std::string seenText(const PortSighting& sighting, std::chrono::system_clock::time_point now) {
    auto local = [](std::chrono::system_clock::time_point when) {
        const std::time_t seconds = std::chrono::system_clock::to_time_t(when);
        std::tm fields{};
        localtime_r(&seconds, &fields);
        return fields;
    };
    const std::tm seen = local(sighting.lastSeen);
    const std::tm today = local(now);
    // Short where it can be: the row has little room left for it.
    const char* format = seen.tm_year != today.tm_year   ? "%Y-%m-%d %H:%M"
                         : seen.tm_yday != today.tm_yday ? "%d %b %H:%M"
                                                         : "%H:%M";
    char when[64];
    std::strftime(when, sizeof when, format, &seen);
    return "seen: " + sighting.deviceName + ", " + when;
}

std::string utcTimeText(std::chrono::system_clock::time_point when) {
    using namespace std::chrono;
    const auto seconds = floor<std::chrono::seconds>(when);
    const auto day = floor<days>(seconds);
    const year_month_day date(day);
    const hh_mm_ss clock(seconds - day);
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return buffer;
}

} // namespace korvane
