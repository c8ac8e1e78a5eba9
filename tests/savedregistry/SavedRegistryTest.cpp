#include "savedregistry/SavedRegistry.h"

#include "base/FileIO.h"
#include "savedregistry/SavedRegistryDiagnosis.h"
#include "support/TempFolder.h"
#include "support/TestData.h"

#include <gmock/gmock.h>

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

// What a saved file that gives no tree looks like, and how to save a readable
// one; never a bare "no controller".
TEST(SavedRegistry, AFileThatGivesNoTreeSaysWhatItIsInstead) {
    const std::string snapshot = testDataBytes("savedregistry/ioreg-a-shape.xml");
    const std::string archive = testDataBytes("macos/iMac14-2/IORegistryExplorer.ioreg");
    const std::pair<std::string, const char*> rows[] = {
        {archive, "an IORegistryExplorer archive (.ioreg), which only IORegistryExplorer itself can read. "
                  "On the Mac, save the registry with ioreg -l -w0"},
        {snapshot.substr(0, snapshot.size() / 2), "a property list that is damaged (cut short?)"},
        {archive.substr(0, 4000), "a property list that is damaged (cut short?)"},
        {"<?xml version=\"1.0\"?><plist version=\"1.0\"><array><string>x</string></array></plist>",
         "a property list that is not a registry saved by ioreg -a"},
        {" \n", "an empty file."},
        {"Bus 001 Device 001: ID 1d6b:0002\n", "neither ioreg text nor a property list."}};
    for (const auto& [bytes, says] : rows) {
        EXPECT_THAT(whyNoRegistryIn(bytes), testing::Optional(testing::StartsWith(says)))
            << bytes.substr(0, 40);
    }
    EXPECT_EQ(whyNoRegistryIn(snapshot), std::nullopt) << "the bytes give a tree";
    EXPECT_EQ(whyNoRegistryIn(dump), std::nullopt);
}

} // namespace
} // namespace korvane
