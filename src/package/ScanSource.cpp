#include "package/ScanSource.h"

namespace korvane {

std::string scanSourceText(const ScanSource& source) {
    switch (source.kind) {
    case ScanSource::Kind::savedRegistry:
        return "saved registry " + source.fileName + " (" + source.fileKind + ")";
    case ScanSource::Kind::linuxSysfs:
        return "this machine's Linux sysfs";
    case ScanSource::Kind::liveMac:
        break;
    }
    return "this machine's IOKit registry";
}

} // namespace korvane
