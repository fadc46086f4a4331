#include "BoxAnswers.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <stdexcept>

#include "BoxWatch.h"

using namespace qorctl;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr unsigned int yes = IDYES;
constexpr unsigned int no = IDNO;
constexpr unsigned int ok = IDOK;
constexpr unsigned int cancel = IDCANCEL;

TEST(BoxAnswers, TheFirstThatTheBoxHasAButtonForIsTaken) {
    const BoxAnswers answers("no,ok");
    EXPECT_TRUE(answers.areGiven());
    EXPECT_EQ(no, answers.choiceFor(MB_YESNO));
    EXPECT_EQ(no, answers.choiceFor(MB_YESNOCANCEL | MB_ICONQUESTION));
    EXPECT_EQ(ok, answers.choiceFor(MB_OK));
    EXPECT_EQ(ok, answers.choiceFor(MB_OKCANCEL | MB_DEFBUTTON2));
}

TEST(BoxAnswers, ABoxThatHasNoneOfThemGetsItsDefaultButton) {
    const BoxAnswers answers("ignore");
    EXPECT_EQ(ok, answers.choiceFor(MB_OKCANCEL));
    EXPECT_EQ(cancel, answers.choiceFor(MB_OKCANCEL | MB_DEFBUTTON2));
    EXPECT_EQ(cancel, answers.choiceFor(MB_YESNOCANCEL | MB_DEFBUTTON3));
    EXPECT_EQ(yes, answers.choiceFor(MB_YESNO | MB_DEFBUTTON3));  // it has no third one
    EXPECT_EQ(ok, answers.choiceFor(0xF));                        // no style of the system's
}

TEST(BoxAnswers, MayBeWrittenInCapitals) {
    EXPECT_EQ(yes, BoxAnswers("Yes").choiceFor(MB_YESNO));
}

TEST(BoxAnswers, AreNotGivenWithoutWords) {
    EXPECT_FALSE(BoxAnswers().areGiven());
}

TEST(BoxAnswers, OtherWordsAreRefusedWithThoseThatThereAre) {
    EXPECT_THROW(BoxAnswers("yes,maybe"), std::invalid_argument);
    EXPECT_THAT(whyNoAnswers("yes,maybe"), HasSubstr("\"maybe\" is no button: ok, cancel"));
    EXPECT_THAT(whyNoAnswers("yes,,no"), HasSubstr("\"\" is no button"));
    EXPECT_THAT(whyNoAnswers("yes,no"), IsEmpty());
}

TEST(ButtonNames, AreThoseOfTheBoxFromTheLeft) {
    EXPECT_EQ("yes/no/cancel", buttonNames(MB_YESNOCANCEL | MB_ICONQUESTION | MB_DEFBUTTON2));
    EXPECT_EQ("cancel/again/continue", buttonNames(MB_CANCELTRYCONTINUE));
    EXPECT_EQ("no", buttonName(IDNO));
    EXPECT_EQ("button 8", buttonName(8));
    EXPECT_EQ("button 0", buttonName(0));
}

TEST(BoxText, StandsOnOneLineAndNotAllOfALongOne) {
    EXPECT_EQ("Go on with 100%s?", shownOnOneLine("Go on\r\n\twith 100%s?"));
    EXPECT_EQ(503u, shownOnOneLine(std::string(600, 'a')).size());
}

}  // namespace
