#pragma once

#include "ids/IDsNameResolver.h"
#include "records/FileIO.h"
#include "support/BuildTree.h"
#include "support/TempFolder.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace korvane {

// A name resolver whose databases the test chooses, in a temporary home of
// its own, so names never depend on the machine or the user's copies: the
// application's copy is `pci` and `usb` below resources/Tools, the user's
// folder (support/) starts empty.
class IDsHome {
  public:
    // A few lines of each database: enough to name the controllers and devices
    // the tests make, small enough to read at a glance.
    static constexpr std::string_view tinyPCI = "8086  Intel Corporation\n"
                                                "\ta36d  Cannon Lake PCH USB 3.1 xHCI Host Controller\n"
                                                "1022  Advanced Micro Devices, Inc. [AMD]\n"
                                                "\t149c  Matisse USB 3.0 Host Controller\n";
    static constexpr std::string_view tinyUSB = "046d  Logitech, Inc.\n"
                                                "\tc52b  Unifying Receiver\n"
                                                "1b21  ASMedia Technology Inc.\n"
                                                "\t1242  ASM1142 USB 3.1 Host Controller\n"
                                                "1d6b  Linux Foundation\n";

    explicit IDsHome(std::string_view pci = tinyPCI, std::string_view usb = tinyUSB) {
        const auto tools = folder_.path() / "resources" / "Tools";
        std::filesystem::create_directories(tools);
        writeFileAtomically(tools / "pci.ids", pci);
        writeFileAtomically(tools / "usb.ids", usb);
        locations_ = {folder_.path() / "support", folder_.path() / "resources"};
        names_ = std::make_unique<IDsNameResolver>(locations_);
    }

    IDsNameResolver& names() { return *names_; }
    const IDsDatabaseLocations& locations() const { return locations_; }
    const std::filesystem::path& path() const { return folder_.path(); }

  protected:
    struct Bundled {};
    explicit IDsHome(Bundled) {
        const auto resources = buildTreeResourceDirectory();
        if (!std::filesystem::exists(resources / "Tools" / "pci.ids")) {
            throw std::runtime_error("the build's bundled ids databases are missing from " +
                                     resources.string());
        }
        locations_ = {folder_.path() / "support", resources};
        names_ = std::make_unique<IDsNameResolver>(locations_);
    }

  private:
    TempFolder folder_;
    IDsDatabaseLocations locations_;
    std::unique_ptr<IDsNameResolver> names_;
};

// The full databases the build bundles (Debian's hwdata), for the corpus.
class BundledIDsHome : public IDsHome {
  public:
    BundledIDsHome() : IDsHome(Bundled{}) {}
};

} // namespace korvane
