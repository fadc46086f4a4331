// QOR asks the operator something through the host's process.

#include <gmock/gmock.h>

#include <algorithm>

#include "BoxOnScreen.h"
#include "guide/MessageBoxes.h"
#include "qorcontrol/MessageBoxes.h"
#include "Station.h"
#include "Waiting.h"
#include "WireText.h"

using testing::Contains;

namespace {

constexpr unsigned amply = 10000;
constexpr int textControl = 65535;

class Question : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    std::string caption = station.settings.titles + "-question";

    /// QOR asks shortly after it has been connected with an ECU.
    bool startAsking(unsigned type) {
        scriptAsking(type);
        return station.start() && connect();
    }
    void scriptAsking(unsigned type) {
        station.script = R"({"at":[{"since":"connect","afterMs":300,"messageBox":{"caption":")" +
                         caption + R"(","text":"Go on with 100%s?","type":)" +
                         std::to_string(type) + "}}]}";
    }
    bool connect() {
        return station->connect(usualConnect(), QorControlFacade::EcuConnect::Default, nullptr);
    }
    HWND awaitBox() const { return awaitBoxOnScreen(caption); }
    /// Whether QOR's question has been acknowledged, and how.
    std::string acknowledgement() const {
        const auto records = station.wire();
        for (const WireRecord& question : records)
            for (const WireRecord& record : records)
                if (!question.toQor && question.id == 10 && record.toQor &&
                    record.requestId == question.requestId)
                    return describe(record) + (record.isReply ? " reply" : "");
        return std::string();
    }
    bool awaitRequest(const std::string& request) const {
        return eventually(amply, [&] {
            const auto requests = station.requests();
            return std::find(requests.begin(), requests.end(), request) != requests.end();
        });
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Question, everyTransport(), transportName);

TEST_P(Question, TheChoiceGoesBackToQorAsARequestOfItsOwn) {
    ASSERT_TRUE(startAsking(MB_YESNO));
    HWND const box = awaitBox();
    ASSERT_NE(nullptr, box);
    char text[100] = "";
    GetDlgItemTextA(box, textControl, text, sizeof text);
    EXPECT_STREQ("Go on with 100%s?", text);
    EXPECT_NE(nullptr, GetDlgItem(box, IDYES));
    EXPECT_NE(nullptr, GetDlgItem(box, IDNO));
    ASSERT_TRUE(PostMessageA(box, WM_COMMAND, IDNO, 0));
    EXPECT_TRUE(awaitRequest("RedirectUI '' '' 0 7"));
    EXPECT_TRUE(station->pingQor(amply));
}

TEST_P(Question, AnotherButtonIsAnotherChoice) {
    ASSERT_TRUE(startAsking(MB_OKCANCEL));
    HWND const box = awaitBox();
    ASSERT_NE(nullptr, box);
    ASSERT_TRUE(PostMessageA(box, WM_COMMAND, IDOK, 0));
    EXPECT_TRUE(awaitRequest("RedirectUI '' '' 0 1"));
}

using qorcontrol::BoxPolicy;
using qorcontrol::QorBox;

/// A host that has a say in it.
class QuestionToTheHost : public Question {
protected:
    QorBox awaitNext(unsigned after) {
        QorBox box;
        EXPECT_TRUE(
            eventually(amply, [&] { return qorcontrol::nextBox(station.facade(), after, box); }));
        return box;
    }
    bool isOnScreen() const { return FindWindowA("#32770", caption.c_str()) != nullptr; }
    /// As startAsking, with a policy from before.
    bool startAskingWith(BoxPolicy policy, unsigned choice, unsigned askMs) {
        scriptAsking(MB_YESNO);
        return station.start() &&
               qorcontrol::setBoxPolicy(station.facade(), policy, choice, askMs) && connect();
    }
};

INSTANTIATE_TEST_SUITE_P(Over, QuestionToTheHost, everyTransport(), transportName);

TEST_P(QuestionToTheHost, IsAnsweredWithoutBeingShown) {
    ASSERT_TRUE(startAskingWith(BoxPolicy::answer, IDNO, 0));
    EXPECT_TRUE(awaitRequest("RedirectUI '' '' 0 7"));
    EXPECT_FALSE(isOnScreen());
    const QorBox box = awaitNext(0);
    EXPECT_EQ(1u, box.number);
    EXPECT_EQ(caption, box.caption);
    EXPECT_EQ("Go on with 100%s?", box.text);
    EXPECT_EQ(unsigned{MB_YESNO}, box.type);
    EXPECT_EQ(unsigned{IDNO}, box.choice);
    EXPECT_FALSE(box.isOpen);
    QorBox other;
    EXPECT_FALSE(qorcontrol::nextBox(station.facade(), 1, other));
    EXPECT_EQ(0u, other.number);
}

TEST_P(QuestionToTheHost, IsAnsweredByIt) {
    ASSERT_TRUE(startAskingWith(BoxPolicy::ask, IDNO, 60000));
    const QorBox box = awaitNext(0);
    EXPECT_TRUE(box.isOpen);
    EXPECT_EQ(0u, box.choice);
    EXPECT_FALSE(isOnScreen());
    EXPECT_FALSE(qorcontrol::answerBox(station.facade(), box.number + 1, IDYES));
    EXPECT_FALSE(qorcontrol::answerBox(station.facade(), box.number, 12));
    EXPECT_TRUE(qorcontrol::answerBox(station.facade(), box.number, IDYES));
    EXPECT_FALSE(qorcontrol::answerBox(station.facade(), box.number, IDYES));
    EXPECT_TRUE(awaitRequest("RedirectUI '' '' 0 6"));
}

TEST_P(QuestionToTheHost, IsAnsweredByTheExampleOfTheGuideWithALine) {
    ASSERT_TRUE(startAskingWith(BoxPolicy::ask, IDCANCEL, 60000));
    awaitNext(0);
    EXPECT_EQ(1u, guide::answerBoxes(station.facade(), station.log, 0));
    EXPECT_EQ(1u, guide::answerBoxes(station.facade(), station.log, 1));
    EXPECT_TRUE(awaitRequest("RedirectUI '' '' 0 7"));
    EXPECT_THAT(station.logLines(),
                Contains("info: BOX '" + caption + "': 'Go on with 100%s?' answered with 7"));
}

TEST_P(QuestionToTheHost, IsToldWhileItStandsOnTheScreenAndWhenItIsClosed) {
    ASSERT_TRUE(startAskingWith(BoxPolicy::show, 0, 0));
    HWND const shown = awaitBox();
    ASSERT_NE(nullptr, shown);
    EXPECT_TRUE(awaitNext(0).isOpen);
    EXPECT_FALSE(qorcontrol::answerBox(station.facade(), 1, IDYES));
    Sleep(300);
    EXPECT_GE(awaitNext(0).openMs, 250u);
    ASSERT_TRUE(PostMessageA(shown, WM_COMMAND, IDNO, 0));
    EXPECT_TRUE(eventually(amply, [&] { return !awaitNext(0).isOpen; }));
    EXPECT_EQ(unsigned{IDNO}, awaitNext(0).choice);
    const unsigned stoodMs = awaitNext(0).openMs;
    Sleep(100);
    EXPECT_EQ(stoodMs, awaitNext(0).openMs);
}

TEST_P(QuestionToTheHost, DoesNotHoldUpAShutdown) {
    ASSERT_TRUE(startAskingWith(BoxPolicy::ask, IDCANCEL, 60000));
    ASSERT_TRUE(awaitNext(0).isOpen);
    EXPECT_LT(elapsedMsOf([&] { station->shutdown(); }), 4000u);
    EXPECT_EQ(unsigned{IDCANCEL}, awaitNext(0).choice);
}

TEST_P(QuestionToTheHost, IsKeptOnlyForAHostThatHasSaidWhatShallBecomeOfIt) {
    ASSERT_TRUE(startAsking(MB_YESNO));
    HWND const shown = awaitBox();
    ASSERT_NE(nullptr, shown);
    ASSERT_TRUE(PostMessageA(shown, WM_COMMAND, IDNO, 0));
    EXPECT_TRUE(awaitRequest("RedirectUI '' '' 0 7"));
    QorBox box;
    EXPECT_FALSE(qorcontrol::setBoxPolicy(station.facade(), BoxPolicy::answer, 0));
    EXPECT_FALSE(qorcontrol::nextBox(station.facade(), 0, box));
}

/// Over a stream the acknowledgement is a record that can be seen.
class QuestionOverTcp : public Question {};

INSTANTIATE_TEST_SUITE_P(Over, QuestionOverTcp, testing::Values(Transport::tcp), transportName);

TEST_P(QuestionOverTcp, QorIsReleasedWhileTheBoxIsStillOpen) {
    ASSERT_TRUE(startAsking(MB_YESNO));
    HWND const box = awaitBox();
    ASSERT_NE(nullptr, box);
    EXPECT_TRUE(eventually(2000, [&] { return acknowledgement() == "Ping 0 reply"; }));
    EXPECT_TRUE(IsWindow(box));
    ASSERT_TRUE(PostMessageA(box, WM_COMMAND, IDYES, 0));
    EXPECT_TRUE(awaitRequest("RedirectUI '' '' 0 6"));
}

}  // namespace
