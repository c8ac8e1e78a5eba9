// The ids walk over any bytes: the first four bytes choose the vendor and
// device IDs, the rest is the database text. It must neither crash nor hang.
#include "ids/IDsDatabaseText.h"

#include <cstdint>
#include <string_view>
#include <utility>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4 || size > 64 * 1024) {
        return 0;
    }
    const std::int64_t vendorID = data[0] << 8 | data[1];
    const std::int64_t deviceID = data[2] << 8 | data[3];
    const korvane::IDsDatabaseText database(
        std::string_view(reinterpret_cast<const char*>(data) + 4, size - 4));
    // The text's own hex fields as well, so matches aren't left to chance.
    for (const auto& [vendor, device] :
         {std::pair{vendorID, deviceID}, std::pair{vendorID, vendorID}, std::pair{deviceID, deviceID}}) {
        database.name(vendor, device);
    }
    return 0;
}
