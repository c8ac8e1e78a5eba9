#pragma once

#include "base/FileIO.h"
#include "support/TestData.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace korvane {

// Whole outputs compared with a reviewed file, tests/data/expected/NAME.
// Lines of the file that begin with "#" are notes (where the values come
// from) and not part of the text. Run a test with KORVANE_UPDATE_GOLDEN=1 to
// write what it got into the file instead, notes kept, for review.
inline testing::AssertionResult matchesGolden(const std::string& actual, const std::string& name) {
    const auto path = testDataPath("expected/" + name);
    const std::string file = readFileBytes(path).value_or("");
    std::string notes;
    std::string expected;
    std::istringstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        (line.starts_with("#") ? notes : expected) += line + "\n";
    }
    if (std::getenv("KORVANE_UPDATE_GOLDEN")) {
        writeFileAtomically(path, notes + actual);
        return testing::AssertionSuccess();
    }
    if (file.empty()) {
        return testing::AssertionFailure() << "no golden file " << path;
    }
    if (actual == expected) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "differs from " << path << "\n--- expected\n"
                                       << expected << "--- got\n"
                                       << actual;
}

} // namespace korvane
