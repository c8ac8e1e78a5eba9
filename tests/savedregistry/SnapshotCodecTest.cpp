#include "savedregistry/SnapshotCodec.h"

#include "base/FileIO.h"
#include "scanner/PropertyReaders.h"
#include "support/RegistryTrees.h"
#include "support/TempFolder.h"
#include "support/TestData.h"

#include <gtest/gtest.h>
#include <limits>

namespace korvane {
namespace {

// A node as a source makes it: name and location as the readers give them.
NativeUSBNode& addEntry(NativeUSBNode& parent, std::string className, PropertyDictionary properties) {
    auto& child = parent.addChild({}, {}, std::move(className), std::move(properties));
    child.name = registryName(child.properties, child.className);
    child.location = registryLocation(child.properties);
    return child;
}

std::unique_ptr<NativeUSBNode> sampleTree() {
    auto root = std::make_unique<NativeUSBNode>(
        "Root", "", "IORegistryEntry", PropertyDictionary{{"IOKitBuildVersion", "Darwin 18.5.0"}}, nullptr);
    // Every kind of value, and the edges of each.
    PropertyDictionary values{
        {"IOName", "XHC1"}, {"location", "14"}, {"compatible", ByteBuffer{'a', 0, 'b', 0}}};
    values["empty-data"] = ByteBuffer{};
    values["big"] = std::numeric_limits<std::int64_t>::max();
    values["smallest"] = std::numeric_limits<std::int64_t>::min();
    values["text with <xml> & \"quotes\""] = "a < b & c > \"d\" \xE2\x80\x99";
    values["IODeviceMemory"] =
        PropertyArray{PropertyValue(PropertyArray{PropertyDictionary{{"address", 1}}})};
    values["empty-array"] = PropertyArray{};
    values["empty-dictionary"] = PropertyDictionary{};
    auto& pci = addEntry(*root, "IOPCIDevice", std::move(values));
    auto& service = addEntry(pci, "AppleIntelCNLUSBXHCI",
                             {{"name", ByteBuffer{'X', 'H', 'C', '1', 0}}, {"locationID", 335544320}});
    addEntry(service, "AppleUSB20XHCIPort", {{"port", ByteBuffer{3, 0, 0, 0}}, {"UsbConnector", 3}});
    addEntry(service, "AppleUSB30XHCIPort", {{"IOName", "SS02"}, {"location", ""}, {"port", 0x12}});
    addEntry(service, "", {});
    addEntry(*root, "IOResources", {{"IOName", "IOResources"}});
    return root;
}

TEST(SnapshotCodec, AnyTreeReadsBackTheSameWithKeysOfOtherKindsAsText) {
    TempFolder folder;
    const auto tree = sampleTree();
    const auto path = folder.path() / "registry.plist";
    writeSnapshot(*tree, path);
    const auto back = parseSnapshot(readFileBytes(path).value_or(""));
    ASSERT_TRUE(back);
    EXPECT_TRUE(sameTree(*tree, *back));

    NativeUSBNode root(
        "Root", "", "R",
        PropertyDictionary{{"ports", PropertyKeyedList{{PropertyValue(7), PropertyValue("seven")}}}},
        nullptr);
    const auto keyed = parseSnapshot(snapshotPropertyList(root));
    ASSERT_TRUE(keyed);
    EXPECT_EQ(keyed->properties.value("ports"), PropertyValue(PropertyDictionary{{"7", "seven"}}));
}

TEST(SnapshotCodec, ReadsTheShapeIoregWrites) {
    // An XML snapshot as `ioreg -a` writes one, with every kind of key ioreg
    // adds, values of kinds the registry doesn't have, and a child that is no entry.
    const auto root = parseSnapshot(testDataBytes("savedregistry/ioreg-a-shape.xml"));
    ASSERT_TRUE(root);
    // IORegistryEntryName stands in for IOName; IORegistryEntryLocation only
    // for an entry without properties, and a location property of its own
    // wins; no name at all falls back on the class.
    EXPECT_EQ(treeText(*root),
              "Root <IORegistryEntry>\n  XHC1 <IOPCIDevice>\n    HS01@ABC <AppleUSB20XHCIPort>\n"
              "  IOResources <IOResources>\n");
    EXPECT_EQ(root->properties.dictionary(),
              (PropertyDictionary{{"IOConsoleLocked", 0}, {"IOBluetoothActive", 1}}))
        << "bookkeeping keys, reals and dates are no properties";
    EXPECT_EQ(root->children[0]->properties.dictionary().size(), 1U);
}

// Earlier builds saved a Linux scan's notices, advice for the machine that
// was scanned: a snapshot reads without them. A text holding a NUL is left out.
TEST(SnapshotCodec, AnEarlierSnapshotsScanNoticesAndTextsHoldingANulAreLeftOut) {
    const std::pair<std::string, PropertyDictionary> rows[] = {
        {"<plist version=\"1.0\"><dict><key>IOObjectClass</key><string>R</string>"
         "<key>scan-notices</key><array><string>Run as root (sudo).</string></array>"
         "<key>usb-bus</key><integer>2</integer></dict></plist>",
         {{"usb-bus", 2}}},
        {testDataBytes("savedregistry/fuzz-seeds/snapshot/nul-in-string.xml"), {{"kept", 1}}}};
    for (const auto& [bytes, properties] : rows) {
        const auto root = parseSnapshot(bytes);
        ASSERT_TRUE(root) << bytes;
        EXPECT_EQ(root->properties.dictionary(), properties);
    }
}

std::string deepXML(int depth) {
    std::string arrays;
    for (int i = 0; i < depth; ++i) {
        arrays = "<array>" + arrays + "</array>";
    }
    return "<plist version=\"1.0\">" + arrays + "</plist>";
}

TEST(SnapshotCodec, WhatIsNoSnapshotGivesNoTree) {
    const std::string rejects[] = {
        "",
        "+-o Root  <class IORegistryEntry>",
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>IOObjectClass</key>",
        "<plist version=\"1.0\"><dict><key>$archiver</key><string>NSKeyedArchiver</string></dict></plist>",
        "<plist version=\"1.0\"><string>IOObjectClass</string></plist>",
        deepXML(5000),
        std::string("bplist00\xd1\x01\x02", 11),
        testDataBytes("savedregistry/fuzz-seeds/snapshot/nul-in-binary-key.bplist"),
    };
    for (const auto& bytes : rejects) {
        EXPECT_EQ(parseSnapshot(bytes), nullptr) << bytes.substr(0, 80);
    }
}

} // namespace
} // namespace korvane
