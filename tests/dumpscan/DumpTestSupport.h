#pragma once

#include "ids/IDsNameResolver.h"
#include "support/TempFolder.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace korvane::dumptest {

// A resolver over two tiny hand-made databases in a private folder, so that
// controller names don't depend on the machine's ids files.
class TinyNames {
  public:
    TinyNames() {
        std::filesystem::create_directories(folder_.path() / "resources" / "Tools");
        std::ofstream(folder_.path() / "resources" / "Tools" / "pci.ids")
            << "8086  Intel Corporation\n"
               "\ta36d  Cannon Lake PCH USB 3.1 xHCI Host Controller\n";
        std::ofstream(folder_.path() / "resources" / "Tools" / "usb.ids")
            << "1b21  ASMedia Technology Inc.\n"
               "\t1242  ASM1142 USB 3.1 Host Controller\n";
        names_ = std::make_unique<IDsNameResolver>(
            IDsDatabaseLocations{folder_.path() / "support", folder_.path() / "resources"});
    }

    IDsNameResolver& names() { return *names_; }

  private:
    TempFolder folder_;
    std::unique_ptr<IDsNameResolver> names_;
};

inline std::filesystem::path dataFile(const std::string& relative) {
    return std::filesystem::path(KORVANE_TEST_DATA_DIR) / relative;
}

// ioreg's node line tail; the parsers ignore everything behind the class name.
inline std::string nodeTail(const std::string& className) {
    return "  <class " + className +
           ", id 0x100000200, registered, matched, active, busy 0 (0 ms), retain 9>";
}

} // namespace korvane::dumptest
