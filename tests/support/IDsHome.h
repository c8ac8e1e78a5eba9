#pragma once

#include "base/FileIO.h"
#include "ids/IDsNameResolver.h"
#include "support/TempFolder.h"
#include "support/TestData.h"

#include <filesystem>
#include <memory>
#include <string>

namespace korvane {

// A name resolver whose databases the test chooses, in a temporary home of
// its own, so names never depend on the machine or the user's copies: the
// application's copy is `pci` and `usb` below resources/Tools, the user's
// folder (support/) starts empty.
class IDsHome {
  public:
    // The tiny databases of tests/data/ids unless the test brings its own.
    explicit IDsHome(const std::string& pci = testDataBytes("ids/tiny-pci.ids"),
                     const std::string& usb = testDataBytes("ids/tiny-usb.ids")) {
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

  private:
    TempFolder folder_;
    IDsDatabaseLocations locations_;
    std::unique_ptr<IDsNameResolver> names_;
};

// The corpus's own databases: hwdata's lines for what the saved machines
// hold, so the goldens name their controllers and devices the same whatever
// hwdata the build machine has.
class CorpusIDsHome : public IDsHome {
  public:
    CorpusIDsHome() : IDsHome(testDataBytes("ids/corpus-pci.ids"), testDataBytes("ids/corpus-usb.ids")) {}
};

} // namespace korvane
