#pragma once

#include "ids/IDsNameResolver.h"
#include "records/USBControllerMap.h"
#include "scanner/RegistrySource.h"

#include <filesystem>
#include <optional>
#include <string>

namespace korvane {

// The one scanner the rest of the program calls: the live registry first, and
// a saved dump only when the live scan finds no controller at all and a dump
// was named. The collector's own flows never name one.
struct USBTreeScanner {
    std::optional<std::filesystem::path> ioregFile;
    const RegistrySource& liveRegistry;
    IDsNameResolver& names;
    // The tool that brings a binary property-list dump to XML, and how long it may take.
    std::string plutil;
    double conversionTimeout = 15;
    // Where the dump's working copy goes; none means the system's temporary folder.
    std::optional<std::filesystem::path> temporaryFolder = std::nullopt;

    // Never fails; blocks for as long as the scan takes. Background threads only.
    USBScanResult scan() const;

    // The dump path alone, without asking the live registry: the controllers
    // of `dump` as the line-based dump parser finds them. Nothing for a file
    // that isn't there, can't be read or holds no node lines.
    USBScanResult scanDump(const std::filesystem::path& dump) const;
};

// Where and how a saved dump is brought to text. Every path is injected so a
// test can point the tool at a fake and the copies at its own folder.
struct DumpReadingOptions {
    std::string plutil;                    // the tool that turns a binary property list into XML
    double conversionTimeout = 15;         // seconds
    std::filesystem::path temporaryFolder; // where the working copy goes
};

// The dump's text, whatever its form: a copy named
// "Korvane_IORegScan_{UUID}.xml" in the temporary folder is converted in place
// with `plutil -convert xml1` (a plain text dump is refused by the tool and
// stays as it was) and read as strict UTF-8. The user's file is never touched,
// and the copy is gone again on every way out, a timed-out tool included.
// Never fails: what can't be read, or is larger than any real dump, gives "".
std::string readIORegistryExplorerFileForScanning(const std::filesystem::path& dump,
                                                  const DumpReadingOptions& options);

// A new random UUID in its usual upper-case text form with hyphens.
std::string newUUIDText();

} // namespace korvane
