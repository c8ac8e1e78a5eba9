#include "platform/linux/FirmwarePortTypes.h"

#include "base/FileIO.h"
#include "support/FakeTool.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

const std::string hs01 = "\\_SB_.PCI0.XHC_.RHUB.HS01";

std::string answer(const char* connectable, const char* type) {
    return "ACPI: 2 ACPI AML tables successfully acquired and loaded\nEvaluation of " + hs01 +
           "._UPC returned object 0x1, external buffer length 78\n  [Package] Contains 4 Elements:\n"
           "    [Integer] = " +
           connectable + "\n    [Integer] = " + type + "\n    [Integer] = 0\n    [Integer] = 0\n\n";
}

// A tables folder as the kernel shows it, with a DSDT and one SSDT.
class FirmwareTables : public ::testing::Test {
  protected:
    FirmwareTables() {
        std::filesystem::create_directory(tables);
        writeFileAtomically(tables / "DSDT", "DSDT");
        writeFileAtomically(tables / "SSDT1", "SSDT");
    }
    std::string printing(const std::string& output) {
        writeFileAtomically(folder.path() / "output", output);
        return writeFakeTool(folder.path(), "acpiexec",
                             "echo run >> '" + (folder.path() / "runs").string() + "'\ncat '" +
                                 (folder.path() / "output").string() + "'");
    }

    TempFolder folder;
    std::filesystem::path tables = folder.path() / "tables";
};

TEST_F(FirmwareTables, OnlyAConnectablePortOfAKnownTypeTakesTheFirmwaresType) {
    const std::tuple<const char*, const char*, std::optional<std::int64_t>> rows[] = {
        {"FF", "3", 3},
        {"1", "A", 10},
        {"1", "FF", 255},
        {"0", "3", std::nullopt},  // not connectable: the kernel's rule stays
        {"1", "B", std::nullopt}}; // reserved by ACPI
    for (const auto& [connectable, type, expected] : rows) {
        const FirmwareUPCReader reader(tables, printing(answer(connectable, type)));
        FirmwarePortTypes types(reader);
        EXPECT_EQ(types.connectorType(hs01, "HS01"), expected) << connectable << " " << type;
        EXPECT_EQ(types.connectorType(hs01 + "X", "HS01X"), std::nullopt) << "a port without _UPC";
        EXPECT_TRUE(types.notices().empty());
    }
}

TEST_F(FirmwareTables, WhatKeepsTheFirmwaresTypesAwayIsToldOnce) {
    const std::string loaded = " ACPI AML tables successfully acquired and loaded\n";
    // What acpiexec prints (none: no acpiexec), whether a folder stands where
    // the DSDT must be (root reads any file: this is what root can't read
    // either), and the notice.
    const std::tuple<std::string, bool, const char*> rows[] = {
        {answer("1", "3"), true,
         "need root: the ACPI tables are readable by root only, so run as root (sudo)."},
        {"", true, "install acpica-tools (sudo apt install acpica-tools) and run as root"},
        {"ACPI: 2" + loaded + hs01 + "._UPC   returned AE_AML_DIVIDE_BY_ZERO\n", false,
         "The firmware's _UPC failed for HS01 (AE_AML_DIVIDE_BY_ZERO); its connector type comes from the "
         "kernel"},
        {"ACPI: 1" + loaded, false, "acpiexec loaded 1 of the 2 ACPI tables."},
        {"Segmentation fault\n", false, "acpiexec's output held no results."},
    };
    for (const auto& [output, isDSDTAFolder, notice] : rows) {
        std::filesystem::remove_all(tables / "DSDT");
        if (isDSDTAFolder) {
            std::filesystem::create_directory(tables / "DSDT");
        } else {
            writeFileAtomically(tables / "DSDT", "DSDT");
        }
        const FirmwareUPCReader reader(tables, output.empty() ? "" : printing(output));
        FirmwarePortTypes types(reader);
        EXPECT_EQ(types.connectorType(hs01, "HS01"), std::nullopt) << notice;
        EXPECT_THAT(types.notices(), testing::ElementsAre(testing::HasSubstr(notice)));
    }
}

TEST_F(FirmwareTables, ARunIsKeptUntilTheTablesChangeAndNoTablesMeanNoRunAndNoWord) {
    // One run for unchanged tables is the sysfs source's test, across scans.
    const FirmwareUPCReader reader(tables, printing(answer("1", "9")));
    reader.evaluate();
    writeFileAtomically(tables / "SSDT1", "SSDT, loaded again by the firmware");
    EXPECT_EQ(reader.evaluate()->output.answers.at(hs01).connectorType, 9);
    EXPECT_EQ(readFileBytes(folder.path() / "runs"), "run\nrun\n");

    const FirmwareUPCReader withoutACPI(folder.path() / "no-acpi", "");
    FirmwarePortTypes noTables(withoutACPI);
    EXPECT_EQ(noTables.connectorType(hs01, "HS01"), std::nullopt);
    EXPECT_TRUE(noTables.notices().empty()) << "a machine without ACPI has no firmware types to get";
}

} // namespace
} // namespace korvane
