#include "ids/IDsNameResolver.h"

#include "records/FileIO.h"
#include "support/TempFolder.h"

#include <array>
#include <gtest/gtest.h>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace korvane {
namespace {

namespace fs = std::filesystem;

const std::string userUSB = "1b21  User Alpha\n\t1142  Hub\n";
const std::string applicationUSB = "1b21  App Alpha\n\t1142  Hub\n";
const std::string applicationPCI = "8086  Intel\n\t1e31  xHCI\n";

class IDsNameResolverTest : public ::testing::Test {
  protected:
    TempFolder folder;
    IDsDatabaseLocations locations{folder.path() / "support", folder.path() / "resources"};
    fs::path userTools = locations.applicationSupportDirectory / "KorvaneGenerator" / "Tools";
    fs::path applicationTools = locations.resourceDirectory / "Tools";

    void write(const fs::path& path, std::string_view bytes) {
        fs::create_directories(path.parent_path());
        writeFileAtomically(path, bytes);
    }
};

TEST_F(IDsNameResolverTest, NoDatabaseAnywhereGivesEmptyNamesAndMakesTheToolsFolder) {
    IDsNameResolver resolver(locations);
    EXPECT_EQ(resolver.usbName(0x1B21, 0x1142), "");
    EXPECT_EQ(resolver.pciName(0x8086, 0x1E31), "");
    EXPECT_TRUE(fs::is_directory(userTools));
}

TEST_F(IDsNameResolverTest, DatabasesAreChosenIndependently) {
    write(userTools / "usb.ids", userUSB);
    write(applicationTools / "usb.ids", applicationUSB);
    write(applicationTools / "pci.ids", applicationPCI);
    IDsNameResolver resolver(locations);
    EXPECT_EQ(resolver.usbName(0x1B21, 0x1142), "User Alpha Hub");
    EXPECT_EQ(resolver.pciName(0x8086, 0x1E31), "Intel xHCI");
    EXPECT_EQ(resolver.pciName(0x8086, 0x0001), "Intel");
}

// A user copy that exists wins even when it can't serve; the application's
// copy is not consulted at read time.
struct DamagedCopyCase {
    const char* name;
    void (*make)(const fs::path& userCopy);
};

void PrintTo(const DamagedCopyCase& row, std::ostream* out) {
    *out << row.name;
}

const DamagedCopyCase damagedCopies[] = {
    {"Empty", [](const fs::path& path) { writeFileAtomically(path, ""); }},
    {"InvalidUTF8",
     [](const fs::path& path) { writeFileAtomically(path, "1b21  User \xc3\x28\n\t1142  Hub\n"); }},
    {"Folder", [](const fs::path& path) { fs::create_directory(path); }},
    {"Fifo", [](const fs::path& path) { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); }},
    {"DanglingLinkFallsThrough", nullptr},
};

class DamagedUserCopyTest : public IDsNameResolverTest,
                            public ::testing::WithParamInterface<DamagedCopyCase> {};

TEST_P(DamagedUserCopyTest, GivesEmptyNames) {
    write(applicationTools / "usb.ids", applicationUSB);
    fs::create_directories(userTools);
    if (GetParam().make) {
        GetParam().make(userTools / "usb.ids");
        IDsNameResolver resolver(locations);
        EXPECT_EQ(resolver.usbName(0x1B21, 0x1142), "");
    } else {
        // A link to nothing doesn't exist, so the application's copy serves.
        fs::create_symlink(folder.path() / "missing", userTools / "usb.ids");
        IDsNameResolver resolver(locations);
        EXPECT_EQ(resolver.usbName(0x1B21, 0x1142), "App Alpha Hub");
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedUserCopyTest, ::testing::ValuesIn(damagedCopies),
                         [](const ::testing::TestParamInfo<DamagedCopyCase>& row) {
                             return std::string(row.param.name);
                         });

TEST_F(IDsNameResolverTest, ResultsStayCachedUntilReload) {
    write(applicationTools / "usb.ids", applicationUSB);
    IDsNameResolver resolver(locations);
    EXPECT_EQ(resolver.usbName(0x1B21, 0x1142), "App Alpha Hub");
    EXPECT_EQ(resolver.usbName(0x0BDA, 0x8153), "");

    // An update writes the user's copy; nothing changes until reload.
    write(userTools / "usb.ids", "0bda  Realtek\n\t8153  Ethernet\n1b21  New Alpha\n");
    EXPECT_EQ(resolver.usbName(0x0BDA, 0x8153), "");

    resolver.reload();
    EXPECT_EQ(resolver.usbName(0x0BDA, 0x8153), "Realtek Ethernet");
    EXPECT_EQ(resolver.usbName(0x1B21, 0x1142), "New Alpha");
}

TEST_F(IDsNameResolverTest, ReloadAfterTheCopyGoesEmptiesNames) {
    write(userTools / "usb.ids", userUSB);
    IDsNameResolver resolver(locations);
    EXPECT_EQ(resolver.usbName(0x1B21, 0x1142), "User Alpha Hub");
    fs::remove(userTools / "usb.ids");
    resolver.reload();
    EXPECT_EQ(resolver.usbName(0x1B21, 0x1142), "");
}

TEST_F(IDsNameResolverTest, IDsBeyondSixteenBitsKeepTheirOwnCacheKeys) {
    write(applicationTools / "usb.ids", "1b21  Alpha\n11b21  Long\n");
    IDsNameResolver resolver(locations);
    EXPECT_EQ(resolver.usbName(0x1B21, 0), "Alpha");
    EXPECT_EQ(resolver.usbName(0x11B21, 0), "1  Long");
}

TEST_F(IDsNameResolverTest, LookupsAndReloadsFromSeveralThreads) {
    write(applicationTools / "usb.ids", applicationUSB);
    write(applicationTools / "pci.ids", applicationPCI);
    IDsNameResolver resolver(locations);
    const std::set<std::string> allowedUSB = {"App Alpha Hub", "App Alpha"};
    std::array<int, 4> unexpected{};
    std::vector<std::thread> threads;
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
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(unexpected, (std::array<int, 4>{}));
}

} // namespace
} // namespace korvane
