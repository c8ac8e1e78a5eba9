#include "app/RegistryChoice.h"

#include "platform/LiveSources.h"
#include "platform/PlatformFolders.h"
#include "savedregistry/SavedRegistry.h"

namespace korvane {

namespace {

void requireFile(const std::filesystem::path& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        throw RegistryChoiceError(file.string() + ": is a folder, not a saved registry file");
    }
    if (!std::filesystem::is_regular_file(file, error)) {
        throw RegistryChoiceError(file.string() + ": no such file");
    }
}

} // namespace

std::shared_ptr<const RegistrySource> openRegistry(const RegistryChoice& choice) {
    if (choice.ioregFile) {
        requireFile(*choice.ioregFile);
        return std::make_shared<EmptyRegistrySource>();
    }
    if (choice.registryFile) {
        requireFile(*choice.registryFile);
        std::shared_ptr<const RegistrySource> registry = openSavedRegistry(*choice.registryFile);
        if (!registry) {
            throw RegistryChoiceError(
                choice.registryFile->string() +
                ": not a saved registry (an ioreg -a snapshot or an ioreg -l text dump)");
        }
        return registry;
    }
    return makeLiveRegistrySource(platformToolPaths(executableDirectory()));
}

} // namespace korvane
