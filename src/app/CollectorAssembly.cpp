#include "app/CollectorAssembly.h"

#include "dumpscan/USBTreeScanner.h"
#include "platform/FileWorkFolderLocks.h"
#include "platform/LiveSources.h"
#include "platform/PlatformFolders.h"
#include "savedregistry/SavedRegistry.h"
#include "savedregistry/SavedRegistryDiagnosis.h"
#include "scanner/PlatformModel.h"

namespace korvane {

namespace {

// Why a saved registry gave no controller (the IOUSB plane alone, ioreg
// without -l, ...), for both fronts to tell beside the empty list.
std::optional<std::string> noControllerNotice(const std::filesystem::path& file,
                                              const RegistrySource& registry) {
    const auto bytes = readSavedRegistryFile(file);
    if (!bytes) {
        return "No USB controller in " + file.string() + ": it can no longer be read.";
    }
    const auto root = registry.copyRoot();
    if (!root) {
        return "No USB controller in " + file.string() + ": it is " +
               whyNoRegistryIn(*bytes).value_or("no saved registry now.");
    }
    return "No USB controller in " + file.string() + ": it looks like " +
           whyNoControllerIn(*root, savedRegistryFormat(*bytes));
}

// What the scans of this choice read, named as the report names it.
ScanSource scanSourceOf(const RegistryChoice& choice) {
    if (choice.isLive()) {
        return liveScanSource();
    }
    const std::filesystem::path file = choice.registryFile ? *choice.registryFile : *choice.ioregFile;
    std::string kind = "ioreg text";
    if (choice.registryFile) {
        const auto bytes = readSavedRegistryFile(file);
        if (bytes && savedRegistryFormat(*bytes) == SavedRegistryFormat::Snapshot) {
            kind = "registry snapshot";
        }
    }
    return {.kind = ScanSource::Kind::savedRegistry, .fileName = file.filename().string(), .fileKind = kind};
}

} // namespace

ApplicationPaths applicationPaths() {
    const auto executableFolder = executableDirectory();
    return {desktopURL(), applicationSupportDirectory(), resourceDirectory(executableFolder),
            platformToolPaths(executableFolder)};
}

IDsNameResolver& sharedIDsNameResolver() {
    static IDsNameResolver resolver(IDsDatabaseLocations{applicationSupportDirectory(), resourceDirectory()});
    return resolver;
}

std::shared_ptr<CollectorModel> assembleCollectorModel(const RegistryChoice& choice,
                                                       std::shared_ptr<const RegistrySource> registry,
                                                       Scheduler& scheduler, DesktopServices& desktop,
                                                       bool listenForHotplug) {
    IDsNameResolver& names = sharedIDsNameResolver();
    const ToolPaths tools = platformToolPaths(executableDirectory());
    const std::shared_ptr<const RegistrySource> registryForModel = registry;
    CollectorEnvironment environment{
        .scheduler = scheduler,
        .desktop = desktop,
        .scanRegistry =
            [registry = std::move(registry), ioregFile = choice.ioregFile, registryFile = choice.registryFile,
             &names, plutil = tools.plutil, source = scanSourceOf(choice)] {
                USBScanResult result =
                    USBTreeScanner{
                        .ioregFile = ioregFile, .liveRegistry = *registry, .names = names, .plutil = plutil}
                        .scan();
                if (result.controllers.empty() && registryFile) {
                    if (auto notice = noControllerNotice(*registryFile, *registry)) {
                        result.notices.push_back(std::move(*notice));
                    }
                } else if (result.controllers.empty()) {
                    // Every empty list says why, the live one too.
                    result.notices.push_back("No USB controller in " + scanSourceText(source) +
                                             ": it shows no PCI device of the xHCI class (0C0330) with its "
                                             "USB root hubs.");
                }
                return result;
            },
        .names = names,
        .tools = tools,
        // Asked afresh for each run: the user may move the Desktop meanwhile.
        .desktopURL = [] { return desktopURL(); },
    };
    // A saved registry's map is for the machine it was saved on, not this
    // one: its own model stands in for this machine's.
    if (choice.isLive()) {
        environment.machineModel = [tools] { return liveMachineModel(tools); };
    } else {
        environment.machineModelSource = TargetMacModel::Source::savedRegistry;
        environment.machineModel = [registry = registryForModel] {
            const auto root = registry->copyRoot();
            return root ? platformModel(*root) : std::nullopt;
        };
    }
    if (listenForHotplug && choice.isLive()) {
        environment.hotplugSource = makeHotplugSource(scheduler);
    }
    environment.scanSource = scanSourceOf(choice);
    environment.homeFolder = homeDirectory(Environment::process());
    environment.workFolderLocks = std::make_shared<FileWorkFolderLocks>(lockDirectory());
    environment.idsSources = IDsDownloadSources::standard();
    environment.idsLocations = names.locations();
    return CollectorModel::create(std::move(environment));
}

} // namespace korvane
