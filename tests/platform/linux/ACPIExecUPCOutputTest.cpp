#include "platform/linux/ACPIExecUPCOutput.h"

#include "support/TestData.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

const std::string rhub = "\\_SB_.PCI0.S20_.RHUB.";

TEST(ACPIExecUPCOutput, ReadsEveryAnswerAndFailureOfARealRun) {
    const auto output =
        ACPIExecUPCOutput::parse(testDataBytes("linux/qemu-firmware-ports/acpiexec-all-upc.txt"));
    const std::map<std::string, FirmwareUPC, std::less<>> answers = {
        {rhub + "SS01", {true, 0x03}}, {rhub + "HS01", {true, 0x03}}, {rhub + "SS02", {true, 0x0A}},
        {rhub + "HS02", {true, 0xFF}}, {rhub + "SS03", {true, 0x09}}, {rhub + "HS03", {true, 0x00}},
        {rhub + "SS04", {false, 0}}};
    EXPECT_EQ(output.answers, answers);
    const std::map<std::string, std::string, std::less<>> failures = {
        {rhub + "HS05", "AE_AML_DIVIDE_BY_ZERO"},
        {rhub + "HS06", "returned no package of two integers"},
        {rhub + "HS07", "returned no package of two integers"}};
    EXPECT_EQ(output.failures, failures);
    EXPECT_EQ(output.loadedTables, 2u);
}

TEST(ACPIExecUPCOutput, OddOutputGivesFewerAnswersNeverWrongOnes) {
    const std::string run = testDataBytes("linux/qemu-firmware-ports/acpiexec-all-upc.txt");
    const std::string header =
        "Evaluation of " + rhub + "HS01._UPC returned object 0x1, external buffer length 78\n";
    // Name, text, and how many answers and failures it gives.
    const std::tuple<const char*, std::string, std::size_t, std::size_t> rows[] = {
        {"nothing", "", 0, 0},
        {"not text", std::string("\0\xff\xfe\n\n\x80 returned AE_OK", 21), 0, 0},
        {"cut off inside a package", run.substr(0, run.find("0000000000000009")), 4, 1},
        {"a failed Evaluate command", "Evaluation of " + rhub + "HS09._UPC failed with status AE_NOT_FOUND\n",
         0, 1},
        {"CRLF line ends",
         header + "  [Package] Contains 4 Elements:\r\n    [Integer] = FF\r\n    [Integer] = 3\r\n", 1, 0},
        {"a nested package as the type",
         header + "  [Package] Contains 2 Elements:\n    [Integer] = FF\n    [Package] Contains 1 Elements:\n"
                  "      [Integer] = 3\n",
         0, 1},
        {"a string as the type",
         header + "  [Package] Contains 2 Elements:\n    [Integer] = 1\n    [String] = \"3\"\n", 0, 1},
        {"an integer, not a package", header + "  [Integer] = 0000000000000003\n", 0, 1},
        {"the same path twice keeps the first",
         header + "  [Package] Contains 2 Elements:\n    [Integer] = 1\n    [Integer] = 9\n\n" + rhub +
             "HS01._UPC returned AE_AML_NO_RETURN_VALUE\n",
         1, 0},
    };
    for (const auto& [name, text, answers, failures] : rows) {
        const auto output = ACPIExecUPCOutput::parse(text);
        EXPECT_EQ(output.answers.size(), answers) << name;
        EXPECT_EQ(output.failures.size(), failures) << name;
    }
}

} // namespace
} // namespace korvane
