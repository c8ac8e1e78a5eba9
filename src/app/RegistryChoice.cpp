#include "app/RegistryChoice.h"

#include "platform/LiveSources.h"
#include "platform/PlatformFolders.h"
#include "savedregistry/SavedRegistry.h"
#include "savedregistry/SavedRegistryDiagnosis.h"

namespace korvane {

namespace {

void requireFile(const std::filesystem::path& file) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (std::filesystem::is_directory(status)) {
        throw RegistryChoiceError(file.string() + ": is a folder, not a saved registry file");
    }
    if (!std::filesystem::exists(status)) {
        throw RegistryChoiceError(file.string() + ": no such file");
    }
    // A device or a pipe (/dev/null, a fifo) would read as empty or never end.
    if (!std::filesystem::is_regular_file(status)) {
        throw RegistryChoiceError(file.string() + ": is not a regular file");
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
            const auto bytes = readSavedRegistryFile(*choice.registryFile);
            const auto why = bytes ? whyNoRegistryIn(*bytes) : std::nullopt;
            throw RegistryChoiceError(choice.registryFile->string() +
                                      ": not a saved registry (an ioreg -a "
                                      "snapshot or an ioreg -l text dump)" +
                                      (why ? ": it is " + *why : std::string()));
        }
        return registry;
    }
    return makeLiveRegistrySource(platformToolPaths(executableDirectory()));
}

} // namespace korvane
