#pragma once

#include <filesystem>
#include <string>

namespace korvane {

// Where and how a saved dump is brought to text. Every path is injected so a
// test can point the tool at a fake and the copies at its own folder.
struct DumpReadingOptions {
    std::string plutil;                       // the tool that turns a binary property list into XML
    double conversionTimeout = 15;            // seconds
    std::filesystem::path temporaryFolder;    // where the working copy goes
};

// The dump's text, whatever its form: a copy named
// "Korvane_IORegScan_{UUID}.xml" in the temporary folder is converted in place
// with `plutil -convert xml1` (a plain text dump is refused by the tool and
// stays as it was) and read as strict UTF-8. The user's file is never touched,
// and the copy is gone again on every way out, a timed-out tool included.
// Never fails: what can't be read gives "".
std::string readIORegistryExplorerFileForScanning(const std::filesystem::path& dump,
                                                  const DumpReadingOptions& options);

// A new random UUID in its usual upper-case text form with hyphens.
std::string newUUIDText();

} // namespace korvane
