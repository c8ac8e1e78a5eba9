#include "base/FileIO.h"
#include "support/ModelFixture.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class IDsDatabaseUpdateTest : public ModelFixture {};

TEST_F(IDsDatabaseUpdateTest, OneFailureDoesNotStopTheOtherAndNamesAndListAreRefreshedSilently) {
    // pci.ids is busy; usb.ids comes, long enough to be taken for a whole one.
    fetch = [](const std::string& address) {
        return address.find("pci") != std::string::npos
                   ? HTTPResponse{true, 503, "busy"}
                   : HTTPResponse{true, 200, "# List of USB ID's\n" + std::string(5000, 'x')};
    };
    // A user's copy the resolver hasn't read yet: the update reloads it.
    const auto tools = home.path() / "support" / "KorvaneGenerator" / "Tools";
    fs::create_directories(tools);
    writeFileAtomically(tools / "pci.ids", "8086  Intel\n");
    scans = {{{makeController("XHC1", 0x8086, 0xa36d, {makePort("HS01", 1, "Keyboard")})}}};
    model->updateIDsDatabases();
    model->updateIDsDatabases();
    EXPECT_THAT(scheduler.backgroundPriorities(), ElementsAre(Scheduler::Priority::utility));
    EXPECT_TRUE(model->isUpdatingIDs());
    scheduler.runUntilIdle();

    EXPECT_THAT(logLines(), ElementsAre("Updating pci.ids and usb.ids...",
                                        "pci.ids update failed: HTTP 503 | usb.ids updated"));
    EXPECT_EQ(scanCount, 1);
    EXPECT_EQ(model->selectedPortIDs().size(), 1u);
    EXPECT_FALSE(model->isUpdatingIDs());
    EXPECT_TRUE(model->hasFailedIDsUpdate()) << "one download failed";
    EXPECT_TRUE(fs::exists(tools / "usb.ids"));
    EXPECT_EQ(names.pciName(0x8086, 1), "Intel");
}

} // namespace
} // namespace korvane
