#include "ui/linux/FreedesktopDesktopServices.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(FreedesktopDesktopServicesTest, ModelSoundsMapToTheSoundTheme) {
    EXPECT_EQ(FreedesktopDesktopServices::soundEventFor("Glass"), "complete");
    EXPECT_EQ(FreedesktopDesktopServices::soundEventFor("Basso"), "dialog-error");
    EXPECT_EQ(FreedesktopDesktopServices::soundEventFor("Funk"), "");
    EXPECT_EQ(FreedesktopDesktopServices::soundEventFor("glass"), "") << "names are exact";
}

} // namespace
} // namespace korvane
