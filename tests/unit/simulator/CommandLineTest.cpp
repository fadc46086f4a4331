#include "app/CommandLine.h"

#include "TestSupport.h"

namespace simulator::test {
namespace {

std::string settingsIn(const std::string& commandLine) {
    return settingsPathIn(argumentsOf(commandLine));
}

TEST(CommandLine, ALineThatBeginsWithABlankHasNoProgramName) {
    EXPECT_THAT(argumentsOf(" -external_operating \"c:\\a b\\s.ini\""),
                testing::ElementsAre("-external_operating", "c:\\a b\\s.ini"));
}

TEST(CommandLine, TheProgramNameIsSkippedQuotedOrNot) {
    EXPECT_THAT(argumentsOf("\"c:\\my sim\\q.exe\" x y"), testing::ElementsAre("x", "y"));
    EXPECT_THAT(argumentsOf("q.exe\tx"), testing::ElementsAre("x"));
}

TEST(CommandLine, ABackslashBeforeAQuoteIsPartOfThePath) {
    EXPECT_THAT(argumentsOf(" \"c:\\folder\\\" z"), testing::ElementsAre("c:\\folder\\", "z"));
}

TEST(CommandLine, AnOpenQuoteEndsWithTheLine) {
    EXPECT_THAT(argumentsOf(" \"c:\\a b"), testing::ElementsAre("c:\\a b"));
}

TEST(CommandLine, TheSettingsFollowTheSwitchOrAreTheOnlyArgument) {
    EXPECT_EQ(settingsIn(" -external_operating \"c:\\s.ini\""), "c:\\s.ini");
    EXPECT_EQ(settingsIn("q.exe -minimised -external_operating s.ini"), "s.ini");
    EXPECT_EQ(settingsIn("q.exe s.ini"), "s.ini");
}

TEST(CommandLine, WithoutSettingsThereIsNoPath) {
    for (const char* line : {"", " ", "q.exe", "q.exe -external_operating", "q.exe a b"}) {
        EXPECT_EQ(settingsIn(line), "") << line;
    }
}

TEST(CommandLine, TheSwitchTellsThatAHostOperatesIt) {
    EXPECT_TRUE(isExternallyOperated(argumentsOf(" -external_operating \"c:\\s.ini\"")));
    EXPECT_FALSE(isExternallyOperated(argumentsOf("q.exe s.ini")));
}

}  // namespace
}  // namespace simulator::test
