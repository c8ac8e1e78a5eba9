#include "savedregistry/SavedRegistry.h"

#include "base/FileIO.h"
#include "savedregistry/SavedRegistryDiagnosis.h"
#include "support/TempFolder.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

const std::string dump = testDataBytes("savedregistry/ioreg-text-shapes.txt");

TEST(SavedRegistry, TheFormatIsToldByContentNotByTheFileName) {
    const std::pair<std::string, SavedRegistryFormat> rows[] = {
        {std::string("bplist00\0\0", 10), SavedRegistryFormat::Snapshot},
        {"\xEF\xBB\xBF\n  <?xml version=\"1.0\"?>", SavedRegistryFormat::Snapshot},
        {"<!DOCTYPE plist PUBLIC>", SavedRegistryFormat::Snapshot},
        {"$ ioreg -l -w0\n" + dump, SavedRegistryFormat::IORegText},
        {"text with +-o inside\n", SavedRegistryFormat::Unknown},
        {"<html><body></body></html>", SavedRegistryFormat::Unknown},
    };
    for (const auto& [bytes, format] : rows) {
        EXPECT_EQ(savedRegistryFormat(bytes), format) << bytes;
    }
}

TEST(SavedRegistry, ASourceReadsItsFileAfreshAndWhatIsNoSavedRegistryOpensNothing) {
    TempFolder folder;
    const auto path = folder.path() / "dump.txt";
    writeFileAtomically(path, dump);
    const auto source = openSavedRegistry(path);
    ASSERT_TRUE(source);
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    EXPECT_EQ(source->copyRoot(), nullptr) << "a folder where the file was";

    EXPECT_EQ(openSavedRegistry(folder.path() / "missing.txt"), nullptr);
    writeFileAtomically(folder.path() / "other.txt", "Bus 001 Device 001: ID 1d6b:0002\n");
    EXPECT_EQ(openSavedRegistry(folder.path() / "other.txt"), nullptr);
    // The IORegistryExplorer archive is a property list, but no snapshot: it
    // is refused at once, with the reason below, not read as an empty registry.
    EXPECT_EQ(openSavedRegistry(testDataPath("macos/iMac14-2/IORegistryExplorer.ioreg")), nullptr);
}

struct UnreadableRow {
    const char* name;
    std::string bytes;
    const char* says; // none: the bytes give a tree
};

class UnreadableRegistryTest : public testing::TestWithParam<UnreadableRow> {};

// What a saved file that gives no tree looks like, and how to save a readable
// one; never a bare "no controller".
TEST_P(UnreadableRegistryTest, SaysWhatTheFileIsInstead) {
    const auto why = whyNoRegistryIn(GetParam().bytes);
    if (!GetParam().says) {
        EXPECT_EQ(why, std::nullopt);
        return;
    }
    ASSERT_TRUE(why);
    EXPECT_TRUE(why->starts_with(GetParam().says)) << *why;
}

const std::string snapshot = testDataBytes("savedregistry/ioreg-a-shape.xml");

INSTANTIATE_TEST_SUITE_P(
    Files, UnreadableRegistryTest,
    testing::Values(
        UnreadableRow{
            "IORegistryExplorerArchive", testDataBytes("macos/iMac14-2/IORegistryExplorer.ioreg"),
            "an IORegistryExplorer archive (.ioreg), which only IORegistryExplorer itself can read. "
            "On the Mac, save the registry with ioreg -l -w0"},
        UnreadableRow{"CutXML", snapshot.substr(0, snapshot.size() / 2),
                      "a property list that is damaged (cut short?)"},
        UnreadableRow{"CutBinary", testDataBytes("macos/iMac14-2/IORegistryExplorer.ioreg").substr(0, 4000),
                      "a property list that is damaged (cut short?)"},
        UnreadableRow{
            "OtherPropertyList",
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><string>x</string></array></plist>",
            "a property list that is not a registry saved by ioreg -a"},
        UnreadableRow{"Empty", " \n", "an empty file."},
        UnreadableRow{"Junk", "Bus 001 Device 001: ID 1d6b:0002\n",
                      "neither ioreg text nor a property list."},
        UnreadableRow{"Snapshot", snapshot, nullptr}, UnreadableRow{"IORegText", dump, nullptr}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace korvane
