#pragma once

#include "ids/IDsDatabaseManager.h"

#include <functional>
#include <string>

namespace korvane {

// One answer of a server.
struct HTTPResponse {
    bool isHTTP = true; // false for a scheme without status codes (file:)
    long status = 0;
    std::string body;
};

// Fetches an address; throws std::runtime_error in the transport's own words
// when no answer comes (no network, unknown host, refused, timed out, too big).
using HTTPFetch = std::function<HTTPResponse(const std::string& address)>;

// Bodies above this are refused, so a broken server can't fill the disk.
inline constexpr std::size_t maximumDownloadBytes = 64u << 20;

// libcurl: https, redirects followed, no time-out but a stall of 60 seconds.
HTTPResponse fetchWithCurl(const std::string& address);

// Where the ids databases come from.
struct IDsDownloadSources {
    std::string pciAddress;
    std::string usbAddress;
    HTTPFetch fetch;

    // The two public repositories, over libcurl.
    static IDsDownloadSources standard();
};

// Fetches one database, checks that it looks like one and stores it as the
// user's copy, atomically, so any failure leaves the earlier copy intact.
// Throws CollectorError::operationFailed ("HTTP {status}", "downloaded file is
// too small", "downloaded file does not look like an ids database"), or the
// transport's or file system's own error.
void updateDatabase(const std::string& name, const std::string& address, const HTTPFetch& fetch,
                    const IDsDatabaseLocations& locations);

} // namespace korvane
