#pragma once

#include "collector/DesktopServices.h"

#include <memory>

namespace korvane {

// The desktop services of the platform the program was built for: its sound
// theme, its file manager and its browser. Made and used on the main thread.
std::unique_ptr<DesktopServices> makeSystemDesktopServices();

} // namespace korvane
