#pragma once

#include "package/ScanSource.h"
#include "records/USBControllerMap.h"
#include "tools/ToolPaths.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// Where the writer gets controllers when it is handed no list: the scanner
// front, given the optional saved registry dump. The package layer can't
// depend on the scanners, so the caller passes it in.
using USBScanFunction = std::function<USBScanResult(const std::optional<std::filesystem::path>& ioregFile)>;

// Writes Korvane.kext/Contents/Info.plist into `folder`, checks it with
// `plutil -lint` and writes "Korvane-report.txt" beside it. An empty list
// writes only the report's no-controller text and no bundle. An absent list
// is replaced by `scan(ioregFile)`, or by an empty list without `scan`.
//
// `source` is what the controllers were read from, for the report to say.
// `machineModel` is the Mac model the merge personalities name (the caller
// has chosen it: the user's, this machine's, or "Mac"); `plutil -lint` from
// `tools` checks the written file.
//
// Throws, leaving what was written in place:
//   - std::system_error / std::filesystem::filesystem_error with the
//     platform's wording when the old bundle can't be removed, a folder
//     can't be made or a file can't be written;
//   - CollectorError::operationFailed when plutil rejects the file or runs out
//     of time, or std::system_error when plutil can't be started. The report
//     is written only after the check passes.
// Blocks its thread for the tool run.
void generateKorvaneKext(const std::filesystem::path& folder,
                         const std::optional<std::filesystem::path>& ioregFile,
                         const std::optional<std::vector<USBControllerMap>>& selectedControllers,
                         const ToolPaths& tools, std::string_view machineModel,
                         const USBScanFunction& scan = {}, const ScanSource& source = {});

} // namespace korvane
