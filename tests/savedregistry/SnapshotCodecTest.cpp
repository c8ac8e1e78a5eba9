#include "savedregistry/SnapshotCodec.h"

#include "records/FileIO.h"
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
    auto& pci = addEntry(
        *root, "IOPCIDevice",
        {{"IOName", "XHC1"},
         {"location", "14"},
         {"vendor-id", ByteBuffer{0x86, 0x80, 0, 0}},
         {"class-code", ByteBuffer{0x30, 0x03, 0x0c, 0x00}},
         {"compatible", ByteBuffer{'a', 0, 'b', 0}},
         {"empty-data", ByteBuffer{}},
         {"big", std::numeric_limits<std::int64_t>::max()},
         {"negative", std::int64_t{-1073741822}},
         {"smallest", std::numeric_limits<std::int64_t>::min()},
         {"text with <xml> & \"quotes\"", "a < b & c > \"d\" \xE2\x80\x99"},
         {"IODeviceMemory", PropertyArray{PropertyValue(PropertyArray{PropertyDictionary{{"address", 1}}})}},
         {"empty-array", PropertyArray{}},
         {"empty-dictionary", PropertyDictionary{}}});
    auto& service = addEntry(pci, "AppleIntelCNLUSBXHCI",
                             {{"name", ByteBuffer{'X', 'H', 'C', '1', 0}}, {"locationID", 335544320}});
    addEntry(service, "AppleUSB20XHCIPort", {{"port", ByteBuffer{3, 0, 0, 0}}, {"UsbConnector", 3}});
    addEntry(service, "AppleUSB30XHCIPort", {{"IOName", "SS02"}, {"location", ""}, {"port", 0x12}});
    addEntry(service, "", {});
    addEntry(*root, "IOResources", {{"IOName", "IOResources"}});
    return root;
}

TEST(SnapshotCodec, AnyTreeReadsBackTheSameWithKeysOfOtherKindsAsText) {
    const auto tree = sampleTree();
    const auto back = parseSnapshot(snapshotPropertyList(*tree));
    ASSERT_TRUE(back);
    EXPECT_TRUE(sameTree(*tree, *back));

    NativeUSBNode root(
        "Root", "", "R",
        PropertyDictionary{{"ports", PropertyKeyedList{{PropertyValue(7), PropertyValue("seven")}}}},
        nullptr);
    const auto keyed = parseSnapshot(snapshotPropertyList(root));
    ASSERT_TRUE(keyed);
    EXPECT_EQ(keyed->properties.at("ports"), PropertyValue(PropertyDictionary{{"7", "seven"}}));
}

TEST(SnapshotCodec, ReadsTheShapeIoregWrites) {
    const auto root = parseSnapshot(R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
  <key>IORegistryEntryName</key><string>Root</string>
  <key>IORegistryEntryID</key><integer>4294967552</integer>
  <key>IOObjectClass</key><string>IORegistryEntry</string>
  <key>IOObjectRetainCount</key><integer>19</integer>
  <key>IOServiceBusyState</key><integer>0</integer>
  <key>IOServiceBusyTime</key><integer>0</integer>
  <key>IOServiceState</key><integer>30</integer>
  <key>IOObjectInheritance</key><array><string>IORegistryEntry</string></array>
  <key>IOConsoleLocked</key><false/>
  <key>IOBluetoothActive</key><true/>
  <key>Ratio</key><real>0.5</real>
  <key>When</key><date>2019-03-11T22:26:31Z</date>
  <key>IORegistryEntryChildren</key>
  <array>
    <dict>
      <key>IORegistryEntryName</key><string>XHC1</string>
      <key>IORegistryEntryLocation</key><string>14</string>
      <key>IOObjectClass</key><string>IOPCIDevice</string>
      <key>name</key><data>cGNpODA4NixhMzZkAA==</data>
      <key>IORegistryEntryChildren</key>
      <dict>
        <key>IORegistryEntryName</key><string>HS01</string>
        <key>IORegistryEntryLocation</key><string>14100000</string>
        <key>IOObjectClass</key><string>AppleUSB20XHCIPort</string>
        <key>location</key><string>abc</string>
      </dict>
    </dict>
    <string>not an entry</string>
    <dict>
      <key>IOObjectClass</key><string>IOResources</string>
    </dict>
  </array>
</dict>
</plist>
)");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "Root");
    EXPECT_EQ(root->className, "IORegistryEntry");
    const PropertyDictionary rootProperties{{"IOConsoleLocked", 0}, {"IOBluetoothActive", 1}};
    EXPECT_EQ(root->properties, rootProperties) << "bookkeeping keys, reals and dates are no properties";
    ASSERT_EQ(root->children.size(), 2U);
    const auto& pci = *root->children[0];
    EXPECT_EQ(pci.name, "XHC1") << "IORegistryEntryName stands in as IOName";
    EXPECT_EQ(pci.location, "14");
    EXPECT_EQ(pci.properties.size(), 1U);
    ASSERT_EQ(pci.children.size(), 1U);
    EXPECT_EQ(pci.children[0]->name, "HS01");
    EXPECT_EQ(pci.children[0]->location, "ABC") << "a location property of its own wins";
    EXPECT_EQ(root->children[1]->name, "IOResources") << "no name at all falls back on the class";
}

TEST(SnapshotCodec, ANulInATextIsLeftOutButInABinaryKeyGivesNoTree) {
    const auto root = parseSnapshot(testDataBytes("fuzz-seeds/snapshot/nul-in-string.xml"));
    ASSERT_TRUE(root);
    EXPECT_EQ(root->properties, (PropertyDictionary{{"kept", 1}}));
    EXPECT_EQ(parseSnapshot(testDataBytes("fuzz-seeds/snapshot/nul-in-binary-key.bplist")), nullptr);
}

std::string deepXML(int depth) {
    std::string text = "<plist version=\"1.0\">";
    for (int i = 0; i < depth; ++i) {
        text += "<array>";
    }
    for (int i = 0; i < depth; ++i) {
        text += "</array>";
    }
    return text + "</plist>";
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
    };
    for (const auto& bytes : rejects) {
        EXPECT_EQ(parseSnapshot(bytes), nullptr) << bytes.substr(0, 80);
    }
}

TEST(SnapshotCodec, WritesAtomicallyAndReportsFailures) {
    TempFolder folder;
    const auto tree = sampleTree();
    const auto path = folder.path() / "registry.plist";
    writeSnapshot(*tree, path);
    EXPECT_TRUE(sameTree(*tree, *parseSnapshot(readFileBytes(path).value_or(""))));
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"registry.plist"})
        << "no temporary file left behind";

    writeFileAtomically(folder.path() / "plain", "x");
    EXPECT_THROW(writeSnapshot(*tree, folder.path() / "plain" / "registry.plist"), std::system_error);
    std::filesystem::create_directory(folder.path() / "folder");
    EXPECT_THROW(writeSnapshot(*tree, folder.path() / "folder"), std::system_error);
}

} // namespace
} // namespace korvane
