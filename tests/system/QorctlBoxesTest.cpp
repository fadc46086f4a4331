// QOR's message boxes leave lines in the command-line host's log, and can be answered by it.

#include <gmock/gmock.h>
#include <windows.h>

#include <nlohmann/json.hpp>

#include "BoxOnScreen.h"
#include "QorctlScene.h"
#include "QorProcesses.h"

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class QorctlBoxes : public QorctlScene {
protected:
    std::string caption = station.settings.titles + "-box";

    /// QOR asks shortly after it has been told to connect an ECU.
    void scriptBox(unsigned type, unsigned afterMs = 300) {
        station.script = R"({"at":[{"since":"connect","afterMs":)" + std::to_string(afterMs) +
                         R"(,"messageBox":{"caption":")" + caption +
                         R"(","text":"Go on\nwith 100%s?","type":)" + std::to_string(type) + "}}]}";
    }
    /// A batch that goes on until the box is dealt with.
    QorctlProcess::Ended runWith(unsigned type, const std::vector<std::string>& more) {
        scriptBox(type);
        return run("batch", more, "connect\nsleep 600\nping\n");
    }
    HWND awaitBox() const { return awaitBoxOnScreen(caption); }
};

INSTANTIATE_TEST_SUITE_P(Over, QorctlBoxes, everyTransport(), transportName);

TEST_P(QorctlBoxes, AreAnsweredAsTheCommandLineSaysAndNotShown) {
    const auto ended = runWith(MB_YESNO, {"--answer-boxes", "ok,no"});

    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err,
                HasSubstr("log     BOX 1 \"" + caption +
                          "\": \"Go on with 100%s?\" [yes/no] was closed with no after 0."));
    EXPECT_THAT(ended.err, Not(HasSubstr("is open")));
    EXPECT_THAT(station.requests(), Contains("RedirectUI '' '' 0 7"));
}

TEST_P(QorctlBoxes, WithoutTheButtonGetTheirDefaultOne) {
    const auto ended = runWith(MB_OKCANCEL | MB_DEFBUTTON2, {"--answer-boxes", "yes"});

    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(station.requests(), Contains("RedirectUI '' '' 0 2"));
}

TEST_P(QorctlBoxes, AreToldWhenTheyOpenAndWhenSomebodyHasClosedThem) {
    scriptBox(MB_YESNO);
    QorctlProcess qorctl(words("batch", {"--json", "--keep-going"}),
                         "connect\nsleep 1500\nping\nsleep 500\n");
    HWND const box = awaitBox();
    ASSERT_NE(nullptr, box);
    Sleep(700);
    ASSERT_TRUE(PostMessageA(box, WM_COMMAND, IDYES, 0));
    const auto ended = qorctl.wait();

    const auto log = nlohmann::json::parse(ended.out).at("log").get<std::vector<std::string>>();
    const std::string title = "BOX 1 \"" + caption + "\": \"Go on with 100%s?\" [yes/no] ";
    EXPECT_THAT(log, Contains(title + "is open, QOR waits for somebody to close it"));
    EXPECT_THAT(log, Contains(StartsWith(title + "was closed with yes after ")));
    EXPECT_THAT(log, Not(Contains(HasSubstr("after 0.0 s"))));
}

TEST_P(QorctlBoxes, ThatNobodyClosesDoNotKeepAWatchFromItsEnd) {
    scriptBox(MB_YESNO, 3000);
    station.writeSettings();
    station.startQorByHand();  // so that this test can end it
    QorctlProcess qorctl(words("watch", {"EngineSpeed", "--for", "5"}));
    const auto ended = qorctl.wait(40000);
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("agent thread did not end and was let go"));
    qor::killAll();
}

}  // namespace
