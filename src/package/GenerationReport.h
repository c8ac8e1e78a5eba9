#pragma once

#include "records/USBControllerMap.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// The plain-text account of a generation for the person who inspects the
// ZIP: a fixed preface, then one block per controller of the list as it was
// handed in. It lists every controller and port, also those the package
// leaves out. Ends in exactly one line feed.
std::string generationReportText(const std::vector<USBControllerMap>& controllers);

// The whole report when there was no controller at all; no final line feed.
extern const std::string_view emptyGenerationReportText;

} // namespace korvane
