#include "batch/BatchScript.h"

#include <gmock/gmock.h>

#include <sstream>
#include <stdexcept>

#include "batch/BatchLine.h"

using namespace qorctl;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

BatchScript scriptOf(const std::string& text) {
    std::istringstream lines(text);
    return BatchScript(lines);
}

std::string reasonAgainst(const std::string& text) {
    try {
        scriptOf(text);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

}  // namespace

TEST(BatchLine, WordsAreSeparatedByBlanksAndTabs) {
    EXPECT_THAT(wordsOf("  get\tEngineSpeed  EngineLoad \r"),
                ElementsAre("get", "EngineSpeed", "EngineLoad"));
    EXPECT_THAT(wordsOf(""), IsEmpty());
    EXPECT_THAT(wordsOf(" \t\r"), IsEmpty());
}

TEST(BatchLine, QuotesKeepBlanksAndCommentSigns) {
    EXPECT_THAT(wordsOf(R"(get "Idle Speed" x"# "y "")"),
                ElementsAre("get", "Idle Speed", "x# y", ""));
    EXPECT_THAT(wordsOf(R"("say ""so""")"), ElementsAre(R"(say "so")"));
    EXPECT_THROW(wordsOf("get \"EngineSpeed"), std::invalid_argument);
}

TEST(BatchLine, ACommentBeginsAWord) {
    EXPECT_THAT(wordsOf("# get EngineSpeed"), IsEmpty());
    EXPECT_THAT(wordsOf("get A#1 # B"), ElementsAre("get", "A#1"));
}

TEST(BatchLine, BackslashesArePartOfAPath) {
    EXPECT_THAT(wordsOf(R"(open-model c:\models\new.mdl)"),
                ElementsAre("open-model", R"(c:\models\new.mdl)"));
}

TEST(BatchScript, LinesAreUnderstoodAsOnTheCommandLine) {
    const BatchScript script =
        scriptOf("set Name 1 2,3 --second -4\n\n# nothing\nsleep 5\nkwp 0x27 02 00\n");

    ASSERT_EQ(3u, script.steps().size());
    EXPECT_EQ("set", script.steps()[0].command);
    EXPECT_EQ("set Name 1 2,3 --second -4", script.steps()[0].text);
    EXPECT_EQ("sleep", script.steps()[1].command);
    EXPECT_EQ("kwp", script.steps()[2].command);
}

TEST(BatchScript, TheFirstLineThatIsWrongIsToldWithItsNumber) {
    EXPECT_EQ("line 2: there is no operation \"fly\"", reasonAgainst("ping\nfly\nfall\n"));
    EXPECT_EQ("line 1: there is no operation \"start_contrl\"; did you mean \"start-control\"?",
              reasonAgainst("start_contrl CoolingFan\n"));
    EXPECT_EQ("line 1: a quote is not closed", reasonAgainst("get \"A\nping\n"));
    EXPECT_THAT(reasonAgainst("\nget\n"), StartsWith("line 2: NAME is required"));
    EXPECT_THAT(reasonAgainst("kwp 0x27 0G\n"), StartsWith("line 1: BYTES: 0G is no"));
    EXPECT_THAT(reasonAgainst("sleep 0\n"), StartsWith("line 1: "));
    EXPECT_THAT(reasonAgainst("ping --fast\n"), StartsWith("line 1: "));
    EXPECT_EQ("there is no line to carry out", reasonAgainst("# nothing\n\n"));
}

TEST(BatchScript, TheEcuIsConnectedFirstUnlessALineDoesSoInTime) {
    EXPECT_TRUE(scriptOf("ping\nget A\nconnect\n").wantsConnection());
    EXPECT_FALSE(scriptOf("ping\nconnect\nget A\n").wantsConnection());
    EXPECT_FALSE(scriptOf("ping\npath\n").wantsConnection());
}
