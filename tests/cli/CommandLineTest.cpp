#include "cli/CommandLine.h"

#include "base/FileIO.h"
#include "mapfile/PortMapPackage.h"
#include "support/Golden.h"
#include "support/TempFolder.h"
#include "support/TestData.h"
#include "support/Zip.h"

#include <algorithm>
#include <cstdlib>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

namespace korvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string iMac = KORVANE_TEST_DATA_DIR "/macos/iMac19-1/IOReg.txt";
const std::string hackintosh = KORVANE_TEST_DATA_DIR "/macos/hackintosh-CML/ioreg_ioservice.txt";
const std::string iMacPro = KORVANE_TEST_DATA_DIR "/macos/iMacPro1-1/IOReg.txt";
const std::string usbPlane = KORVANE_TEST_DATA_DIR "/macos/hackintosh-CML/ioreg_IOUSB-plane.txt";
const std::string camera = "8086:a36d|XHC1|14000000|HS13|0d000000";
const std::string hs03 = "8086:a36d|XHC1|14000000|HS03|03000000";
const std::string ss02 = "8086:a36d|XHC1|14000000|SS02|12000000";

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

// The program's folders all in a home of the test's own (the Desktop is
// asked of the environment for every run, as the user may move it). The ids
// databases are the tiny ones of tests/data, in one folder for the process
// since the program reads them once: the names in the goldens are the test's
// own, not the build machine's hwdata.
class CommandLineTest : public testing::Test {
  protected:
    void SetUp() override {
        static const TempFolder ids;
        const auto tools = ids.path() / "KorvaneGenerator" / "Tools";
        std::filesystem::create_directories(tools);
        writeFileAtomically(tools / "pci.ids", testDataBytes("ids/tiny-pci.ids"));
        writeFileAtomically(tools / "usb.ids", testDataBytes("ids/tiny-usb.ids"));
        setenv("XDG_DATA_HOME", ids.path().c_str(), 1);
        setenv("HOME", home().c_str(), 1);
        setenv("XDG_CONFIG_HOME", (home() / ".config").c_str(), 1);
        setenv("XDG_RUNTIME_DIR", (home() / "run").c_str(), 1);
        std::filesystem::create_directories(home() / "Desktop");
    }

    const std::filesystem::path& home() const { return home_.path(); }
    std::filesystem::path zip() const { return home() / "Desktop" / "Korvane.zip"; }
    // A path in the home, as the program is given it.
    std::string at(const std::string& name) const { return (home() / name).string(); }

    Outcome run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "korvane");
        std::ostringstream out;
        std::ostringstream err;
        const int status = runCommandLine(arguments, out, err);
        return {status, out.str(), err.str()};
    }

    // The Desktop package's model, then its merge ports as the package
    // lists them: "model: personality/port:connector ...".
    std::string merges() const {
        const auto parse = readPortMapPackage(zip());
        if (!parse.package) {
            return "no package: " + parse.reason;
        }
        std::string text = parse.package->model.value_or("?") + ":";
        for (const auto& port : parse.package->ports) {
            text +=
                " " + port.personality + "/" + port.name + ":" + std::to_string(port.connector.value_or(-1));
        }
        return text;
    }

  private:
    TempFolder home_;
};

// A scan's JSON without the times a sighting carries, which are the clock's.
std::string untimed(const std::string& json) {
    return std::regex_replace(json, std::regex(R"("lastSeen":"[^"]*")"), R"("lastSeen":"")");
}

// --- Refusals: status 2, nothing on standard output, and one line saying
// what was wrong.

TEST_F(CommandLineTest, ARefusalEndsWithStatusTwoAndOneLine) {
    const std::string junk = at("junk.txt");
    writeFileAtomically(junk, "not a registry");
    const std::tuple<const char*, std::vector<std::string>, std::string> rows[] = {
        {"UnknownCommand", {"frobnicate"}, "unknown command 'frobnicate'"},
        {"OptionBeforeCommand", {"--bogus"}, "unknown option '--bogus'"},
        {"UnknownOption", {"scan", "--bogus"}, "--bogus"},
        {"SelectValue", {"generate", "--select", "some"}, "select"},
        {"MissingRegistry", {"scan", "--registry", at("missing")}, "no such file"},
        {"JunkRegistry", {"scan", "--registry", junk}, "not a saved registry"},
        {"FolderRegistry", {"generate", "--registry", home().string()}, "is a folder"},
        {"RegistryAndIoreg", {"scan", "--registry", iMac, "--ioreg", iMac}, "excludes"},
        {"CodeTooLarge", {"generate", "--registry", iMac, "--connector", hs03 + "=256"}, "0 to 255"},
        {"ConnectorWithoutCode", {"generate", "--registry", iMac, "--connector", hs03}, "expected KEY=CODE"},
        {"NoSuchPort", {"generate", "--registry", iMac, "--port", "1:2|X|0|HS01|01"}, "no port has this key"},
        {"JunkKext", {"scan", "--registry", iMac, "--import-kext", junk}, "is not a readable property list"},
        {"NicknameWithoutText", {"watch", "--registry", iMac, "--nickname", camera}, "expected KEY=TEXT"},
        {"NicknameWithAnEscape",
         {"scan", "--registry", iMac, "--nickname", camera + "=a\x1b[2Jb"},
         "holds a control character (U+001B)"},
        {"MapWithSelect", {"generate", "--map", junk, "--select", "all"}, "excludes"},
        {"SaveMapOverAFile",
         {"scan", "--registry", iMac, "--save-map", junk},
         "--save-map " + junk + ": the file exists"},
        {"ModelWithAControlCharacter",
         {"generate", "--registry", iMac, "--model", "iMac19,1\x1b[2J"},
         "--model: the model must be printable text: it holds a control character"},
        {"ModelLongerThanSMBIOSHolds",
         {"generate", "--registry", iMac, "--model", std::string(65, 'M')},
         "--model: the model must be at most 64 bytes (it has 65)"},
        {"MapFromASavedRegistry", {"map", "--registry", iMac}, "map needs the live machine"},
        {"MapForABadModel", {"map", "--model", "iMac19,1\x1b[2J"}, "--model: "},
        {"SnapshotOverAFile",
         {"snapshot", "--registry", iMac, "-o", junk},
         "--output " + junk + ": the file exists; write over it with --force"},
    };
    for (const auto& [name, arguments, words] : rows) {
        SCOPED_TRACE(name);
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find('\x1b'), std::string::npos) << "an escape byte reached the terminal";
        std::istringstream lines(result.err);
        std::vector<std::string> said;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("korvane: ")) {
                said.push_back(line);
            }
        }
        EXPECT_THAT(said, ElementsAre(HasSubstr(words))) << result.err;
        EXPECT_EQ(readFileBytes(junk), "not a registry") << "a file written over";
    }
}

// --- Tables and JSON, compared whole.

TEST_F(CommandLineTest, ScanPrintsTheTableAndJSONAloneOrWhyThereIsNone) {
    const Outcome table = run({"scan", "--registry", iMac});
    EXPECT_EQ(table.status, 0);
    EXPECT_TRUE(matchesGolden(table.out, "cli/scan-iMac19-1.txt"));
    EXPECT_THAT(table.err, Not(HasSubstr("korvane: ")));

    const Outcome json = run({"scan", "--registry", iMac, "--json"});
    EXPECT_EQ(json.status, 0);
    ASSERT_TRUE(json.out.ends_with("}\n") && std::count(json.out.begin(), json.out.end(), '\n') == 1)
        << "one JSON object on one line";
    EXPECT_TRUE(
        matchesGolden(nlohmann::json::parse(untimed(json.out)).dump(1) + "\n", "cli/scan-iMac19-1.json"));

    // A saved registry never changes: watch shows it once and says why it ends.
    const Outcome watch = run({"watch", "--registry", iMac});
    EXPECT_EQ(watch.status, 0);
    EXPECT_EQ(watch.out, table.out);
    EXPECT_THAT(watch.err, HasSubstr("is a saved registry, which never changes: shown once."));

    // A registry without controllers says so, and why.
    const Outcome none = run({"scan", "--registry", usbPlane});
    EXPECT_EQ(none.status, 0);
    EXPECT_EQ(none.out, "No USB controller found.\n");
    EXPECT_THAT(none.err, HasSubstr("it looks like an ioreg text dump of the IOUSB plane"));
}

// --- Generate: the package on the Desktop, the ZIP's path alone on standard
// output, the notes on standard error.

TEST_F(CommandLineTest, GenerateWritesThePackageAndSaysWhatItHolds) {
    // Options after "generate --registry iMac", the package's ports, and
    // words standard error holds and words it doesn't.
    using Words = std::vector<std::string>;
    const std::tuple<const char*, Words, std::string, Words, Words> rows[] = {
        {"BothHalvesTypedAtOnce",
         {"--model", "iMac19,1", "--port", hs03, "--connector", hs03 + "=10", "--with-companion",
          "--connector", camera + "=42"}, // a code the menu doesn't name
         "iMac19,1: iMac19,1-XHC1/HS03:10 iMac19,1-XHC1/HS13:42 iMac19,1-XHC1/SS03:10",
         {"Generating Korvane.kext with 3 enabled port(s)...",
          "The package will hold, per controller:\n"
          "  XHC2 8086:15EC: support personality only\n"
          "  XHC1 8086:A36D: 3 ports checked\n",
          "korvane: --connector HS13: the port has no companion"},
         {}},
        {"SelectComesFirstWhateverTheOrder",
         {"--model", "iMac19,1", "--port", camera, "--with-companion", "--select", "none"},
         "iMac19,1: iMac19,1-XHC1/HS13:255",
         {"Generating Korvane.kext with 1 enabled port(s)...",
          "korvane: --port HS13: the port has no companion; --with-companion changes nothing for it."},
         {}},
        {"RegistryModelAndOneHalfChecked",
         {"--port", hs03},
         "iMac19,1: iMac19,1-XHC1/HS03:3 iMac19,1-XHC1/HS13:255",
         {"Target Mac model: iMac19,1 (from the registry)\n",
          "HS03 is kept without its USB 3 half SS03: USB 3 devices in that socket will run at USB 2 "
          "speed.\n"},
         {"korvane: ", "differs"}},
        {"AChoiceOtherThanTheRegistrysIsNotedAndKeptWhateverItsShape",
         {"--model", "My Mac"},
         "My Mac: My Mac-XHC1/HS13:255",
         {"Target Mac model: My Mac (your choice)\n",
          "Your choice My Mac differs from the registry's own model iMac19,1",
          "isn't shaped like a Mac model"},
         {}},
    };
    for (const auto& [name, options, package, said, notSaid] : rows) {
        SCOPED_TRACE(name);
        std::filesystem::remove(zip());
        Words arguments = {"generate", "--registry", iMac};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, zip().string() + "\n");
        EXPECT_EQ(merges(), package);
        for (const auto& words : said) {
            EXPECT_THAT(result.err, HasSubstr(words));
        }
        for (const auto& words : notSaid) {
            EXPECT_THAT(result.err, Not(HasSubstr(words)));
        }
        EXPECT_FALSE(std::filesystem::exists(home() / "Desktop" / "KorvaneGenerator_Work"));
    }

    // Which model a saved registry names is the scanner's; here, that a dump
    // naming none is said to leave "Mac".
    const Outcome dump = run({"generate", "--ioreg", hackintosh});
    EXPECT_EQ(dump.status, 0) << dump.err;
    EXPECT_THAT(dump.err, HasSubstr("korvane: the package names no Mac model"));
}

// --- The 15 ports macOS uses per controller.

TEST_F(CommandLineTest, ARunOverTheLimitIsRefusedUnlessAllowed) {
    // Nothing checked on the iMac Pro's XHC1: its template's 24 ports.
    const Outcome refused = run({"generate", "--registry", iMacPro, "--select", "none"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.out, "");
    EXPECT_THAT(refused.err,
                HasSubstr("korvane: XHC1 would be written with 24 ports (the built-in template's, "
                          "as none is checked), and macOS uses at most 15: check at most 15"));
    EXPECT_THAT(refused.err, HasSubstr("korvane: XHC1: nothing is checked, so the built-in template is "
                                       "written, with ports the scan didn't see: "));
    EXPECT_FALSE(std::filesystem::exists(zip()));

    EXPECT_EQ(run({"generate", "--registry", hackintosh, "--select", "all"}).status, 2) << "18 checked";

    const Outcome allowed =
        run({"generate", "--registry", iMacPro, "--select", "none", "--allow-over-limit"});
    ASSERT_EQ(allowed.status, 0) << allowed.err;
    EXPECT_THAT(allowed.err, HasSubstr("written all the same (--allow-over-limit)"));
    EXPECT_TRUE(std::filesystem::exists(zip()));
}

TEST_F(CommandLineTest, AFailedRunEndsWithStatusOneAndItsError) {
    std::filesystem::remove(home() / "Desktop");
    writeFileAtomically(home() / "Desktop", "a file where the Desktop should be");
    const Outcome result = run({"generate", "--registry", iMac});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("ERROR: " + (home() / "Desktop" / "KorvaneGenerator_Work").string() +
                                      ": Not a directory"));
}

// --- Mapping sessions: what one run saves, the next starts from.

TEST_F(CommandLineTest, AMapCarriesTheSessionToTheNextRun) {
    const std::string map = at("s.korvanemap");
    const Outcome saving = run({"generate", "--registry", iMac, "--model", "iMac19,1", "--port", ss02,
                                "--connector", ss02 + "=10", "--nickname", camera + "=camera, inside",
                                "--note", camera + "=behind the lid", "--save-map", map});
    ASSERT_EQ(saving.status, 0) << saving.err;
    const auto first = readZip(zip());
    ASSERT_EQ(run({"generate", "--registry", iMac, "--map", map}).status, 0);
    EXPECT_EQ(readZip(zip()).at("KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist"),
              first.at("KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist"));

    // Restoring the session is the model's; here, that the texts given as
    // options reach the map.
    EXPECT_THAT(run({"scan", "--registry", iMac, "--json", "--map", map}).out,
                HasSubstr(R"("nickname":"camera, inside","note":"behind the lid")"));

    const Outcome elsewhere =
        run({"scan", "--registry", KORVANE_TEST_DATA_DIR "/macos/MacBookPro15-2/IOReg.txt", "--map", map});
    EXPECT_EQ(elsewhere.status, 0);
    EXPECT_THAT(elsewhere.out, HasSubstr("\nNot on this machine (2):\n"));
    EXPECT_THAT(elsewhere.out,
                HasSubstr("\n0 of 8 port(s) selected; 2 kept for ports not on this machine.\n"))
        << "the map's checks are of ports elsewhere";
    EXPECT_THAT(elsewhere.err,
                HasSubstr("The map was made for iMac19,1, and this registry's own model is MacBookPro15,2."));
    EXPECT_THAT(elsewhere.err, HasSubstr("Map controller 8086:a36d|XHC1|14000000: not on this machine\n"))
        << "the MacBook Pro's XHC1 is another chip";

    // Continuing the map may write over it; a path below a file fails.
    EXPECT_EQ(run({"scan", "--registry", iMac, "--map", map, "--save-map", map}).status, 0);
    const Outcome below = run({"scan", "--registry", iMac, "--save-map", map + "/below"});
    EXPECT_EQ(below.status, 1);
    EXPECT_THAT(below.err, HasSubstr("korvane: "));
}

// --- Snapshots: they scan as the dump they came from, masked unless --raw.

TEST_F(CommandLineTest, SnapshotScansAsItsSourceWithIdentifiersMasked) {
    const std::string snapshot = at("snap.plist");
    const Outcome saved = run({"snapshot", "--registry", iMac, "-o", snapshot});
    ASSERT_EQ(saved.status, 0) << saved.err;
    EXPECT_EQ(saved.out, snapshot + "\n");
    EXPECT_EQ(untimed(run({"scan", "--registry", snapshot, "--json"}).out),
              untimed(run({"scan", "--registry", iMac, "--json"}).out));

    // The serial number, the platform UUID, the Ethernet MAC address (bytes,
    // so base64 in the file) and the console user.
    const std::string masked = readFileBytes(snapshot).value();
    for (const auto& secret :
         {"OPnTlKjE", "C02Y862SJV3N", "67C622D3-7510-5F2A-81D0-2A874FC0E6B8", ">kiosk<"}) {
        EXPECT_THAT(masked, Not(HasSubstr(secret)));
    }

    // Written over when asked (a refusal row shows it is not otherwise), and
    // then with the raw identifiers.
    const Outcome forced = run({"snapshot", "--raw", "--force", "--registry", iMac, "--output", snapshot});
    ASSERT_EQ(forced.status, 0) << forced.err;
    const std::string raw = readFileBytes(snapshot).value();
    for (const auto& secret : {"OPnTlKjE", "C02Y862SJV3N", ">kiosk<"}) {
        EXPECT_THAT(raw, HasSubstr(secret));
    }

    const Outcome below = run({"snapshot", "--registry", iMac, "-o", snapshot + "/below"});
    EXPECT_EQ(below.status, 1);
    EXPECT_EQ(below.out, "");
    EXPECT_THAT(below.err, HasSubstr("korvane: " + snapshot + "/below: "));
}

} // namespace
} // namespace korvane
