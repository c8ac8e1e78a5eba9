#pragma once

#include "package/ScanSource.h"
#include "records/USBControllerMap.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// The plain-text account of a generation for the person who inspects the
// ZIP: a preface whose lines 3 to 5 say what `source` was, then one block per
// controller of the list as it was handed in. It lists every controller and
// port, also those the package leaves out. Ends in exactly one line feed.
std::string generationReportText(const std::vector<USBControllerMap>& controllers,
                                 const ScanSource& source = {});

// The whole report when `source` gave no controller at all; no final line feed.
std::string emptyGenerationReportText(const ScanSource& source = {});

} // namespace korvane
