#include "collector/TargetModelResolver.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using Source = TargetMacModel::Source;

TEST(TargetModelResolver, TheChoiceWinsThenTheMachinesModelThenMac) {
    const std::tuple<std::optional<std::string>, std::optional<std::string>, TargetMacModel> rows[] = {
        {"iMac19,1", "MacBookPro15,2", {"iMac19,1", Source::userChoice}},
        {std::nullopt, " MacBookPro15,2\n", {"MacBookPro15,2", Source::thisMachine}},
        {std::nullopt, " \n", {"Mac", Source::fallback}}, // a blank answer names no Mac
        {std::nullopt, std::nullopt, {"Mac", Source::fallback}},
    };
    for (const auto& [choice, answer, expected] : rows) {
        TargetModelResolver resolver;
        EXPECT_TRUE(resolver.store(answer));
        EXPECT_EQ(resolver.resolve(choice), expected) << expected.value;
    }
    EXPECT_EQ(TargetModelResolver().resolve(std::nullopt), (TargetMacModel{"Mac", Source::fallback}))
        << "before the machine is asked";
}

TEST(TargetModelResolver, TheMachineIsAskedOnceAndOnlyAChangedAnswerIsNews) {
    TargetModelResolver resolver;
    EXPECT_TRUE(resolver.needsMachineModel(std::nullopt));
    EXPECT_FALSE(resolver.needsMachineModel("iMac19,1"));
    EXPECT_TRUE(resolver.shouldStartLookUp());
    EXPECT_FALSE(resolver.shouldStartLookUp()) << "one is under way";
    EXPECT_TRUE(resolver.store(std::nullopt)) << "knowing there is none is news";
    EXPECT_FALSE(resolver.shouldStartLookUp());
    EXPECT_FALSE(resolver.needsMachineModel(std::nullopt));
    EXPECT_FALSE(resolver.store(std::string(" ")));
    EXPECT_TRUE(resolver.store(std::string("iMac19,1")));
}

TEST(TargetModelResolver, AChoiceIsKeptTrimmedAndABlankOneIsNone) {
    EXPECT_EQ(targetModelChoiceOf("  iMac19,1 \n"), "iMac19,1");
    EXPECT_EQ(targetModelChoiceOf(" \t"), std::nullopt);
}

} // namespace
} // namespace korvane
