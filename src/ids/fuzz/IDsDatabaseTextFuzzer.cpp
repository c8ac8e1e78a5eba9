// Differential fuzzing of the indexed ids search against the plain line walk:
// the first four bytes choose the vendor and device IDs, the rest is the
// database text. Any disagreement aborts.
#include "ids/IDsDatabaseText.h"
#include "support/LiteralIDsWalk.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4 || size > 64 * 1024) {
        return 0;
    }
    const std::int64_t vendorID = data[0] << 8 | data[1];
    const std::int64_t deviceID = data[2] << 8 | data[3];
    const std::string_view text(reinterpret_cast<const char*>(data) + 4, size - 4);

    const korvane::IDsDatabaseText indexed(text);
    const korvane::LiteralIDsWalk reference(text);
    // The text's own hex fields as well, so matches aren't left to chance.
    for (const auto& [vendor, device] :
         {std::pair{vendorID, deviceID}, std::pair{vendorID, vendorID}, std::pair{deviceID, deviceID}}) {
        if (indexed.name(vendor, device) != reference.name(vendor, device)) {
            std::fprintf(stderr, "disagreement for %04llx:%04llx\n", static_cast<unsigned long long>(vendor),
                         static_cast<unsigned long long>(device));
            std::abort();
        }
    }
    return 0;
}
