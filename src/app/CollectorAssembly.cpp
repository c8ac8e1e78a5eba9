#include "app/CollectorAssembly.h"

#include "dumpscan/USBTreeScanner.h"
#include "platform/FileWorkFolderLocks.h"
#include "platform/LiveSources.h"
#include "platform/PlatformFolders.h"

namespace korvane {

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
    CollectorEnvironment environment{
        .scheduler = scheduler,
        .desktop = desktop,
        .scanRegistry =
            [registry = std::move(registry), ioregFile = choice.ioregFile, &names, plutil = tools.plutil] {
                return USBTreeScanner{
                    .ioregFile = ioregFile, .liveRegistry = *registry, .names = names, .plutil = plutil}
                    .scan();
            },
        .names = names,
        .tools = tools,
        // Asked afresh for each run: the user may move the Desktop meanwhile.
        .desktopURL = [] { return desktopURL(); },
    };
    // Asked of this machine also when a saved registry is shown; the user's
    // choice of target model stands above it either way.
    environment.machineModel = [tools] { return liveMachineModel(tools); };
    if (listenForHotplug && choice.isLive()) {
        environment.hotplugSource = makeHotplugSource(scheduler);
    }
    environment.workFolderLocks = std::make_shared<FileWorkFolderLocks>(lockDirectory());
    environment.idsSources = IDsDownloadSources::standard();
    environment.idsLocations = names.locations();
    return CollectorModel::create(std::move(environment));
}

} // namespace korvane
