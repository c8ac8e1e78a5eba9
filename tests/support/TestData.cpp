#include "support/TestData.h"

#include "records/FileIO.h"

#include <stdexcept>

namespace korvane {

std::filesystem::path testDataPath(std::string_view relative) {
    return std::filesystem::path(KORVANE_TEST_DATA_DIR) / relative;
}

std::string testDataBytes(std::string_view relative) {
    const auto path = testDataPath(relative);
    auto bytes = readFileBytes(path);
    if (!bytes) {
        throw std::runtime_error("the repository's test data is missing: " + path.string());
    }
    return std::move(*bytes);
}

} // namespace korvane
