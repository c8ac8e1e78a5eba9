#include "ids/IDsDownload.h"

#include "LoopbackServer.h"
#include "base/FileIO.h"
#include "records/CollectorError.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

std::string database(std::size_t size, const std::string& head = "# List of USB ID's\n") {
    std::string body = head;
    body.resize(size, 'x');
    return body;
}

TEST(IDsDownload, StoresOnlyWhatLooksLikeADatabaseAndKeepsTheEarlierCopyOtherwise) {
    const std::tuple<int, std::string, const char*> rows[] = {
        {200, database(5000), nullptr},
        {503, database(5000), "HTTP 503"},
        {200, database(1024, "Intel"), "downloaded file is too small"},
        {200, database(1025, "Intel"), nullptr},
        {200, database(5000, "# hello\n"), "downloaded file does not look like an ids database"},
        {200, database(4096, "# nothing") + "Version", "downloaded file does not look like an ids database"},
        // The first 4096 bytes stop inside a two-byte character.
        {200, database(8000, "# Version 2026.11\n" + std::string(4077, ' ') + "\xc3\xa9 tail"),
         "downloaded file does not look like an ids database"},
        {200, database(3000, "<html>Version 2</html>"), nullptr},
        {200, database(5000) + "\xff\xfe", nullptr},
    };
    for (const auto& [status, body, error] : rows) {
        TempFolder home;
        LoopbackServer web;
        web.server.Get("/usb.ids",
                       [status = status, &body = body](const httplib::Request&, httplib::Response& response) {
                           response.status = status;
                           response.set_content(body, "text/plain");
                       });
        const fs::path stored = home.path() / "KorvaneGenerator" / "Tools" / "usb.ids";
        fs::create_directories(stored.parent_path());
        writeFileAtomically(stored, "earlier copy");
        try {
            updateDatabase("usb.ids", web.address("/usb.ids"), fetchWithCurl, {home.path(), {}});
            EXPECT_EQ(error, nullptr) << body.substr(0, 30);
            EXPECT_EQ(readFileBytes(stored), body);
        } catch (const CollectorError& failure) {
            EXPECT_STREQ(failure.what(), error);
            EXPECT_EQ(readFileBytes(stored), "earlier copy");
        }
    }
}

TEST(IDsDownload, TransportAndFolderFailuresKeepTheirOwnWords) {
    TempFolder home;
    LoopbackServer web;
    web.server.Get("/pci.ids", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(database(5000), "text/plain");
    });
    web.server.Get("/moved", [](const httplib::Request&, httplib::Response& response) {
        response.set_redirect("/pci.ids");
    });
    web.server.Get("/huge", [](const httplib::Request&, httplib::Response& response) {
        response.set_content_provider("text/plain",
                                      [chunk = database(1 << 20)](std::size_t, httplib::DataSink& sink) {
                                          return sink.write(chunk.data(), chunk.size());
                                      });
    });

    updateDatabase("pci.ids", web.address("/moved"), fetchWithCurl, {home.path() / "fine", {}});
    EXPECT_TRUE(fs::exists(home.path() / "fine" / "KorvaneGenerator" / "Tools" / "pci.ids"))
        << "redirect followed";

    const auto failure = [&](const std::string& address) -> std::string {
        try {
            updateDatabase("usb.ids", address, fetchWithCurl, {home.path() / "fine", {}});
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no failure";
    };
    const std::string refused = LoopbackServer().address("/x"); // nobody listens there any more
    EXPECT_THAT(failure(refused), HasSubstr("onnect"));
    EXPECT_THAT(failure(web.address("/huge")), HasSubstr("64 MiB")) << "an endless body is cut off";
    EXPECT_FALSE(fs::exists(home.path() / "fine" / "KorvaneGenerator" / "Tools" / "usb.ids"));
}

} // namespace
} // namespace korvane
