// The whole line-based dump parser over arbitrary bytes: controller and PCI
// passes, port parser and readers. No crash, no hang, bounded memory.

#include "dumpscan/DumpParser.h"
#include "ids/IDsNameResolver.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>

namespace {

// A resolver over an empty private folder: names are no part of what is
// fuzzed here, and the user's databases must not be read.
korvane::IDsNameResolver& resolver() {
    static korvane::IDsNameResolver names(korvane::IDsDatabaseLocations{
        std::filesystem::temp_directory_path() / "korvane-fuzz-dump-text" / "support",
        std::filesystem::temp_directory_path() / "korvane-fuzz-dump-text" / "resources"});
    return names;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    (void)korvane::parseControllers(text, resolver());
    return 0;
}
