#include "collector/TargetModelResolver.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using Source = TargetMacModel::Source;

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

// The choice wins, then the machine's model, then "Mac". A saved registry's
// own model stands where this machine's would, and a choice that differs from
// either is told with both names.
TEST(TargetModelResolver, TheChoiceWinsThenTheMachinesModelThenMacEachSaidWithWhereItCameFrom) {
    const auto differs = [](const std::string& whose) {
        return "Your choice iMac19,1 differs from " + whose +
               "'s own model Macmini8,1: the map applies only "
               "on a Mac that reports iMac19,1 (right for a machine whose SMBIOS is set so on purpose).";
    };
    // Whose model the machine's is, the choice, the machine's answer, then the
    // model, where it came from and the note.
    using Model = std::optional<std::string>;
    const std::tuple<Source, Model, Model, std::string, std::string_view, std::string> rows[] = {
        {Source::savedRegistry, std::nullopt, "iMacPro1,1", "iMacPro1,1", "from the registry", ""},
        {Source::savedRegistry, "iMacPro1,1", "iMacPro1,1", "iMacPro1,1", "your choice", ""},
        {Source::savedRegistry, "iMac19,1", "Macmini8,1", "iMac19,1", "your choice", differs("the registry")},
        {Source::thisMachine, "iMac19,1", "Macmini8,1", "iMac19,1", "your choice", differs("this machine")},
        {Source::thisMachine, std::nullopt, " MacBookPro15,2\n", "MacBookPro15,2", "from this machine", ""},
        // Nothing to differ from, then a blank answer that names no Mac.
        {Source::savedRegistry, "iMac19,1", std::nullopt, "iMac19,1", "your choice", ""},
        {Source::thisMachine, std::nullopt, " \n", "Mac", "no model found", ""},
        {Source::savedRegistry, std::nullopt, std::nullopt, "Mac", "no model found", ""},
    };
    for (const auto& [machineSource, choice, answer, value, sourceText, note] : rows) {
        TargetModelResolver resolver(machineSource);
        EXPECT_TRUE(resolver.store(answer));
        const TargetMacModel target = resolver.resolve(choice);
        EXPECT_EQ(target.value, value) << choice.value_or("-");
        EXPECT_EQ(targetModelSourceText(target.source), sourceText) << value;
        EXPECT_EQ(resolver.differenceNote(choice), note);
    }
    EXPECT_EQ(TargetModelResolver().resolve(std::nullopt), (TargetMacModel{"Mac", Source::fallback}))
        << "before the machine is asked";
}

TEST(TargetModelResolver, AChoiceIsKeptTrimmedAndABlankOneIsNone) {
    EXPECT_EQ(targetModelChoiceOf("  iMac19,1 \n"), "iMac19,1");
    EXPECT_EQ(targetModelChoiceOf(" \t"), std::nullopt);
}

} // namespace
} // namespace korvane
