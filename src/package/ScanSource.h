#pragma once

#include <string>

namespace korvane {

// What a run's controllers were read from. The report and the install guide
// say it, so that a map made from a saved registry or from Linux never claims
// to come from a live macOS registry.
struct ScanSource {
    enum class Kind { liveMac, linuxSysfs, savedRegistry };
    Kind kind = Kind::liveMac;
    // A saved registry's file name without its folder, and what kind of file
    // it is ("ioreg text", "ioreg -a snapshot"); empty for the live kinds.
    std::string fileName{};
    std::string fileKind{};

    bool operator==(const ScanSource&) const = default;
};

// "saved registry darwindumped_iMacPro1-1_IOReg.txt (ioreg text)",
// "this machine's Linux sysfs" or "this machine's IOKit registry".
std::string scanSourceText(const ScanSource& source);

} // namespace korvane
