#include "ids/IDsDownload.h"

#include "base/FileIO.h"
#include "base/Text.h"
#include "records/CollectorError.h"

#include <curl/curl.h>
#include <memory>
#include <stdexcept>

namespace korvane {

namespace {

struct CurlFree {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

struct Download {
    std::string body;
    bool tooBig = false;
};

std::size_t collect(char* data, std::size_t size, std::size_t count, void* context) {
    auto* download = static_cast<Download*>(context);
    const std::size_t bytes = size * count;
    if (download->body.size() + bytes > maximumDownloadBytes) {
        download->tooBig = true;
        return 0; // stops the transfer
    }
    download->body.append(data, bytes);
    return bytes;
}

// The first bytes must name the file as an ids database somewhere; a web page
// that happens to carry one of the words passes too, which is as loose as the
// check is meant to be.
bool looksLikeIDsDatabase(std::string_view body) {
    const std::string head = strictUTF8(body.substr(0, 4096));
    for (const char* word : {"List of", "Copyright", "Version", "Intel"}) {
        if (head.find(word) != std::string::npos) {
            return true;
        }
    }
    return false;
}

} // namespace

HTTPResponse fetchWithCurl(const std::string& address) {
    static const bool initialised = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    std::unique_ptr<CURL, CurlFree> curl(initialised ? curl_easy_init() : nullptr);
    if (!curl) {
        throw std::runtime_error("the network library could not be started");
    }
    Download download;
    char message[CURL_ERROR_SIZE] = {};
    curl_easy_setopt(curl.get(), CURLOPT_URL, address.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_MAXREDIRS, 10L);
    curl_easy_setopt(curl.get(), CURLOPT_PROTOCOLS_STR, "http,https,file");
    curl_easy_setopt(curl.get(), CURLOPT_REDIR_PROTOCOLS_STR, "https,http");
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_LOW_SPEED_TIME, 60L);
    curl_easy_setopt(curl.get(), CURLOPT_CONNECTTIMEOUT, 60L);
    curl_easy_setopt(curl.get(), CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(maximumDownloadBytes));
    curl_easy_setopt(curl.get(), CURLOPT_USERAGENT, "KorvaneGenerator");
    curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, collect);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &download);
    curl_easy_setopt(curl.get(), CURLOPT_ERRORBUFFER, message);

    const CURLcode result = curl_easy_perform(curl.get());
    if (download.tooBig || result == CURLE_FILESIZE_EXCEEDED) {
        throw std::runtime_error("the download is larger than " + std::to_string(maximumDownloadBytes >> 20) +
                                 " MiB");
    }
    if (result != CURLE_OK) {
        throw std::runtime_error(message[0] ? message : curl_easy_strerror(result));
    }
    HTTPResponse response;
    char* scheme = nullptr;
    curl_easy_getinfo(curl.get(), CURLINFO_SCHEME, &scheme);
    response.isHTTP = scheme && (std::string_view(scheme) == "HTTP" || std::string_view(scheme) == "HTTPS" ||
                                 std::string_view(scheme) == "http" || std::string_view(scheme) == "https");
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &response.status);
    response.body = std::move(download.body);
    return response;
}

IDsDownloadSources IDsDownloadSources::standard() {
    return {"https://pci-ids.ucw.cz/v2.2/pci.ids", "https://www.linux-usb.org/usb.ids", fetchWithCurl};
}

void updateDatabase(const std::string& name, const std::string& address, const HTTPFetch& fetch,
                    const IDsDatabaseLocations& locations) {
    const HTTPResponse response = fetch(address);
    if (response.isHTTP && (response.status < 200 || response.status > 299)) {
        throw CollectorError::operationFailed("HTTP " + std::to_string(response.status));
    }
    if (response.body.size() <= 1024) {
        throw CollectorError::operationFailed("downloaded file is too small");
    }
    if (!looksLikeIDsDatabase(response.body)) {
        throw CollectorError::operationFailed("downloaded file does not look like an ids database");
    }
    const auto folder = IDsDatabaseManager::applicationSupportToolsDirectory(locations);
    writeFileAtomically(folder / name, response.body);
}

} // namespace korvane
