#include "savedregistry/SavedRegistry.h"

#include "records/FileIO.h"
#include "savedregistry/SnapshotCodec.h"
#include "support/RegistryTrees.h"
#include "support/TempFolder.h"
#include "support/TestData.h"
#include "tools/PropertyList.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace korvane {
namespace {

constexpr const char* smallDump = "+-o Root  <class IORegistryEntry, id 0x100000100, retain 19>\n"
                                  "  | {\n"
                                  "  |   \"OS Build Version\" = \"18E2034\"\n"
                                  "  | }\n"
                                  "  | \n"
                                  "  +-o XHC1@14  <class IOPCIDevice, id 0x10000024d, retain 12>\n";

TEST(SavedRegistry, TheFormatIsToldByContent) {
    const std::pair<std::string, SavedRegistryFormat> rows[] = {
        {std::string("bplist00\0\0", 10), SavedRegistryFormat::Snapshot},
        {"\xEF\xBB\xBF\n  <?xml version=\"1.0\"?>", SavedRegistryFormat::Snapshot},
        {"<!DOCTYPE plist PUBLIC>", SavedRegistryFormat::Snapshot},
        {"<plist version=\"1.0\">", SavedRegistryFormat::Snapshot},
        {std::string("$ ioreg -l -w0\n") + smallDump, SavedRegistryFormat::IORegText},
        {"text with +-o inside\n", SavedRegistryFormat::Unknown},
        {"lsusb -v\nBus 001 Device 001\n", SavedRegistryFormat::Unknown},
        {"<html><body></body></html>", SavedRegistryFormat::Unknown},
    };
    for (const auto& [bytes, format] : rows) {
        EXPECT_EQ(savedRegistryFormat(bytes), format) << bytes;
    }
}

TEST(SavedRegistry, EachFormatOpensWhateverTheFileNameAndReadsAfreshEachTime) {
    TempFolder folder;
    const auto textPath = folder.path() / "dump.plist";
    writeFileAtomically(textPath, smallDump);
    const auto textSource = openSavedRegistry(textPath);
    ASSERT_TRUE(textSource);
    const auto fromText = textSource->copyRoot();
    ASSERT_TRUE(fromText);

    const auto xmlPath = folder.path() / "snapshot.txt";
    writeSnapshot(*fromText, xmlPath);
    const auto xmlSource = openSavedRegistry(xmlPath);
    ASSERT_TRUE(xmlSource);
    EXPECT_TRUE(sameTree(*fromText, *xmlSource->copyRoot()));

    const PlistPtr plist = parsePropertyList(snapshotPropertyList(*fromText));
    char* raw = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(plist.get(), &raw, &length);
    const std::string binary(raw, length);
    std::free(raw);
    writeFileAtomically(folder.path() / "snapshot.bin", binary);
    const auto binarySource = openSavedRegistry(folder.path() / "snapshot.bin");
    ASSERT_TRUE(binarySource);
    EXPECT_TRUE(sameTree(*fromText, *binarySource->copyRoot()));

    std::filesystem::remove(textPath);
    EXPECT_EQ(textSource->copyRoot(), nullptr) << "a vanished file";
    std::filesystem::create_directory(textPath);
    EXPECT_EQ(textSource->copyRoot(), nullptr) << "a folder where the file was";
}

TEST(SavedRegistry, FilesThatAreNoSavedRegistryOpenNothing) {
    TempFolder folder;
    EXPECT_EQ(openSavedRegistry(folder.path() / "missing.txt"), nullptr);
    EXPECT_EQ(openSavedRegistry(folder.path()), nullptr);
    writeFileAtomically(folder.path() / "other.txt", "Bus 001 Device 001: ID 1d6b:0002\n");
    EXPECT_EQ(openSavedRegistry(folder.path() / "other.txt"), nullptr);
    // The IORegistryExplorer archive is a property list, but no snapshot.
    const auto archive = openSavedRegistry(testDataPath("macos/iMac14-2/IORegistryExplorer.ioreg"));
    ASSERT_TRUE(archive);
    EXPECT_EQ(archive->copyRoot(), nullptr);
}

} // namespace
} // namespace korvane
