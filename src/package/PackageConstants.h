#pragma once

#include <string_view>

namespace korvane {

// Who made the package. The bundle's info string, the window's footer and the
// About box all show these, so they live in one place. The address is a
// reserved example domain on purpose: the project publishes no personal
// address, and a placeholder that can never reach a stranger is the honest
// choice.
inline constexpr std::string_view makerLine = "KorvaneGenerator project";
inline constexpr std::string_view makerContactAddress = "korvanegenerator@example.org";

// What the package writer leaves in the folder it is given.
inline constexpr std::string_view kextBundleName = "Korvane.kext";
inline constexpr std::string_view reportFileName = "Korvane-report.txt";

} // namespace korvane
