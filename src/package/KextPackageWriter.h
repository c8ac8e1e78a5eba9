#pragma once

#include "records/USBControllerMap.h"
#include "tools/ToolPaths.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
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
// Tools come from `tools`: `sysctl -n hw.model` names the machine ("Mac" when
// it fails or says nothing) and `plutil -lint` checks the written file.
//
// Throws, leaving what was written in place:
//   - std::system_error / std::filesystem::filesystem_error with the
//     platform's wording when the old bundle can't be removed, a folder
//     can't be made or a file can't be written;
//   - CollectorError::operationFailed when plutil rejects the file or runs out
//     of time, or std::system_error when plutil can't be started. The report
//     is written only after the check passes.
// Blocks its thread for the tool runs.
void generateKorvaneKext(const std::filesystem::path& folder,
                         const std::optional<std::filesystem::path>& ioregFile,
                         const std::optional<std::vector<USBControllerMap>>& selectedControllers,
                         const ToolPaths& tools, const USBScanFunction& scan = {});

// The machine model from `sysctl -n hw.model` at that path, trimmed; "Mac"
// when the tool fails or prints nothing.
std::string machineModel(const std::string& sysctlPath);

} // namespace korvane
