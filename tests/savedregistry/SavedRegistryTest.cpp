#include "savedregistry/SavedRegistry.h"

#include "records/FileIO.h"
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
    EXPECT_EQ(source->copyRoot(), nullptr) << "a vanished file";
    std::filesystem::create_directory(path);
    EXPECT_EQ(source->copyRoot(), nullptr) << "a folder where the file was";

    EXPECT_EQ(openSavedRegistry(folder.path() / "missing.txt"), nullptr);
    writeFileAtomically(folder.path() / "other.txt", "Bus 001 Device 001: ID 1d6b:0002\n");
    EXPECT_EQ(openSavedRegistry(folder.path() / "other.txt"), nullptr);
    // The IORegistryExplorer archive is a property list, but no snapshot.
    const auto archive = openSavedRegistry(testDataPath("macos/iMac14-2/IORegistryExplorer.ioreg"));
    ASSERT_TRUE(archive);
    EXPECT_EQ(archive->copyRoot(), nullptr);
}

} // namespace
} // namespace korvane
