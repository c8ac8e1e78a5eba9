#include "PackageTestSupport.h"
#include "package/GenerationReport.h"
#include "support/Golden.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(GenerationReport, ListsEveryControllerAndPortAlsoThoseThePackageLeavesOut) {
    // Own ports, sorted by number, with blank and empty fields and a device.
    auto own = makeController("XHC1", 0x8086, 0xa36d,
                              {{"SS01", "14100000", 3, portData(17), "", ""},
                               {"HS03", "14300000", 9, portData(3), "", "  Ultra Fit  "},
                               {"NUL", "", 255, {}, "", ""},
                               {"HS03", "x", 0, portData(3), "", ""}});
    // No ports: the template's, counted as the ports written.
    const USBControllerMap fromTemplate{"XHC2", "14", 0x8086, 0x9cb1, "", "AppleUSBXHCILPTH", "", {}};
    // No identity and no ports (the last): still listed.
    EXPECT_TRUE(matchesGolden(generationReportText({own, fromTemplate, makeController("", 0, 0x1234)}),
                              "package/Korvane-report.txt"));
    EXPECT_TRUE(emptyGenerationReportText().ends_with("without USB configuration data."))
        << "no final line feed";
}

// Lines 3 to 5 of a report: what was read, from a saved registry or this machine.
std::string prefaceOf(bool isSaved, const std::string& primarySource) {
    return std::string(
               "Includes only dynamic AppleUSBXHCIPCI support personalities for USB controller PCI IDs ") +
           (isSaved ? "found in the saved registry." : "detected on this machine.") + "\n" + primarySource +
           "\nNo static controller database is injected; every support match is generated from " +
           (isSaved ? "the USB controller PCI IDs found in the saved registry."
                    : "this machine's detected USB controller PCI IDs.");
}

// Only lines 3 to 5 and the empty-list text follow the source; the live
// macOS run keeps its exact words and no other source borrows them. Lines 3
// and 5 tell this machine from a saved registry. Each row: the source, its
// ports' connector source, line 4 of the preface, a piece of the empty text.
TEST(GenerationReport, ThePrefaceAndTheEmptyTextSayWhatWasRead) {
    const std::tuple<ScanSource, ConnectorSource, const char*, const char*> rows[] = {
        {{},
         ConnectorSource::registry,
         "Primary source: native IOKit IORegistry scan, the same live registry layer used by macOS "
         "tools. No saved .ioreg is used.",
         "found through the native IOKit scanner."},
        {{ScanSource::Kind::savedRegistry, "darwindumped_iMacPro1-1_IOReg.txt", "ioreg text"},
         ConnectorSource::registry,
         "Primary source: saved registry darwindumped_iMacPro1-1_IOReg.txt (ioreg text), read from "
         "the file; the registry of the machine that ran this generator was not used.",
         "found in the saved registry darwindumped_iMacPro1-1_IOReg.txt (ioreg text)."},
        {{ScanSource::Kind::linuxSysfs},
         ConnectorSource::firmware,
         "Primary source: this machine's Linux sysfs (PCI devices and USB root hubs), read under "
         "Linux; connector types came from the firmware's ACPI _UPC objects.",
         "found in this machine's Linux sysfs."},
        {{ScanSource::Kind::linuxSysfs},
         ConnectorSource::kernel,
         "Primary source: this machine's Linux sysfs (PCI devices and USB root hubs), read under "
         "Linux; connector types did not come from the firmware: they are the kernel's or inferred, "
         "so check them.",
         "found in this machine's Linux sysfs."}};
    const std::string livePreface = prefaceOf(false, std::get<2>(rows[0]));
    for (const auto& [source, connectorSource, primarySource, emptyReason] : rows) {
        SCOPED_TRACE(primarySource);
        auto port = makePort("HS01", 1);
        port.connectorSource = connectorSource;
        const std::vector<USBControllerMap> controllers{makeController("XHC1", 0x8086, 0xa36d, {port})};
        std::string expected = generationReportText(controllers);
        expected.replace(expected.find(livePreface), livePreface.size(),
                         prefaceOf(source.kind == ScanSource::Kind::savedRegistry, primarySource));
        EXPECT_EQ(generationReportText(controllers, source), expected);
        const std::string empty = emptyGenerationReportText(source);
        EXPECT_NE(empty.find(emptyReason), std::string::npos) << empty;
        if (source.kind != ScanSource::Kind::liveMac) {
            EXPECT_EQ(empty.find("IOKit"), std::string::npos) << empty;
        }
    }
}

} // namespace
} // namespace korvane
