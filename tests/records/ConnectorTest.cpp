#include "records/Connector.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(ConnectorTest, MenuOffersTheFiveNamedCodesInOrder) {
    std::vector<std::string> labels;
    for (auto code : connectorMenuCodes) {
        labels.emplace_back(connectorMenuLabel(code).value());
    }
    EXPECT_EQ(labels, (std::vector<std::string>{"USB2", "USB3", "Type-C+Sw", "Type-C", "Internal"}));
    EXPECT_FALSE(connectorMenuLabel(1));
    EXPECT_FALSE(connectorMenuLabel(-1));
}

struct CommentCase {
    const char* name;
    std::int64_t code;
    const char* port;
    const char* label;
};

class ConnectorCommentTest : public testing::TestWithParam<CommentCase> {};

TEST_P(ConnectorCommentTest, Label) {
    EXPECT_EQ(connectorCommentLabel(GetParam().code, GetParam().port), GetParam().label);
}

INSTANTIATE_TEST_SUITE_P(Cases, ConnectorCommentTest,
                         testing::Values(CommentCase{"USB2", 0, "HS01", "USB2"},
                                         CommentCase{"USB3OnSuperSpeedPort", 3, "SS01", "USB3"},
                                         CommentCase{"USB3OnLowerCaseSuperSpeedPort", 3, "ss01", "USB3"},
                                         CommentCase{"USB3OnHighSpeedPortIsCompanion", 3, "HS01",
                                                     "USB2/USB3 companion"},
                                         CommentCase{"SharpSUpperCasesToSS", 3,
                                                     "\xc3\x9f"
                                                     "01",
                                                     "USB3"},
                                         CommentCase{"TypeCSwitch", 9, "HS05", "Type-C + Switch"},
                                         CommentCase{"TypeC", 10, "SSP1", "Type-C"},
                                         CommentCase{"Internal", 255, "HS13", "Internal"},
                                         CommentCase{"Unnamed", 7, "HS01", "UsbConnector 7"},
                                         CommentCase{"Negative", -2, "HS01", "UsbConnector -2"}),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace korvane
