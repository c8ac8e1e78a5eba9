#include "CollectorFixture.h"
#include "LoopbackServer.h"
#include "ids/IDsDownload.h"
#include "records/CollectorError.h"
#include "records/FileIO.h"

#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

std::string database(std::size_t size, const std::string& head = "# List of USB ID's\n") {
    std::string body = head;
    body.resize(size, 'x');
    return body;
}

// A body whose first 4096 bytes stop inside a two-byte character.
std::string splitCharacter() {
    std::string body = "# Version 2026.11\n";
    body.resize(4095, ' ');
    body += "\xc3\xa9 tail";
    return database(8000, body);
}

// A loopback port with nobody listening on it.
int refusedPort() {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t length = sizeof address;
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    close(fd);
    return ntohs(address.sin_port);
}

struct DownloadCase {
    const char* name;
    int status;
    std::string body;
    const char* error; // nullptr: stored
};

class UpdateDatabaseTest : public testing::TestWithParam<DownloadCase> {
  protected:
    TempFolder home;
    IDsDatabaseLocations locations{home.path() / "support", home.path() / "resources"};
    LoopbackServer web;
};

TEST_P(UpdateDatabaseTest, StoresOnlyWhatLooksLikeADatabase) {
    const auto& row = GetParam();
    web.server.Get("/usb.ids", [&row](const httplib::Request&, httplib::Response& response) {
        response.status = row.status;
        response.set_content(row.body, "text/plain");
    });
    const fs::path stored = home.path() / "support" / "KorvaneGenerator" / "Tools" / "usb.ids";
    fs::create_directories(stored.parent_path());
    writeFileAtomically(stored, "earlier copy");

    try {
        updateDatabase("usb.ids", web.address("/usb.ids"), fetchWithCurl, locations);
        EXPECT_EQ(row.error, nullptr);
        EXPECT_EQ(readFileBytes(stored), row.body);
    } catch (const CollectorError& error) {
        ASSERT_NE(row.error, nullptr) << error.description();
        EXPECT_EQ(error.description(), row.error);
        EXPECT_EQ(readFileBytes(stored), "earlier copy");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, UpdateDatabaseTest,
    testing::Values(
        DownloadCase{"Good", 200, database(5000), nullptr},
        DownloadCase{"Unavailable", 503, database(5000), "HTTP 503"},
        DownloadCase{"NotFound", 404, "missing", "HTTP 404"},
        DownloadCase{"ExactlyTooSmall", 200, database(1024, "Intel"), "downloaded file is too small"},
        DownloadCase{"JustBigEnough", 200, database(1025, "Intel"), nullptr},
        DownloadCase{"NoWords", 200, database(5000, "# hello\n"),
                     "downloaded file does not look like an ids database"},
        DownloadCase{"WordsOnlyLater", 200, database(4096, "# nothing") + "Version",
                     "downloaded file does not look like an ids database"},
        DownloadCase{"SplitInsideACharacter", 200, splitCharacter(),
                     "downloaded file does not look like an ids database"},
        DownloadCase{"WebPageWithVersion", 200, database(3000, "<html>Version 2</html>"), nullptr},
        DownloadCase{"BadBytesLaterAreKept", 200, database(5000) + "\xff\xfe", nullptr}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(UpdateDatabaseFailureTest, TransportAndFolderFailuresKeepTheirOwnWords) {
    TempFolder home;
    LoopbackServer web;
    web.server.Get("/pci.ids", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(database(5000), "text/plain");
    });
    web.server.Get("/moved", [](const httplib::Request&, httplib::Response& response) {
        response.set_redirect("/pci.ids");
    });

    // A plain file where the support folder must be.
    writeFileAtomically(home.path() / "support", "x");
    const IDsDatabaseLocations blocked{home.path() / "support", home.path()};
    try {
        updateDatabase("pci.ids", web.address("/moved"), fetchWithCurl, blocked);
        ADD_FAILURE() << "expected the folder to fail";
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::not_a_directory);
    }

    const IDsDatabaseLocations fine{home.path() / "fine", home.path()};
    updateDatabase("pci.ids", web.address("/moved"), fetchWithCurl, fine);
    EXPECT_TRUE(fs::exists(home.path() / "fine" / "KorvaneGenerator" / "Tools" / "pci.ids"))
        << "redirect followed";

    const std::string refused = "http://127.0.0.1:" + std::to_string(refusedPort()) + "/pci.ids";
    try {
        updateDatabase("pci.ids", refused, fetchWithCurl, fine);
        ADD_FAILURE() << "expected a refused connection";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("onnect"));
    }
}

TEST(UpdateDatabaseFailureTest, AnEndlessBodyIsCutOff) {
    TempFolder home;
    LoopbackServer web;
    web.server.Get("/huge", [](const httplib::Request&, httplib::Response& response) {
        response.set_content_provider("text/plain",
                                      [chunk = database(1 << 20)](std::size_t, httplib::DataSink& sink) {
                                          return sink.write(chunk.data(), chunk.size());
                                      });
    });
    try {
        updateDatabase("usb.ids", web.address("/huge"), fetchWithCurl, {home.path(), home.path()});
        ADD_FAILURE() << "expected the size limit";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("64 MiB"));
    }
    EXPECT_FALSE(fs::exists(home.path() / "KorvaneGenerator" / "Tools" / "usb.ids"));
}

class IDsUpdateFlowTest : public CollectorFixture {};

TEST_F(IDsUpdateFlowTest, OneFailureDoesNotStopTheOtherAndTheListIsRefreshed) {
    fetch = [](const std::string& address) -> HTTPResponse {
        if (address.find("pci") != std::string::npos) {
            return {true, 503, "busy"};
        }
        return {true, 200, database(5000)};
    };
    auto controller = makeController("XHC1", 0x8086, 0xa36d, {makePort("HS01", 1, "Keyboard")});
    scans = {{{controller}}};
    model->updateIDsDatabases();
    model->updateIDsDatabases();
    EXPECT_THAT(scheduler.backgroundPriorities(), testing::ElementsAre(Scheduler::Priority::utility));
    EXPECT_TRUE(model->isUpdatingIDs());
    scheduler.runUntilIdle();

    EXPECT_THAT(logLines(), testing::ElementsAre("Updating pci.ids and usb.ids...",
                                                 "pci.ids update failed: HTTP 503 | usb.ids updated"));
    EXPECT_EQ(scanCount, 1) << "a silent refresh";
    EXPECT_EQ(model->selectedPortIDs().size(), 1u);
    EXPECT_FALSE(model->isUpdatingIDs());
    EXPECT_TRUE(fs::exists(home.path() / "support" / "KorvaneGenerator" / "Tools" / "usb.ids"));
    EXPECT_FALSE(fs::exists(home.path() / "support" / "KorvaneGenerator" / "Tools" / "pci.ids"));
}

TEST_F(IDsUpdateFlowTest, BothFailuresAreOneLine) {
    model->updateIDsDatabases();
    scheduler.runUntilIdle();
    EXPECT_EQ(
        logLines().back(),
        "pci.ids update failed: Could not resolve host | usb.ids update failed: Could not resolve host");
    EXPECT_EQ(scanCount, 1);
}

} // namespace
} // namespace korvane
