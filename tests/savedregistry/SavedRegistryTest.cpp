#include "savedregistry/SavedRegistry.h"

#include "TreeAssertions.h"
#include "records/FileIO.h"
#include "savedregistry/IORegTextParser.h"
#include "savedregistry/SnapshotCodec.h"
#include "support/TempFolder.h"
#include "tools/PropertyList.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace korvane {
namespace {

constexpr const char* kSmallDump = "+-o Root  <class IORegistryEntry, id 0x100000100, retain 19>\n"
                                   "  | {\n"
                                   "  |   \"OS Build Version\" = \"18E2034\"\n"
                                   "  | }\n"
                                   "  | \n"
                                   "  +-o XHC1@14  <class IOPCIDevice, id 0x10000024d, retain 12>\n";

struct FormatCase {
    const char* name;
    friend void PrintTo(const FormatCase& row, std::ostream* out) { *out << row.name; }
    std::string bytes;
    SavedRegistryFormat expected;
};

class SavedRegistryFormatTest : public testing::TestWithParam<FormatCase> {};

TEST_P(SavedRegistryFormatTest, TellsTheFormatByContent) {
    EXPECT_EQ(savedRegistryFormat(GetParam().bytes), GetParam().expected);
}

const FormatCase kFormats[] = {
    {"BinaryList", std::string("bplist00\0\0", 10), SavedRegistryFormat::Snapshot},
    {"XMLDeclaration", "<?xml version=\"1.0\"?>", SavedRegistryFormat::Snapshot},
    {"XMLAfterByteOrderMarkAndBlanks", "\xEF\xBB\xBF\n  <?xml version=\"1.0\"?>",
     SavedRegistryFormat::Snapshot},
    {"Doctype", "<!DOCTYPE plist PUBLIC>", SavedRegistryFormat::Snapshot},
    {"PlistElement", "<plist version=\"1.0\">", SavedRegistryFormat::Snapshot},
    {"TextDump", kSmallDump, SavedRegistryFormat::IORegText},
    {"TextDumpAfterAHeader", std::string("$ ioreg -l -w0\n") + kSmallDump, SavedRegistryFormat::IORegText},
    {"MarkerInsideALine", "text with +-o inside\n", SavedRegistryFormat::Unknown},
    {"Empty", "", SavedRegistryFormat::Unknown},
    {"OtherText", "lsusb -v\nBus 001 Device 001\n", SavedRegistryFormat::Unknown},
    {"OtherXML", "<html><body></body></html>", SavedRegistryFormat::Unknown},
};

INSTANTIATE_TEST_SUITE_P(Contents, SavedRegistryFormatTest, testing::ValuesIn(kFormats),
                         [](const testing::TestParamInfo<FormatCase>& row) { return row.param.name; });

TEST(SavedRegistry, OpensEachFormatWithItsSourceWhateverTheFileName) {
    TempFolder folder;
    const auto textPath = folder.path() / "dump.plist";
    writeFileAtomically(textPath, kSmallDump);
    const auto textSource = openSavedRegistry(textPath);
    ASSERT_TRUE(textSource);
    const auto fromText = textSource->copyRoot();
    ASSERT_TRUE(fromText);

    const auto xmlPath = folder.path() / "snapshot.txt";
    writeSnapshot(*fromText, xmlPath);
    const auto xmlSource = openSavedRegistry(xmlPath);
    ASSERT_TRUE(xmlSource);
    const auto fromXML = xmlSource->copyRoot();
    ASSERT_TRUE(fromXML);
    EXPECT_TRUE(sameTree(*fromText, *fromXML));

    const PlistPtr plist = parsePropertyList(snapshotPropertyList(*fromText));
    char* raw = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(plist.get(), &raw, &length);
    ASSERT_TRUE(raw);
    const auto binaryPath = folder.path() / "snapshot.bin";
    const std::string binary(raw, length);
    std::free(raw);
    writeFileAtomically(binaryPath, binary);
    const auto binarySource = openSavedRegistry(binaryPath);
    ASSERT_TRUE(binarySource);
    const auto fromBinary = binarySource->copyRoot();
    ASSERT_TRUE(fromBinary);
    EXPECT_TRUE(sameTree(*fromText, *fromBinary));
    const auto parsed = parseSavedRegistry(binary);
    ASSERT_TRUE(parsed);
    EXPECT_TRUE(sameTree(*fromText, *parsed));
}

TEST(SavedRegistry, EachCopyIsANewTreeAndAVanishedFileGivesNone) {
    TempFolder folder;
    const auto path = folder.path() / "dump.txt";
    writeFileAtomically(path, kSmallDump);
    const auto source = openSavedRegistry(path);
    ASSERT_TRUE(source);
    const auto first = source->copyRoot();
    const auto second = source->copyRoot();
    ASSERT_TRUE(first && second);
    EXPECT_NE(first.get(), second.get());
    EXPECT_TRUE(sameTree(*first, *second));
    std::filesystem::remove(path);
    EXPECT_EQ(source->copyRoot(), nullptr);
    std::filesystem::create_directory(path);
    EXPECT_EQ(source->copyRoot(), nullptr) << "a folder where the file was";
}

TEST(SavedRegistry, FilesThatAreNoSavedRegistryOpenNothing) {
    TempFolder folder;
    EXPECT_EQ(openSavedRegistry(folder.path() / "missing.txt"), nullptr);
    EXPECT_EQ(openSavedRegistry(folder.path()), nullptr);
    writeFileAtomically(folder.path() / "plain", "x");
    EXPECT_EQ(openSavedRegistry(folder.path() / "plain" / "below.txt"), nullptr);
    writeFileAtomically(folder.path() / "other.txt", "Bus 001 Device 001: ID 1d6b:0002\n");
    EXPECT_EQ(openSavedRegistry(folder.path() / "other.txt"), nullptr);
    EXPECT_EQ(parseSavedRegistry("Bus 001 Device 001: ID 1d6b:0002\n"), nullptr);
}

TEST(SavedRegistry, TheIORegistryExplorerArchiveOpensButGivesNoTree) {
    const auto path =
        std::filesystem::path(KORVANE_TEST_DATA_DIR) / "macos/iMac14-2/IORegistryExplorer.ioreg";
    if (!std::filesystem::exists(path)) {
        GTEST_SKIP() << "fixture missing: macos/iMac14-2/IORegistryExplorer.ioreg";
    }
    const auto source = openSavedRegistry(path);
    ASSERT_TRUE(source);
    EXPECT_EQ(source->copyRoot(), nullptr);
}

} // namespace
} // namespace korvane
