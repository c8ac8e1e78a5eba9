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

// A saved registry's own model stands where this machine's would, and a
// choice that differs from either is told with both names.
TEST(TargetModelResolver, SaysWhereTheModelCameFromAndWhenTheChoiceDiffers) {
    struct Row {
        Source machineSource;
        std::optional<std::string> choice;
        std::optional<std::string> answer;
        std::string_view sourceText;
        std::string note;
    };
    const Row rows[] = {
        {Source::savedRegistry, std::nullopt, "iMacPro1,1", "from the registry", ""},
        {Source::savedRegistry, "iMacPro1,1", "iMacPro1,1", "your choice", ""},
        {Source::savedRegistry, "iMac19,1", "Macmini8,1", "your choice",
         "Your choice iMac19,1 differs from the registry's own model Macmini8,1: the map applies only on a "
         "Mac "
         "that reports iMac19,1 (right for a machine whose SMBIOS is set so on purpose)."},
        {Source::thisMachine, "iMac19,1", "Macmini8,1", "your choice",
         "Your choice iMac19,1 differs from this machine's own model Macmini8,1: the map applies only on a "
         "Mac "
         "that reports iMac19,1 (right for a machine whose SMBIOS is set so on purpose)."},
        {Source::thisMachine, std::nullopt, "MacBookPro15,2", "from this machine", ""},
        {Source::savedRegistry, "iMac19,1", std::nullopt, "your choice", ""}, // nothing to differ from
        {Source::savedRegistry, std::nullopt, std::nullopt, "no model found", ""},
    };
    for (const auto& row : rows) {
        TargetModelResolver resolver(row.machineSource);
        resolver.store(row.answer);
        EXPECT_EQ(targetModelSourceText(resolver.resolve(row.choice).source), row.sourceText)
            << row.choice.value_or("-");
        EXPECT_EQ(resolver.differenceNote(row.choice), row.note);
    }
}

TEST(TargetModelResolver, AChoiceIsKeptTrimmedAndABlankOneIsNone) {
    EXPECT_EQ(targetModelChoiceOf("  iMac19,1 \n"), "iMac19,1");
    EXPECT_EQ(targetModelChoiceOf(" \t"), std::nullopt);
}

} // namespace
} // namespace korvane
