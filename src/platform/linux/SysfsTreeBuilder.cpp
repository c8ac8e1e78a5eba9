#include "platform/linux/SysfsTreeBuilder.h"

#include "scanner/PropertyReaders.h"

namespace korvane {

NativeUSBNode* SysfsTreeBuilder::add(NativeUSBNode& parent, std::string className,
                                     PropertyDictionary properties) {
    if (remaining_ == 0) {
        return nullptr;
    }
    --remaining_;
    std::string name = registryName(properties, className);
    std::string location = registryLocation(properties);
    return &parent.addChild(std::move(name), std::move(location), std::move(className),
                            std::move(properties));
}

} // namespace korvane
