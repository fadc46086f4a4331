// The command-line host gives back what it took, whatever way it ends.

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "QorctlScene.h"
#include "QorProcesses.h"
#include "Waiting.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

class QorctlActuators : public QorctlScene {
protected:
    QorctlProcess::Ended batch(const std::string& lines,
                               const std::vector<std::string>& more = {}) {
        return run("batch", more, lines);
    }
    /// A batch that has the throttle, and waits.
    std::unique_ptr<QorctlProcess> holding() {
        auto qorctl = std::make_unique<QorctlProcess>(
            words("batch"),
            "start-control ThrottleActuator\nset ThrottleActuator 40\nsleep 60000\n");
        EXPECT_TRUE(eventually(30000, [&] { return isWritten(); }));
        return qorctl;
    }
    bool isWritten() const {
        const auto requests = station.requests();
        return std::any_of(requests.begin(), requests.end(), [](const std::string& line) {
            return line.find("DirectCtrl ") == 0 && line.find(" op=4") != std::string::npos;
        });
    }
    /// What QOR was asked of direct control: "INDEX start", "INDEX stop".
    std::vector<std::string> controls() const {
        std::vector<std::string> found;
        for (const std::string& line : station.requests()) {
            const std::string index = line.substr(0, line.find(" op="));
            if (line.find("DirectCtrl ") != 0) continue;
            if (line.find(" op=2") != std::string::npos) found.push_back(index + " start");
            if (line.find(" op=3") != std::string::npos) found.push_back(index + " stop");
        }
        return found;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, QorctlActuators, everyTransport(), transportName);

const char* const takeTwo =
    "start-control ThrottleActuator\nset ThrottleActuator 40\nstart-control CoolingFan\n";

void expectReverseOrder(const std::vector<std::string>& all) {
    ASSERT_EQ(4u, all.size());
    const auto actuatorOf = [](const std::string& text) { return text.substr(0, text.rfind(' ')); };
    EXPECT_THAT(all[2], EndsWith(" stop"));
    EXPECT_EQ(actuatorOf(all[1]), actuatorOf(all[2]));
    EXPECT_THAT(all[3], EndsWith(" stop"));
    EXPECT_EQ(actuatorOf(all[0]), actuatorOf(all[3]));
}

TEST_P(QorctlActuators, AreGivenBackAtTheEndOfABatchTheLastOneFirst) {
    const auto ended = batch(takeTwo);
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("ok      give back CoolingFan"));
    EXPECT_THAT(ended.err, HasSubstr("ok      give back ThrottleActuator"));
    expectReverseOrder(controls());
}

TEST_P(QorctlActuators, AreGivenBackAfterALineThatFails) {
    const auto ended = batch(takeTwo + std::string("get NoSuchParameter\nsleep 60000\n"));
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    expectReverseOrder(controls());
    EXPECT_THAT(ended.err, Not(HasSubstr("NOT GIVEN BACK")));
}

TEST_P(QorctlActuators, ThatTheBatchGaveBackAreNotGivenBackTwice) {
    const auto ended = batch("start-control CoolingFan\nstop-control CoolingFan\n");
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_EQ(2u, controls().size());
    EXPECT_THAT(ended.err, Not(HasSubstr("give back")));
}

TEST_P(QorctlActuators, AreGivenBackBeforeTheEcuIsConnectedAnew) {
    const auto ended = batch("start-control CoolingFan\nconnect\n");
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("note    CoolingFan was given back first"));
    EXPECT_EQ(2u, controls().size());
}

TEST_P(QorctlActuators, ThatQorRefusesAreNotHeld) {
    const auto ended = batch("start-control EngineSpeed\n");
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, Not(HasSubstr("give back")));
    EXPECT_THAT(ended.err, Not(HasSubstr("NOT GIVEN BACK")));
}

// QOR takes it when nobody waits any more, and answers nothing meanwhile.
TEST_P(QorctlActuators, ThatQorTakesTooLateAreGivenBackToo) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":2},"action":{"hangMs":2500}}]})";
    const auto ended = batch("start-control ThrottleActuator\n", {"--timeout", "100"});
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    ASSERT_THAT(controls(), Not(IsEmpty()));
    EXPECT_THAT(controls().back(), EndsWith(" stop"));
    EXPECT_THAT(ended.err, Not(HasSubstr("NOT GIVEN BACK")));
}

TEST_P(QorctlActuators, ThatCannotBeGivenBackAreTheLastLineAndTheExitCode) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":4},
                                   "action":{"then":[{"afterMs":100,"exit":3}]}}]})";
    const auto ended =
        batch("start-control ThrottleActuator\nset ThrottleActuator 10\nsleep 2000\n", {"--json"});
    EXPECT_EQ(4, ended.exitCode);
    EXPECT_THAT(ended.err, EndsWith("\nqorctl: NOT GIVEN BACK, perhaps still under direct control: "
                                    "ThrottleActuator\n"));
    EXPECT_THAT(nlohmann::json::parse(ended.out).at("notGivenBack"),
                ElementsAre("ThrottleActuator"));
}

TEST_P(QorctlActuators, AreGivenBackWhenTheConsoleIsClosed) {
    const auto qorctl = holding();
    qorctl->raise(CTRL_CLOSE_EVENT);
    const auto ended = qorctl->wait(4500);  // what the system leaves it
    EXPECT_EQ(1, ended.exitCode);
    EXPECT_THAT(ended.err, HasSubstr("ok      give back ThrottleActuator"));
    EXPECT_THAT(ended.err, HasSubstr("ok      shut down"));
    ASSERT_THAT(controls(), Not(IsEmpty()));
    EXPECT_THAT(controls().back(), EndsWith(" stop"));
}

TEST_P(QorctlActuators, ThatAreStillHeldAtTheSecondCtrlCAreTheLastLineAndTheExitCode) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":3},"action":{"hangMs":20000}}]})";
    station.writeSettings();
    station.startQorByHand();  // so that this test can end it
    const auto qorctl = holding();
    qorctl->raise(CTRL_C_EVENT);
    Sleep(1000);  // it waits for QOR
    qorctl->raise(CTRL_C_EVENT);
    const auto ended = qorctl->wait(2000);
    qor::killAll();
    EXPECT_EQ(4, ended.exitCode);
    EXPECT_THAT(ended.err, HasSubstr("cancelled with Ctrl-C"));
    EXPECT_THAT(ended.err, EndsWith("\nqorctl: NOT GIVEN BACK, perhaps still under direct control: "
                                    "ThrottleActuator\n"));
}

TEST_P(QorctlActuators, AreStillHeldWhenQorRefusesToGiveThemTwice) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":2,"nth":2},
                                   "action":{"answer":"refuse"}}]})";
    const auto ended = batch("start-control CoolingFan\nstart-control CoolingFan\n");
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    ASSERT_EQ(3u, controls().size()) << ended.err;
    EXPECT_THAT(controls().back(), EndsWith("stop"));
}

TEST_P(QorctlActuators, OfASilentQorAreNamedBeforeTheConsoleIsGone) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":3},"action":)" +
                     silence(GetParam(), 20000) + "}]}";
    station.writeSettings();
    station.startQorByHand();  // so that this test can end it
    const auto qorctl = holding();
    qorctl->raise(CTRL_CLOSE_EVENT);
    const auto ended = qorctl->wait(8000);
    qor::killAll();
    EXPECT_EQ(4, ended.exitCode);
    EXPECT_THAT(ended.err, HasSubstr("qorctl: NOT GIVEN BACK"));
}

TEST_P(QorctlActuators, WithATimeAreHeldSoLong) {
    const auto ended = run("start-control", {"CoolingFan", "--hold", "0.5"});
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_EQ(2u, controls().size());
    EXPECT_THAT(ended.err, HasSubstr("CoolingFan, given back"));
}

TEST_P(QorctlActuators, AreHeldUntilQorIsLostAtTheLatest) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":2},
                                   "action":{"then":[{"afterMs":500,"exit":3}]}}]})";
    const auto ended = run("start-control", {"CoolingFan"});
    EXPECT_EQ(4, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("CoolingFan was held, then QOR was lost"));
}

}  // namespace
