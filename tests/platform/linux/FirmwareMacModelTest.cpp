#include "platform/linux/FirmwareMacModel.h"

#include "support/TempFolder.h"

#include <fstream>
#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(FirmwareMacModel, OnlyAProductNameShapedLikeAMacModelIsOne) {
    const std::pair<const char*, const char*> rows[] = {
        {"iMac19,1\n", "iMac19,1"},
        {"MacBookPro15,2", "MacBookPro15,2"},
        {"Standard PC (Q35 + ICH9, 2009)", nullptr}, // QEMU's
        {"iMac19,", nullptr},
        {"19,1", nullptr},
        {"iMac19,1 rev2", nullptr},
        {"", nullptr},
    };
    for (const auto& [productName, model] : rows) {
        TempFolder root;
        std::filesystem::create_directories(root.path() / "class/dmi/id");
        std::ofstream(root.path() / "class/dmi/id/product_name") << productName << '\n';
        EXPECT_EQ(firmwareMacModel(root.path()), model ? std::optional<std::string>(model) : std::nullopt)
            << productName;
    }
    EXPECT_EQ(firmwareMacModel("/nonexistent/sys"), std::nullopt) << "no DMI data at all";
}

} // namespace
} // namespace korvane
