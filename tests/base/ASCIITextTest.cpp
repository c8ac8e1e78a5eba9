#include "base/ASCIIText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(ASCIIText, ContainsIgnoringCaseFindsTheWordWhereverTheSkipsLand) {
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"xxBlueTOOTHxx", "bluetooth", true},           {"an INTERNAL", "internal", true},
        {"bluebluetooth", "bluetooth", true},           {"internaXinternal", "internal", true},
        {"INTERNAxINTERNAL", "internal", true},         {"bluetoot", "bluetooth", false},
        {"\xC3\xA9internal\xC3\xA9", "internal", true},
    };
    for (const auto& [text, needle, isFound] : rows) {
        EXPECT_EQ(containsIgnoringASCIICase(text, needle), isFound) << text;
    }
}

} // namespace
} // namespace korvane
