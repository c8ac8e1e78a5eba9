#include "ids/IDsNameResolver.h"

#include "base/FileIO.h"
#include "support/IDsHome.h"

#include <array>
#include <gtest/gtest.h>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace korvane {
namespace {

namespace fs = std::filesystem;

class IDsNameResolverTest : public ::testing::Test {
  protected:
    void writeUserCopy(std::string_view bytes) {
        fs::create_directories(userTools);
        writeFileAtomically(userTools / "usb.ids", bytes);
    }

    // The application's copies, in resources/Tools.
    IDsHome home{"8086  Intel\n\t1e31  xHCI\n", "1b21  App Alpha\n\t1142  Hub\n"};
    fs::path userTools = home.path() / "support" / "KorvaneGenerator" / "Tools";
};

TEST_F(IDsNameResolverTest, EachDatabaseIsChosenOnItsOwnAndNamesStayUntilAReload) {
    writeUserCopy("1b21  User Alpha\n\t1142  Hub\n");
    IDsNameResolver resolver(home.locations());
    EXPECT_EQ(resolver.usbName(0x1B21, 0x1142), "User Alpha Hub");
    EXPECT_EQ(resolver.pciName(0x8086, 0x1E31), "Intel xHCI");
    EXPECT_EQ(resolver.pciOrUSBName(0x1B21, 0x1142), "User Alpha Hub");

    // An update writes the user's copy; nothing changes until the reload.
    writeUserCopy("1b21  New Alpha\n11b21  Long\n");
    EXPECT_EQ(resolver.usbName(0x1B21, 0x1142), "User Alpha Hub");
    resolver.reload();
    EXPECT_EQ(resolver.usbName(0x1B21, 0), "New Alpha");
    EXPECT_EQ(resolver.usbName(0x11B21, 0), "1  Long") << "IDs beyond 16 bits keep their own cache entries";
}

TEST_F(IDsNameResolverTest, AUserCopyThatCantServeGivesEmptyNamesWithoutBlocking) {
    fs::create_directories(userTools);
    ASSERT_EQ(mkfifo((userTools / "usb.ids").c_str(), 0600), 0);
    EXPECT_EQ(IDsNameResolver(home.locations()).usbName(0x1B21, 0x1142), "");
    fs::remove(userTools / "usb.ids");
    // A link to nothing doesn't exist, so the application's copy serves.
    fs::create_symlink(home.path() / "missing", userTools / "usb.ids");
    EXPECT_EQ(IDsNameResolver(home.locations()).usbName(0x1B21, 0x1142), "App Alpha Hub");
}

TEST_F(IDsNameResolverTest, LookupsAndReloadsFromSeveralThreads) {
    IDsNameResolver& resolver = home.names();
    const std::set<std::string> allowedUSB = {"App Alpha Hub", "App Alpha"};
    std::array<int, 4> unexpected{};
    std::vector<std::jthread> threads;
    for (std::size_t t = 0; t < unexpected.size(); ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 300; ++round) {
                if (t == 0 && round % 50 == 0) {
                    resolver.reload();
                }
                const auto usb = resolver.usbName(0x1B21, round % 2 == 0 ? 0x1142 : 0x2000 + round);
                const auto pci = resolver.pciName(0x8086, 0x1E31);
                unexpected[t] += (allowedUSB.count(usb) == 1 && pci == "Intel xHCI") ? 0 : 1;
            }
        });
    }
    threads.clear(); // joins them
    EXPECT_EQ(unexpected, (std::array<int, 4>{}));
}

} // namespace
} // namespace korvane
