#include "package/KextPackageWriter.h"

#include "base/FileIO.h"
#include "package/GenerationReport.h"
#include "package/KextInfoPlist.h"
#include "package/PackageConstants.h"
#include "tools/ProcessRunner.h"
#include "tools/PropertyList.h"

#include <cerrno>
#include <system_error>

namespace korvane {

namespace {

constexpr double plutilTimeout = 60;

std::string infoPlistXML(const std::vector<USBControllerMap>& controllers, std::string_view model) {
    const PlistPtr root = makeKextInfoPlist(controllers, model);
    std::string xml = propertyListXML(root.get());
    if (xml.empty()) {
        throw std::system_error(std::make_error_code(std::errc::invalid_argument),
                                "The property list could not be serialised");
    }
    return xml;
}

} // namespace

void generateKorvaneKext(const std::filesystem::path& folder,
                         const std::optional<std::filesystem::path>& ioregFile,
                         const std::optional<std::vector<USBControllerMap>>& selectedControllers,
                         const ToolPaths& tools, std::string_view machineModel, const USBScanFunction& scan,
                         const ScanSource& source) {
    std::vector<USBControllerMap> controllers;
    if (selectedControllers) {
        controllers = *selectedControllers;
    } else if (scan) {
        controllers = scan(ioregFile).controllers;
    }

    const auto reportPath = folder / reportFileName;
    if (controllers.empty()) {
        writeFileAtomically(reportPath, emptyGenerationReportText(source));
        return;
    }

    const auto bundle = folder / kextBundleName;
    const auto contents = bundle / "Contents";
    // A dangling link counts as something there: it would stop the folder
    // from being made just as a real entry would.
    if (std::filesystem::exists(std::filesystem::symlink_status(bundle))) {
        std::filesystem::remove_all(bundle);
    }
    std::filesystem::create_directories(contents);

    const auto infoPlist = contents / "Info.plist";
    writeFileAtomically(infoPlist, infoPlistXML(controllers, machineModel));

    runTool(tools.plutil, {"-lint", infoPlist.string()}, std::nullopt, plutilTimeout);

    writeFileAtomically(reportPath, generationReportText(controllers, source));
}

} // namespace korvane
