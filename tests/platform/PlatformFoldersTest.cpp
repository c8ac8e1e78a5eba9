// The rules every platform shares; each platform's own folders are pinned in
// PlatformFolders<Platform>Test.cpp, built only there.

#include "platform/PlatformFolders.h"

#include "support/FakeTool.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;

TEST(PlatformFolders, ResourcesAreTheBundlesInsideOneAndTheInstalledTreesElsewhere) {
    const std::pair<const char*, const char*> rows[] = {
        {"/Applications/KorvaneGenerator.app/Contents/MacOS",
         "/Applications/KorvaneGenerator.app/Contents/Resources"},
        {"/Applications/KorvaneGenerator.app/Contents/MacOS/",
         "/Applications/KorvaneGenerator.app/Contents/Resources"},
        {"/usr/local/bin/", "/usr/local/share/korvane-generator"},
        // A folder named MacOS outside a bundle is an installed tree's like any other.
        {"/Users/ada/MacOS", "/Users/ada/share/korvane-generator"},
    };
    for (const auto& [executableFolder, resources] : rows) {
        EXPECT_EQ(bundleOrInstalledResourceDirectory(executableFolder), fs::path(resources))
            << executableFolder;
    }
}

TEST(PlatformFolders, AProgramOnPathIsTheFirstExecutableFileInAnAbsoluteFolder) {
    TempFolder temp;
    for (const char* folder : {"first", "third"}) {
        fs::create_directories(temp.path() / folder);
    }
    writeFileAtomically(temp.path() / "first" / "tool", "not executable");
    fs::create_directories(temp.path() / "second" / "tool"); // a folder is no program
    writeFakeTool(temp.path() / "third", "tool", "");

    const std::string path = (temp.path() / "first").string() +
                             ":relative:" + (temp.path() / "second").string() + ":" +
                             (temp.path() / "third").string();
    const Environment environment{[&path](std::string_view name) -> std::optional<std::string> {
        return name == "PATH" ? std::optional(path) : std::nullopt;
    }};
    EXPECT_EQ(programOnPath("tool", environment), (temp.path() / "third" / "tool").string());
    EXPECT_EQ(programOnPath("absent", environment), std::nullopt);
}

} // namespace
} // namespace korvane
