#include "records/Connector.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(Connector, CommentLabelTellsTheUSB2HalfOfAUSB3Connector) {
    const std::tuple<std::int64_t, const char*, const char*> rows[] = {
        {3, "SS01", "USB3"},
        {3, "ss01", "USB3"},
        {3, "HS01", "USB2/USB3 companion"},
        {3, "\u00DF01", "USB3"}, // sharp s upper-cases to SS
        {9, "HS05", "Type-C + Switch"},
        {7, "HS01", "UsbConnector 7"},
    };
    for (const auto& [code, port, label] : rows) {
        EXPECT_EQ(connectorCommentLabel(code, port), label) << code << " on " << port;
    }
}

} // namespace
} // namespace korvane
